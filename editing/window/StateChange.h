#pragma once

#include <QObject>

namespace runebook {

/// Gathers what changes in a document window: its title and menus follow once in a turn of the event loop,
/// however many things have changed. Who needs them earlier, as a menu that opens, has them told at once.
class StateChange : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Something that title or menus depend on may have changed.
    void note();
    /// Tells now what was noted; nothing when there is nothing.
    void tell();

Q_SIGNALS:
    void changed();

private:
    bool m_isNoted = false;
    bool m_isTellingQueued = false;
};

} // namespace runebook
