#pragma once

#include "model/ReadNotes.h"

#include <QCoreApplication>
#include <QStringList>
#include <memory>
#include <optional>

namespace runebook {

struct TableForm;
using TableFormPtr = std::shared_ptr<const TableForm>;

/// What the file of a document was like that the next save writes over: what saving will write differently or
/// leave out of it.
class FileForm
{
    Q_DECLARE_TR_FUNCTIONS(FileForm)
public:
    /// The content was read, with these notes, from a file of \a fileVersion, or from a table.
    void setRead(const ReadNotes &notes, quint8 fileVersion, const TableFormPtr &table = {});
    /// The table that was read or written last; null for none.
    const TableFormPtr &table() const { return m_table; }
    void setTable(const TableFormPtr &table) { m_table = table; }
    /// Whether nothing could be made of the file.
    void setUnreadable(bool isUnreadable) { m_isUnreadable = isUnreadable; }
    /// The file was written: it is as the program writes it.
    void setSaved();
    /// The content came from elsewhere and will be written over the glyph data file \a original. What was met
    /// while the content was read is not kept either.
    void learnFrom(const QString &original);

    /// The version of the file that was read.
    quint8 readVersion() const { return m_readVersion; }
    /// Sentences for the user; none when saving as \a fileVersion leaves the file as it was. \a openConflicts:
    /// conflicts of a merge that nobody has resolved.
    QStringList savingWillChange(quint8 fileVersion, qsizetype openConflicts) const;

private:
    std::optional<ReadNotes> m_notes; ///< nothing after it was saved
    bool m_isUnreadable = false;
    quint8 m_readVersion = 2;
    TableFormPtr m_table;
};

} // namespace runebook
