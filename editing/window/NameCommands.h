#pragma once

#include "editing/window/WindowParts.h"
#include "model/VXGlyphInfo.h"

#include <QObject>

class QMessageBox;

namespace runebook {

class ComponentLinks;
class RenameOffer;
class VisitedPlaces;
class WindowSearch;

/// What a document window does about names in other records: who uses a record, what follows when it gets
/// another name, the ways to components and back.
class NameCommands : public QObject
{
    Q_OBJECT
public:
    NameCommands(const WindowParts &parts, WindowSearch &search, QObject *parent);

    /// Lists who uses the selected records.
    void showUses();
    RenameOffer &renaming() const { return *m_renaming; }
    ComponentLinks &links() const { return *m_links; }
    VisitedPlaces &places() const { return *m_places; }

    /// Says in \a box, below what it says already, who uses \a infos, which are about to go; as soon as that
    /// is known.
    static void tellOfUses(QMessageBox &box, VXDocument &document, const InfoList &infos);

private:
    WindowParts m_parts;
    WindowSearch &m_search;
    RenameOffer *m_renaming;
    ComponentLinks *m_links;
    VisitedPlaces *m_places;
};

} // namespace runebook
