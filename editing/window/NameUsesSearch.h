#pragma once

#include "document/NameUses.h"

#include <QObject>
#include <QTimer>
#include <functional>
#include <optional>

class VXDocument;

namespace runebook {

/// Looks for uses of names in slices of idle time, and anew when records change before it has come to the end
/// or after.
class NameUsesSearch : public QObject
{
    Q_OBJECT
public:
    using Maker = std::function<NameUses()>;
    /// Looks for what \a maker makes, which is asked again for each search.
    NameUsesSearch(VXDocument &document, Maker maker, QObject *parent);

    void start();
    /// Forgets what was found.
    void stop();
    /// Looks for about so long at once; true when all is found.
    bool runFor(std::chrono::milliseconds budget);
    bool isComplete() const { return m_uses && m_uses->isComplete(); }
    /// What was found. Only after start().
    const NameUses &uses() const { return *m_uses; }

Q_SIGNALS:
    /// What uses() answered is about to go.
    void restarting();
    /// All is found; again after records have changed.
    void finished();

private:
    void runSlice();

    Maker m_maker;
    std::optional<NameUses> m_uses;
    QTimer m_timer;
};

} // namespace runebook
