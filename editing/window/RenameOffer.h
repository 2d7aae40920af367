#pragma once

#include "document/NameUses.h"
#include "editing/window/WindowParts.h"

#include <QObject>

namespace runebook {

class NameUsesSearch;
class UsesDialog;

/// Once a record has another name, offers to write that name where others still have the former one. It asks
/// in the bar above the table, which stops nobody; what is not answered is offered again with the next
/// renaming.
class RenameOffer : public QObject
{
    Q_OBJECT
public:
    RenameOffer(const WindowParts &parts, QObject *parent);

    bool hasRenamed() const { return !m_renamed.empty(); }
    /// Lists what would change, with a tick for each.
    UsesDialog *showList();
    /// Has all uses follow.
    void followAll();

Q_SIGNALS:
    void showRequested(const InfoPtr &info);
    /// There is something to be renamed, or no more.
    void changed();

private:
    void noteStep();
    void add(const Renamed &renamed);
    void forgetUndone();
    void look();
    void offer();
    void follow(const NameUses &uses, const std::function<bool(std::size_t)> &isChosen);
    void clear();
    QString question(const NameUses &uses) const;

    WindowParts m_parts;
    std::vector<Renamed> m_renamed; ///< and not followed yet
    NameUsesSearch *m_search;
    int m_step = -1; ///< the one that all of them come from; -1: several
    bool m_isFollowing = false;
};

} // namespace runebook
