#pragma once

#include "editing/compare/CompareLists.h"

namespace runebook {

/// Where the list of keys goes on after a command that changes what is listed: at first from the top.
class NextKeys
{
public:
    /// What the command does to the selected keys.
    enum class Done {
        Surely,
        Perhaps, ///< one that is still listed is not done, and stays selected
    };

    /// At the first key behind the selected ones.
    static NextKeys behindSelection(const KeyList &list, Done done);
    /// At what is not listed now.
    static NextKeys atWhatComesBack(const KeyList &list);

    /// The rows of \a keys, listed now; nothing when the selection stays.
    std::optional<IndexSet> rowsIn(const QStringList &keys) const;
    /// Whether nothing stood behind what was selected.
    bool isPastEnd() const { return m_row > 0 && m_nextKey.isNull(); }

private:
    std::optional<IndexSet> rowsNotListedBefore(const QStringList &keys) const;

    bool m_isWhatComesBack = false;
    QStringList m_keys; ///< that may not be done, or listed before something comes back
    QString m_nextKey; ///< null: none
    qsizetype m_row = 0; ///< of that key
    qsizetype m_formerCount = 0;
};

} // namespace runebook
