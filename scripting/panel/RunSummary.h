#pragma once

#include "document/VXDocument.h"

#include <QElapsedTimer>
#include <QSet>
#include <map>
#include <set>

namespace runebook {

/// Counts what a script changes in the open documents while it runs, and says it in a line at the end:
/// "Renamed 125 glyphs (0.3 s), one undo step". Main thread only.
class RunSummary : public QObject
{
    Q_OBJECT
public:
    explicit RunSummary(QObject *parent = nullptr);

    void begin();
    /// The line; the counting is over.
    QString end();
    /// How many glyphs have been changed, added or removed so far, or in the last run.
    qsizetype glyphs() const { return static_cast<qsizetype>(m_touched.size()) + m_removed; }

private:
    void follow();
    void noteChanges(const std::vector<VXDocument::Change> &changes);
    void note(const InfoPtr &info);
    QStringList changes() const;

    QElapsedTimer m_clock;
    QSet<VXDocument *> m_followed; ///< keys, never followed
    QSet<VXDocument *> m_changed; ///< likewise
    std::map<GlyphField, std::set<const VXGlyphInfo *>> m_records; ///< likewise
    std::set<const VXGlyphInfo *> m_all;
    std::set<const VXGlyphInfo *> m_touched; ///< those that were added as well
    InfoList m_kept; ///< so that no address comes twice
    qsizetype m_added = 0;
    qsizetype m_removed = 0;
    bool m_isReset = false;
};

} // namespace runebook
