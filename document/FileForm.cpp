#include "document/FileForm.h"

#include "document/GlyphDataReader.h"
#include "document/SavingChanges.h"

#include <QLocale>

namespace runebook {

void FileForm::setRead(const ReadNotes &notes, quint8 fileVersion, const TableFormPtr &table)
{
    m_table = table;
    m_notes = notes;
    m_readVersion = fileVersion;
}

void FileForm::setSaved()
{
    m_notes.reset();
    m_isUnreadable = false;
}

void FileForm::learnFrom(const QString &original)
{
    GlyphDataReader reader;
    m_isUnreadable = !reader.read(original);
    ReadNotes notes = m_notes.value_or(ReadNotes());
    notes.append(reader.notes(), 0);
    m_notes = notes;
}

QStringList FileForm::savingWillChange(quint8 fileVersion, qsizetype openConflicts) const
{
    if (m_isUnreadable)
        return {tr("The file could not be read; saving replaces all that is in it.")};
    QStringList changes = m_notes ? savingChanges(*m_notes, fileVersion) : QStringList();
    if (openConflicts == 1)
        changes.prepend(tr("One conflict of a merge is not resolved: what ours has is saved for it."));
    else if (openConflicts > 1)
        changes.prepend(tr("%1 conflicts of a merge are not resolved: what ours has is saved for them.")
                            .arg(QLocale().toString(qlonglong(openConflicts))));
    return changes;
}

} // namespace runebook
