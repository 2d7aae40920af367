#pragma once

#include <QString>
#include <QStringList>

namespace runebook {

/// The lines entered at the prompt, oldest first, kept in the default "VXPromptHistory": at most 200, none
/// twice in a row, none of more than 10,000 units.
class PromptHistory
{
public:
    PromptHistory();

    /// Adds a line and goes behind the last one.
    void add(const QString &line);
    /// The line before or after the one that is shown; \a shown, which may have been edited, is kept while
    /// the walk lasts. Null at either end.
    QString earlier(const QString &shown) { return walk(-1, shown); }
    QString later(const QString &shown) { return walk(1, shown); }
    const QStringList &lines() const { return m_lines; }

private:
    QString walk(int step, const QString &shown);

    QStringList m_lines;
    QStringList m_edited; ///< the lines with one more, the new one, as they look during the walk
    qsizetype m_place = 0;
};

} // namespace runebook
