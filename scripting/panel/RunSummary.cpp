#include "scripting/panel/RunSummary.h"

#include "platform/documents/DocumentController.h"
#include "scripting/python/ScriptRun.h"

#include <QLocale>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QString counted(qsizetype count)
{
    return count == 1 ? RunSummary::tr("1 glyph")
                      : RunSummary::tr("%1 glyphs").arg(QLocale().toString(count));
}

} // namespace

RunSummary::RunSummary(QObject *parent) : QObject(parent) { }

void RunSummary::begin()
{
    m_followed.clear();
    m_changed.clear();
    m_records.clear();
    m_all.clear();
    m_touched.clear();
    m_kept.clear();
    m_added = m_removed = 0;
    m_isReset = false;
    m_clock.start();
    // Changes from before the run are told before it.
    for (Document *document : DocumentController::shared().documentList()) {
        if (auto *glyphs = qobject_cast<VXDocument *>(document))
            glyphs->flushChanges();
    }
    follow();
    connect(&DocumentController::shared(), &DocumentController::documentsChanged, this, &RunSummary::follow,
            Qt::UniqueConnection);
}

/// Every document that is open, those that the script opens as well.
void RunSummary::follow()
{
    for (Document *document : DocumentController::shared().documentList()) {
        auto *glyphs = qobject_cast<VXDocument *>(document);
        if (!glyphs || m_followed.contains(glyphs))
            continue;
        m_followed.insert(glyphs);
        connect(glyphs, &VXDocument::infosChanged, this, [this, glyphs](const auto &changes) {
            m_changed.insert(glyphs);
            noteChanges(changes);
        });
        connect(glyphs, &VXDocument::infosInserted, this, [this, glyphs](const IndexSet &indexes) {
            m_changed.insert(glyphs);
            m_added += static_cast<qsizetype>(indexes.size());
            for (const qsizetype index : indexes)
                note(glyphs->objectInInfosAtIndex(index));
        });
        connect(glyphs, &VXDocument::infosRemoved, this, [this, glyphs](const IndexSet &indexes) {
            m_changed.insert(glyphs);
            m_removed += static_cast<qsizetype>(indexes.size());
        });
        connect(glyphs, &VXDocument::infosReset, this, [this, glyphs] {
            m_changed.insert(glyphs);
            m_isReset = true;
        });
    }
}

void RunSummary::noteChanges(const std::vector<VXDocument::Change> &changes)
{
    for (const VXDocument::Change &change : changes) {
        m_records[change.field].insert(change.info.get());
        m_all.insert(change.info.get());
        note(change.info);
    }
}

void RunSummary::note(const InfoPtr &info)
{
    if (m_touched.insert(info.get()).second)
        m_kept.push_back(info);
}

QStringList RunSummary::changes() const
{
    QStringList parts;
    if (m_records.size() == 1 && m_records.begin()->first == GlyphField::Name)
        parts << tr("Renamed %1").arg(counted(static_cast<qsizetype>(m_all.size())));
    else if (!m_all.empty())
        parts << tr("Changed %1").arg(counted(static_cast<qsizetype>(m_all.size())));
    if (m_added > 0)
        parts << (parts.isEmpty() ? tr("Added %1") : tr("added %1")).arg(counted(m_added));
    if (m_removed > 0)
        parts << (parts.isEmpty() ? tr("Removed %1") : tr("removed %1")).arg(counted(m_removed));
    if (m_isReset)
        parts << (parts.isEmpty() ? tr("Rearranged the glyphs") : tr("rearranged them"));
    return parts;
}

QString RunSummary::end()
{
    for (Document *document : DocumentController::shared().documentList()) {
        if (auto *glyphs = qobject_cast<VXDocument *>(document); glyphs && m_followed.contains(glyphs))
            glyphs->flushChanges();
    }
    disconnect(&DocumentController::shared(), nullptr, this, nullptr);
    for (Document *document : DocumentController::shared().documentList())
        document->disconnect(this);
    const QStringList parts = changes();
    const QString what = parts.isEmpty() ? tr("Changed nothing") : parts.join(u", "_s);
    const QString seconds = QLocale().toString(static_cast<double>(m_clock.elapsed()) / 1000, 'f', 1);
    QString line = tr("%1 (%2 s)").arg(what, seconds);
    if (m_changed.size() == 1)
        line = tr("%1, one undo step").arg(line);
    else if (m_changed.size() > 1)
        line = tr("%1, one undo step in each of %2 documents").arg(line).arg(m_changed.size());
    if (ScriptRun::outcome().hasFailed)
        line = tr("Ended by an error. %1").arg(line);
    m_kept.clear();
    return line;
}

} // namespace runebook
