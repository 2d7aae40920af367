#include "editing/search/SearchMenu.h"

#include "model/FieldTable.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

int tagOf(SearchMode mode)
{
    return static_cast<int>(mode);
}

} // namespace

/// What the menu calls a field.
QString SearchMenu::titleOf(GlyphField field)
{
    switch (field) {
    case GlyphField::Production:
        return tr("Production");
    case GlyphField::AltNames:
        return tr("Alternate Name");
    default:
        return titleOfField(field);
    }
}

QString SearchMenu::helpOn(GlyphField field)
{
    switch (field) {
    case GlyphField::Name:
        return tr("Matches a part of the name. Of several words each must occur, in any order.");
    case GlyphField::Unicodes:
        return tr("Matches a part of the first code point, or a range such as 0041-005A.");
    case GlyphField::Category:
        return tr("Matches a part of the category, in either case.");
    case GlyphField::SubCategory:
        return tr("Matches a part of the subcategory.");
    case GlyphField::Script:
        return tr("Matches a part of the script, in either case.");
    case GlyphField::Decompose:
        return tr("Matches a part of the list of glyphs that compose the glyph.");
    case GlyphField::Anchors:
        return tr("Matches a part of the anchors, in either case.");
    case GlyphField::Production:
        return tr("Matches a part of the production name. Of several words each must occur, in any order.");
    case GlyphField::AltNames:
        return tr("Matches one of the alternate names as a whole.");
    case GlyphField::Marks:
        return tr("Matches a part of the marks, in either case.");
    case GlyphField::Desc:
        return tr("Matches a part of the description, in either case.");
    default:
        return tr("Matches a part of the field.");
    }
}

QList<SearchMenu::Item> SearchMenu::items()
{
    QList<Item> items {{tr("All"), tagOf(SearchMode::All),
                        tr("Matches a part of the name, code point or production name.")}};
    for (const GlyphField field : fieldsBy<&FieldRow::searchTag>())
        items.append({titleOf(field), rowOf(field).searchTag, helpOn(field)});
    const Item separator;
    return items << QList<Item> {
               separator,
               {tr("Match Case"), kMatchCaseTag,
                tr("Tells upper from lower case in names, subcategories and compositions.")},
               {tr("Regex"), kRegexTag,
                tr("Looks at whole names only: takes the text as a regular expression for the name from its "
                   "first to its last character, with regard to case.")},
               separator,
               {{}, kRecentsTitleTag, {}},
               {tr("Recent Searches"), kRecentsTitleTag, {}},
               {tr("Recents"), kRecentsTag, {}},
               {tr("Clear"), kClearRecentsTag, tr("Forgets the recent searches.")},
           };
}

SearchMenu::ItemState SearchMenu::stateOfItem(int tag, const SearchSettings &settings)
{
    if (tag <= kLastModeTag)
        return {tag == settings.state, !settings.regex};
    if (tag == kMatchCaseTag)
        return {settings.matchCase, !settings.regex};
    if (tag == kRegexTag)
        return {settings.regex, true};
    return {};
}

bool SearchMenu::choose(int tag)
{
    const SearchSettings old = SearchSettings::current();
    SearchSettings settings = old;
    if (tag <= kLastModeTag)
        settings.state = tag;
    else if (tag == kMatchCaseTag)
        settings.matchCase = !old.matchCase;
    else if (tag == kRegexTag)
        settings.regex = !old.regex;
    settings.store();
    return settings != old;
}

QString SearchMenu::placeOf(const SearchSettings &settings)
{
    QStringList parts;
    for (const Item &item : items()) {
        const bool isOption = item.tag == kMatchCaseTag || item.tag == kRegexTag;
        const bool isMode = item.tag == tagOf(settings.effectiveMode());
        const bool isUsed = item.tag == kRegexTag || !settings.regex;
        if (!item.isSeparator()
            && (isMode || (isOption && isUsed && stateOfItem(item.tag, settings).isTicked)))
            parts += item.title;
    }
    return parts.isEmpty() ? tr("Nothing") : parts.join(u", "_s);
}

QString SearchMenu::prompt(const SearchSettings &settings)
{
    const int tag = tagOf(settings.effectiveMode());
    const QList<Item> all = items();
    const auto item = std::find_if(all.begin(), all.end(), [tag](const Item &candidate) {
        return candidate.tag == tag && !candidate.isSeparator();
    });
    const QString field = item == all.end() ? tr("Nothing") : item->title;
    return settings.regex ? tr("Search Whole Names by Regex") : tr("Search %1").arg(field);
}

QStringList RecentSearches::texts()
{
    return Settings::kRecentSearches.value();
}

void RecentSearches::add(const QString &text)
{
    if (text.isEmpty())
        return;
    QStringList all = texts();
    all.removeAll(text);
    all.prepend(text);
    Settings::kRecentSearches.set(all.mid(0, kMostTexts));
}

void RecentSearches::clear()
{
    Settings::kRecentSearches.reset();
}

} // namespace runebook
