#pragma once

#include "document/VXDocument.h"
#include "editing/window/WindowParts.h"

#include <QTimer>

class QSplitter;

namespace runebook {

class FieldAspect;
class RecordFilter;
class SlicedFilter;
class ValueRename;
class ValuesPanel;
class WindowSearch;

/// The panel of values beside the table of a window: made when it is shown for the first time, with what it
/// counts. Whether it is shown, how wide, and of which field is remembered.
///
/// It counts what the search, the problems and all conditions of other fields leave: what is chosen of a
/// field does not narrow its own values, so that others can be chosen besides. While the panel is hidden
/// nothing is counted.
class WindowValues : public QObject
{
    Q_OBJECT
public:
    /// The panel becomes the second part of \a split.
    WindowValues(const WindowParts &parts, WindowSearch &search, QSplitter &split, QObject *parent);
    ~WindowValues() override;

    /// Null until it is shown for the first time.
    ValuesPanel *panel() const { return m_panel; }
    bool isShown() const;
    void setShown(bool isShown);
    /// The same for a person: with the focus in it, or back in the table.
    void toggle();
    /// Opens it with the aspect of that id; false, and an error, when there is none.
    [[nodiscard]] bool show(const QString &id, Error *error = nullptr);
    /// Pairs of value and number of records, the most frequent first, as the panel has them for that aspect;
    /// an absent value stands for none. Counts at once.
    [[nodiscard]] std::optional<QVariantList> counts(const QString &id, Error *error = nullptr);
    struct Renamed {
        qsizetype records = 0;
        qsizetype unseen = 0; ///< of these
    };
    /// Gives all records of the document that have one value another, as one step. Nothing, and an error,
    /// when the field refuses the new text or the user stops it.
    [[nodiscard]] std::optional<Renamed> rename(const QString &id, const QString &from, const QString &to,
                                                Error *error = nullptr);

Q_SIGNALS:
    void shownChanged();

private:
    void buildPanel();
    bool apply(ValueRename &renaming, Error *error);
    void renameTyped(const QString &id, const QString &from, const QString &to);
    static QString renamedText(const QString &from, const QString &to, const Renamed &renamed);
    void noteRows();
    void followRows();
    void takePlaces(const std::optional<IndexSet> &places);
    RecordFilter filterWithout(const FieldAspect &aspect) const;
    std::optional<IndexSet> placesFor(const FieldAspect &aspect) const;
    void prepareClick();

    WindowParts m_parts;
    WindowSearch &m_search;
    QSplitter &m_split;
    ValuesPanel *m_panel = nullptr;
    SlicedFilter *m_slicedFilter = nullptr; ///< finds what passes where that takes long
    QTimer m_timer; ///< until the panel counts what is shown
    QTimer m_idleTimer; ///< until a click is answered at once
};

} // namespace runebook
