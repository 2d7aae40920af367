#pragma once

#include "editing/compare/TextDifference.h"

#include <QPlainTextEdit>

namespace runebook {

/// Shows the value of one field in the compare window: to be read and copied, as high as its text needs up to
/// a few lines, with the parts marked that the other side does not have.
class CompareField : public QPlainTextEdit
{
    Q_OBJECT
public:
    explicit CompareField(QWidget *parent = nullptr);

    /// Of a text too long to be shown, a piece around the first mark is shown.
    void setValue(const QString &text, const std::vector<TextPart> &marks);
    /// The parts of the shown text that are marked.
    std::vector<TextPart> markedParts() const { return m_marks; }
    /// The height that shows the text, at most that of a few lines.
    int wantedHeight() const;

Q_SIGNALS:
    void wantedHeightChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int lineCount() const;
    void textHasNewLines();
    void paintMarks();

    QString m_shown; ///< as it was given: the widget gives back other blanks
    std::vector<TextPart> m_marks;
};

} // namespace runebook
