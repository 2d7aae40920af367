#pragma once

#include "document/VXDocument.h"
#include "editing/window/WindowParts.h"

#include <QPointer>

class SortNameDialog;

namespace runebook {

/// The commands of a document window on its selected records. Each takes what is being typed first and ends
/// there when a field refuses its text; each is one undo step.
class RecordCommands : public QObject
{
    Q_OBJECT
public:
    RecordCommands(const WindowParts &parts, QObject *parent);

    InfoList selectedInfos() const;
    void copy();
    void cut();
    void paste();
    /// Without asking; remove() asks first.
    void deleteSelected();
    void remove();
    void selectAll();
    void add();
    void moveNamesToAltNames();
    /// The first selected record gets its production name from its code point.
    void makeLegacyName();
    /// Opens the sheet that numbers the sort names; it stays until it is answered.
    void numberSortNames();
    /// Null while none is open.
    SortNameDialog *sortNameDialog() const;
    void showInCharacterApplication();
    /// Selects the shown records with the same value as one of the selected ones.
    void selectSame(GlyphField field);
    /// The order that is shown becomes the document's.
    void writeShownOrder();

Q_SIGNALS:
    /// The clipboard, which was to be pasted, holds no records.
    void foreignPasteRequested();

private:
    bool pasteRecords();
    QString removalText() const;
    void revealRow(qsizetype row);

    WindowParts m_parts;
    QPointer<SortNameDialog> m_sortNameDialog;
};

} // namespace runebook
