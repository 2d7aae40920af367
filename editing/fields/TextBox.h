#pragma once

#include <QPlainTextEdit>
#include <functional>

namespace runebook {

/// An editor of one text of a record, several lines of it, that gives back exactly what it was given.
class TextBox final : public QPlainTextEdit
{
    Q_OBJECT
public:
    using QPlainTextEdit::QPlainTextEdit;

    /// The text with its own line ends and spaces: no separator or no-break space becomes another.
    QString exactText() const;
    /// Asked before a paste that makes the text longer than a field can lay out, with the text as it would be
    /// and where the caret would stand; true when it was dealt with.
    void setLongPaste(std::function<bool(const QString &text, qsizetype caret)> take)
    {
        m_takesLong = std::move(take);
    }

protected:
    void insertFromMimeData(const QMimeData *source) override;

private:
    std::function<bool(const QString &text, qsizetype caret)> m_takesLong;
};

} // namespace runebook
