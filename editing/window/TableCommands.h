#pragma once

#include "editing/tables/PastePlan.h"
#include "editing/tables/TableExport.h"
#include "editing/window/WindowParts.h"

#include <QObject>

namespace runebook {

/// Records as tables: copying them, pasting cells into them, exporting them. Scripts and runs without windows
/// get by without questions; what would have to be asked is an error there.
class TableCommands : public QObject
{
    Q_OBJECT
public:
    TableCommands(const WindowParts &parts, QObject *parent);

    /// The selected records, or all that are shown, with the columns that are shown.
    void copyAsTable();
    /// Takes the cells of the clipboard, which holds no records. One cell goes into the current column of the
    /// selected records, more open a sheet.
    void pasteCells();
    /// Pastes a text by the usual choices. Null, and an error, when there is something to ask or to object
    /// to; else what was done.
    QString pasteText(const QString &text, Error *error);
    /// Opens the dialog.
    void exportTable();
    /// Writes a table: by the separator that the suffix of \a path stands for, of \a fields by their keys,
    /// all for none, of \a records, which are "all", "shown" or "selected".
    bool exportTable(const QString &path, const QStringList &fields, const QString &records, Error *error);

private:
    PasteTarget target() const;
    std::vector<GlyphField> columnsFromCurrent() const;
    InfoList infosOf(TableRecords which) const;
    bool askAboutOneCell(const PastedTable &table);
    void openSheet(PastedTable table);
    PastePlan planned(const PastedTable &table, const PasteChoices &choices) const;
    QString paste(const PastedTable &table, const PasteChoices &choices, Error *error);

    WindowParts m_parts;
};

} // namespace runebook
