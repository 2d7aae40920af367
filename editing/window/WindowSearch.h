#pragma once

#include "document/VXDocument.h"
#include "editing/window/WindowParts.h"

#include <QTimer>
#include <functional>

namespace runebook {

class RecordFilter;
class SlicedFilter;
struct SearchResult;

/// The search of a document window: what is typed filters the rows; what takes longer than a frame is
/// searched in slices, while the rows stay as they are. Also the ways to a single record.
class WindowSearch : public QObject
{
    Q_OBJECT
public:
    WindowSearch(const WindowParts &parts, QObject *parent);

    /// Filters by what stands in the search field, and by the conditions besides.
    void filterInfos();
    /// True while a filter is being built, applied or still searching.
    bool isFiltering() const;
    /// True while the rows are exchanged; what they tell of themselves meanwhile is told again by applied().
    /// Shows only the records whose place in the document passes, besides the search; null: all.
    void setCondition(const std::function<bool(qsizetype place)> &condition);
    /// What the search field asks together with the conditions of \a filter.
    SearchResult wanted(const RecordFilter &filter) const;
    /// What answers that where it takes long; for whoever asks for something else than the rows.
    SlicedFilter *makeSlicedFilter(QObject *parent) const;
    /// Puts the caret into the search field.
    void focusField();
    /// Asks for a name, a code point or a character, and shows its record.
    void goToInfo();
    /// Selects one record and scrolls to it, taking away a filter that hides it.
    void showInfo(const InfoPtr &info);

Q_SIGNALS:
    /// Other rows are shown; still applying.
    void applied();
    /// The same when all is done.
    void finished();
    /// From 0 to 1.
    void progressed(double done);
    /// A record is about to be shown, and is shown now, because somebody wants to go there.
    void leaving();
    void arrived();
    /// A record is to be shown that a filter hides: conditions besides the search have to go.
    void allWanted();

private:
    /// Exchanges the rows by what \a setFilter does, which answers with the problem of the search.
    void apply(const std::function<std::optional<Error>()> &setFilter);
    void buildSlicedFilter();
    /// Makes ready in idle time what the first search would have to wait for.
    void prepare();

    WindowParts m_parts;
    SlicedFilter *m_slicedFilter = nullptr;
    QTimer m_idleTimer;
    bool m_isApplying = false;
};

} // namespace runebook
