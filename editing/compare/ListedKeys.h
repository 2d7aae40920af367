#pragma once

#include "editing/compare/ComparedDocuments.h"
#include "editing/compare/FoundKeys.h"
#include "editing/compare/NextKeys.h"

#include <QTimer>
#include <memory>

namespace runebook {

/// The keys by which two documents differ in the chosen mode, as a list: compared in slices, counted in all
/// modes and by field.
class ListedKeys : public QObject
{
    Q_OBJECT
public:
    struct FieldCount {
        const ComparedField *field;
        qsizetype records; ///< found that differ in it
    };

    /// Refers to the documents.
    explicit ListedKeys(ComparedDocuments &documents);

public: // comparing
    /// Compares anew. Very long lists go on in the background, and are listed later.
    void update();
    /// Ends a comparison that goes on in the background.
    void cancel();
    /// Finishes the list where it is still being found.
    void finish();
    /// How long a comparison keeps its caller waiting before it goes on in the background.
    void setPatience(std::chrono::milliseconds patience) { m_patience = patience; }
    /// Whether the list is still being found; progress() tells how much of it, from 0 to 1.
    bool isFinding() const { return m_comparison && !m_isListed; }
    double progress() const { return m_comparison ? m_comparison->progress() : 1; }
    /// Whether keys of any mode are still being found.
    bool isCounting() const { return m_comparison != nullptr; }
    bool isCancelled() const { return m_isCancelled; }
    /// Whether the documents are others by now than those that were compared.
    bool isStale() const { return m_isStale; }

public: // the list
    KeyList &list() { return m_list; }
    const KeyList &list() const { return m_list; }
    /// The number of keys in a mode; -1 while it is not known.
    qsizetype count(CompareMode mode) const { return m_counts[static_cast<std::size_t>(mode)]; }
    /// Each field in which records found differ.
    std::vector<FieldCount> fieldCounts() const;
    /// The field in which the records listed differ; nothing for any. Stays while there are such records.
    std::optional<GlyphField> field() const { return m_field; }
    void listField(std::optional<GlyphField> field);

public: // after a command of the window has changed a document
    /// Whether the list is that of the documents as they are, so that only what the command changes has to be
    /// compared again.
    bool isUpToDate();
    /// Compares all records of some keys again, the only ones that the command has changed, and nothing but
    /// fields of them.
    void listAgain(const std::array<InfoList, 2> &records, NextKeys next);
    void listAnew(NextKeys next);

Q_SIGNALS:
    /// A comparison begins.
    void begun();
    void countsChanged();
    void fieldCountsChanged();
    /// The list goes on after a command, from the top when the command was about its end.
    void wentOn(bool isFromTop);
    /// The keys of all modes are known.
    void done();
    void becameStale();
    void stateChanged();

private:
    void documentsHaveChanged();
    void goOn(std::chrono::milliseconds budget);
    void setFound(FoundKeys found);
    QStringList keysToList() const;
    void show(const QStringList &keys);

    ComparedDocuments &m_documents;
    KeyList m_list;
    std::unique_ptr<KeyComparison> m_comparison; ///< while it goes on
    CompareMode m_mode = CompareMode::OnlyRight; ///< that is compared first, to be listed
    FoundKeys m_found; ///< of that mode, listed or not
    std::optional<GlyphField> m_field;
    std::array<qsizetype, kCompareModeCount> m_counts;
    std::optional<NextKeys> m_next; ///< until the list is there
    std::chrono::milliseconds m_patience {60};
    QTimer m_timer;
    bool m_isListed = false; ///< the list is that of the running comparison
    bool m_isCancelled = false;
    bool m_isStale = false;
};

} // namespace runebook
