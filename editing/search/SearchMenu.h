#pragma once

#include "editing/search/SearchFilter.h"
#include "model/GlyphField.h"

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

namespace runebook {

/// What the search menu consists of and what its items do. No widget: the search field shows it.
class SearchMenu
{
    Q_DECLARE_TR_FUNCTIONS(SearchMenu)
public: // tags besides those of SearchMode
    static constexpr int kLastModeTag = 999;
    static constexpr int kRecentsTitleTag = 1000; ///< also of the separator in front of it
    static constexpr int kRecentsTag = 1001;
    static constexpr int kClearRecentsTag = 1002;
    static constexpr int kMatchCaseTag = 2001;
    static constexpr int kRegexTag = 2002;

    struct Item {
        QString title; ///< null for a separator
        int tag = 0;
        QString help; ///< one sentence: what the item matches or does
        bool isSeparator() const { return title.isNull(); }
    };
    struct ItemState {
        bool isTicked = false;
        bool isEnabled = true;
        friend bool operator==(const ItemState &, const ItemState &) = default;
    };

public:
    /// All items in order, translated.
    static QList<Item> items();
    /// How an item of the menu looks under \a settings.
    static ItemState stateOfItem(int tag, const SearchSettings &settings);
    /// Stores what choosing the item means; true when the filter has to be built again.
    static bool choose(int tag);
    /// Where and how a search looks, in words: "Name, Match Case".
    static QString placeOf(const SearchSettings &settings);
    /// What the empty search field says: what it will search.
    static QString prompt(const SearchSettings &settings);

private:
    static QString titleOf(GlyphField field);
    static QString helpOn(GlyphField field);
};

/// The texts searched for last, newest first, each once; shared by all windows and kept in the user default
/// "RecentSearches".
class RecentSearches
{
public:
    static constexpr qsizetype kMostTexts = 10;

    static QStringList texts();
    /// Does nothing for an empty text.
    static void add(const QString &text);
    static void clear();
};

} // namespace runebook
