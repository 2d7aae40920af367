#pragma once

#include "editing/window/WindowParts.h"
#include "model/VXGlyphInfo.h"

#include <QObject>

namespace runebook {

class WindowSearch;

/// The records that somebody went to, with the search that was shown then, and the ways back and forward
/// among them. What was removed since is passed over.
class VisitedPlaces : public QObject
{
    Q_OBJECT
public:
    VisitedPlaces(const WindowParts &parts, WindowSearch &search, QObject *parent);

    /// -1: back, 1: forward.
    bool canGo(int step) const;
    void go(int step);

protected:
    /// The buttons of a mouse that mean back and forward.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Place {
        std::weak_ptr<VXGlyphInfo> info;
        QString search;
        bool isSearch = false; ///< came by typing one, of which only the last is kept

        bool isSameAs(const Place &other) const
        {
            return info.lock() == other.info.lock() && search == other.search;
        }
    };

    Place here() const;
    void push(const Place &place);
    void leave();
    void arrive();
    void noteSearch();
    std::ptrdiff_t placeInDirection(int step) const;
    void show(const Place &place);

    WindowParts m_parts;
    WindowSearch &m_search;
    std::vector<Place> m_places;
    std::ptrdiff_t m_at = -1; ///< the one that was gone to last
    bool m_isGoing = false; ///< back or forward
    bool m_isLeaving = false; ///< for another record, for which a search may have to go
};

} // namespace runebook
