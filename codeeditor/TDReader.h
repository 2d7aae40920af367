#pragma once

#include <QString>

/// A place in a text: what a tokenizer reads from. A fresh one stands at the beginning.
class TDReader
{
public:
    TDReader() = default;

    /// The text that is read. Setting it goes back to its beginning.
    const QString &string() const { return m_string; }
    void setString(const QString &string);

    /// The index of the next character, not negative; from the length of the text on there is none.
    qsizetype offset() const { return m_offset; }
    void setOffset(qsizetype offset);

private:
    QString m_string;
    qsizetype m_offset = 0;
};
