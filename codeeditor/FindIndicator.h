#pragma once

#include <QFont>
#include <QVariantAnimation>
#include <QWidget>

namespace runebook {

/// A brief highlight over a piece of text: a yellow plate that grows for a moment and fades. Goes by itself.
class FindIndicator : public QWidget
{
    Q_OBJECT
public:
    /// Shows \a text at \a rect of \a viewport.
    FindIndicator(QWidget *viewport, const QRect &rect, const QString &text, const QFont &font);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text;
    QVariantAnimation m_animation;
};

} // namespace runebook
