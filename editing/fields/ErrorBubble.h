#pragma once

#include "platform/Error.h"

#include <QLabel>

namespace runebook {

/// Says why a keystroke was refused, or what became of it: a bubble on the control's own window, under the
/// control, that takes no focus and goes by itself, with the next key or when the control is left. One for
/// each control.
class ErrorBubble : public QLabel
{
    Q_OBJECT
public:
    /// Shows \a error at \a control, or at the part \a area of it, in place of an earlier one; without a
    /// visible control the error goes to the error presenter.
    static void show(QWidget *control, const Error &error, const QRect &area = {});
    /// The same for a sentence that is no refusal, in the colours of a tip; nothing for an empty one.
    static void remark(QWidget *control, const QString &text, const QRect &area = {});

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    enum class Tone { Refusal, Remark };

    ErrorBubble(QWidget *control, const QString &text, Tone tone);
    static void say(QWidget *control, const Error &error, const QRect &area, Tone tone);
    void placeAt(const QWidget &control, const QRect &area);

    Tone m_tone;
};

} // namespace runebook
