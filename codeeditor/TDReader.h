#pragma once

#include <QMetaType>
#include <QString>

/// A place in a text: what a tokenizer reads from. A fresh one stands at the beginning.
class TDReader
{
    Q_GADGET
    Q_PROPERTY(QString string READ string WRITE setString)
public:
    TDReader() = default;

    /// The text that is read. Setting it goes back to its beginning.
    const QString &string() const { return m_string; }
    Q_INVOKABLE void setString(const QString &string);

    /// The index of the next character, not negative; from the length of the text on there is none.
    Q_INVOKABLE qsizetype offset() const { return m_offset; }
    Q_INVOKABLE void setOffset(qsizetype offset);

private:
    QString m_string;
    qsizetype m_offset = 0;
};
