#include "editing/search/SearchExamples.h"

#include "editing/search/SearchMenu.h"

namespace runebook {

using namespace Qt::StringLiterals;

QString SearchExample::place() const
{
    return SearchMenu::placeOf(settings);
}

QList<SearchExample> SearchExamples::all()
{
    const auto plain = [](SearchMode mode, const QString &text, const QString &finds) {
        return SearchExample {{static_cast<int>(mode), false, false}, text, finds};
    };
    const auto matchingCase = [](SearchMode mode, const QString &text, const QString &finds) {
        return SearchExample {{static_cast<int>(mode), true, false}, text, finds};
    };
    const auto regex = [](const QString &text, const QString &finds) {
        return SearchExample {{static_cast<int>(SearchMode::Name), false, true}, text, finds};
    };
    using enum SearchMode;
    return {
        plain(All, u"alpha"_s, tr("alpha in a name or production name, in either case")),
        plain(All, u"ä"_s, tr("the character with this code point, 00E4")),
        plain(Name, u"dieresis .sc"_s, tr("names with both words, in any order")),
        matchingCase(Name, u"AE"_s, tr("AE in capitals only")),
        plain(Unicode, u"0410-042F"_s, tr("code points in this range, both ends included")),
        plain(Unicode, u"1F1"_s, tr("code points with these digits")),
        plain(Category, u"punct"_s, tr("a part of the category")),
        plain(Subcategory, u"ligature"_s, tr("a part of the subcategory")),
        plain(Script, u"greek"_s, tr("a part of the script")),
        plain(Decompose, u"acutecomb"_s, tr("glyphs that are composed with it")),
        plain(Anchors, u"ogonek"_s, tr("glyphs with such an anchor")),
        plain(Production, u"uni .case"_s, tr("production names with both words")),
        plain(AlternateName, u"threeroman"_s, tr("exactly this alternate name")),
        plain(Accents, u"brevecomb"_s, tr("glyphs that take this mark")),
        plain(Description, u"with stroke"_s, tr("these words in the description")),
        regex(u"[aeiou].*\\.sc"_s, tr("names from a vowel to .sc")),
        regex(u".*_.*-deva"_s, tr("names with an underscore that end with -deva")),
    };
}

} // namespace runebook
