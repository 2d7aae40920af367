#include "editing/problems/ProblemKinds.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

namespace {

struct Words {
    const char *id;
    const char *title;
    const char *meaning;
};

// In the order of the kinds.
constexpr std::array<Words, kProblemKindCount> kWords {{
    {"missing-name", QT_TRANSLATE_NOOP("Problems", "Missing names"),
     QT_TRANSLATE_NOOP("Problems",
                       "Records without a name, or with the name “unknown” that such records are given.")},
    {"invalid-name", QT_TRANSLATE_NOOP("Problems", "Invalid names"),
     QT_TRANSLATE_NOOP("Problems", "Names that font tools do not accept.")},
    {"duplicate-name", QT_TRANSLATE_NOOP("Problems", "Duplicate names"),
     QT_TRANSLATE_NOOP("Problems", "Names that more than one record has.")},
    {"long-name", QT_TRANSLATE_NOOP("Problems", "Long names"),
     QT_TRANSLATE_NOOP("Problems", "Names of more than 63 characters, which font formats do not hold.")},
    {"repeating-alternate-name", QT_TRANSLATE_NOOP("Problems", "Repeating alternate names"),
     QT_TRANSLATE_NOOP("Problems", "Alternate names that some record has as its name.")},
    {"invalid-code-point", QT_TRANSLATE_NOOP("Problems", "Invalid code points"),
     QT_TRANSLATE_NOOP("Problems",
                       "Code points that are no Unicode numbers of four to six upper-case digits.")},
    {"duplicate-code-point", QT_TRANSLATE_NOOP("Problems", "Duplicate code points"),
     QT_TRANSLATE_NOOP("Problems", "Code points that stand more than once in the document.")},
    {"too-many-code-points", QT_TRANSLATE_NOOP("Problems", "Too many code points"),
     QT_TRANSLATE_NOOP("Problems", "Records with more than two code points. A file keeps two of them.")},
    {"missing-component", QT_TRANSLATE_NOOP("Problems", "Missing components"),
     QT_TRANSLATE_NOOP("Problems", "Names in Decompose that no record has.")},
    {"self-component", QT_TRANSLATE_NOOP("Problems", "Composed with themselves"),
     QT_TRANSLATE_NOOP("Problems", "Records that stand in their own Decompose.")},
    {"circular-component", QT_TRANSLATE_NOOP("Problems", "Circular components"),
     QT_TRANSLATE_NOOP(
         "Problems",
         "Records that are composed of something that is composed of them. No font tool can draw them.")},
    {"ambiguous-component", QT_TRANSLATE_NOOP("Problems", "Ambiguous components"),
     QT_TRANSLATE_NOOP("Problems", "Names in Decompose that more than one record has.")},
    {"missing-mark", QT_TRANSLATE_NOOP("Problems", "Missing marks"),
     QT_TRANSLATE_NOOP("Problems", "Names in Marks that no record has.")},
    {"duplicate-production-name", QT_TRANSLATE_NOOP("Problems", "Duplicate production names"),
     QT_TRANSLATE_NOOP("Problems",
                       "Production names that more than one record has. A font takes each name once.")},
    {"unknown-category", QT_TRANSLATE_NOOP("Problems", "Unknown categories"),
     QT_TRANSLATE_NOOP("Problems", "Categories that are none of the usual words.")},
    {"unknown-subcategory", QT_TRANSLATE_NOOP("Problems", "Unknown subcategories"),
     QT_TRANSLATE_NOOP("Problems", "Subcategories that are none of the usual words.")},
    {"unknown-script", QT_TRANSLATE_NOOP("Problems", "Unknown scripts"),
     QT_TRANSLATE_NOOP("Problems", "Scripts that are none of the usual words.")},
    {"quote-or-line-break", QT_TRANSLATE_NOOP("Problems", "Quotes and line breaks"),
     QT_TRANSLATE_NOOP("Problems",
                       "Values with a double quote or a line break, which end a value in a file.")},
    {"lost-value", QT_TRANSLATE_NOOP("Problems", "Changed by saving"),
     QT_TRANSLATE_NOOP("Problems",
                       "Other values that are not the same after saving and opening the file again.")},
    {"unicode-case", QT_TRANSLATE_NOOP("Problems", "Case unlike Unicode"),
     QT_TRANSLATE_NOOP("Problems",
                       "Capitals that are called lower case, and small letters that are called upper case.")},
    {"unicode-script", QT_TRANSLATE_NOOP("Problems", "Script unlike Unicode"),
     QT_TRANSLATE_NOOP("Problems", "Scripts that are not the one Unicode gives the character.")},
    {"unicode-direction", QT_TRANSLATE_NOOP("Problems", "Direction unlike Unicode"),
     QT_TRANSLATE_NOOP("Problems", "Directions against the one in which Unicode sets the character.")},
    {"unicode-decomposition", QT_TRANSLATE_NOOP("Problems", "Decomposition unlike Unicode"),
     QT_TRANSLATE_NOOP("Problems", "Letters with a component that is no part of the character.")},
    {"unicode-description", QT_TRANSLATE_NOOP("Problems", "Description unlike Unicode"),
     QT_TRANSLATE_NOOP("Problems",
                       "Descriptions in the form of Unicode names that are not the name of the character.")},
    {"unicode-production", QT_TRANSLATE_NOOP("Problems", "Production name unlike code point"),
     QT_TRANSLATE_NOOP("Problems",
                       "Production names that stand for another code point than the record has.")},
    {"one-sided-anchor", QT_TRANSLATE_NOOP("Problems", "One-sided anchors"),
     QT_TRANSLATE_NOOP(
         "Problems",
         "Anchors that nothing attaches to: “top” where no record has “_top”, or the other way round.")},
    {"font-name", QT_TRANSLATE_NOOP("Problems", "Names that fonts do not take"),
     QT_TRANSLATE_NOOP(
         "Problems",
         "Production names, or names without one, with other characters than letters, digits, period and "
         "underscore, with another beginning than a letter or underscore, or of more than 63 characters.")},
    {"comment", QT_TRANSLATE_NOOP("Problems", "Comments in the file"),
     QT_TRANSLATE_NOOP("Problems", "Comments are not kept when the file is saved.")},
    {"unknown-attribute", QT_TRANSLATE_NOOP("Problems", "Unknown attributes"),
     QT_TRANSLATE_NOOP("Problems",
                       "Attributes of the file that no record has. They are not kept when it is saved.")},
    {"unread-attribute", QT_TRANSLATE_NOOP("Problems", "Attributes not read"),
     QT_TRANSLATE_NOOP(
         "Problems",
         "Attributes at the end of lines with non-ASCII text, where reading a line ends early. They are "
         "not kept when the file is saved.")},
    {"dropped-attribute", QT_TRANSLATE_NOOP("Problems", "Repeated attributes"),
     QT_TRANSLATE_NOOP(
         "Problems",
         "Attributes that are repeated, refused, damaged, or begin with blanks. They are not kept as "
         "they are when the file is saved.")},
    {"foreign-line", QT_TRANSLATE_NOOP("Problems", "Other lines"),
     QT_TRANSLATE_NOOP("Problems",
                       "Lines of the file that are no glyph lines. They are not kept when it is saved.")},
    {"other-meaning", QT_TRANSLATE_NOOP("Problems", "Lines read differently"),
     QT_TRANSLATE_NOOP("Problems",
                       "Lines that other programs take for something else than what is read here and written "
                       "when the file is saved.")},
    {"conflict", QT_TRANSLATE_NOOP("Problems", "Unresolved conflicts"),
     QT_TRANSLATE_NOOP(
         "Problems",
         "What two sides of a merge did differently. All sides are records until one is chosen.")},
    {"table-problem", QT_TRANSLATE_NOOP("Problems", "Rows and cells not read"),
     QT_TRANSLATE_NOOP(
         "Problems",
         "Rows of a table that are no record, and cells that are no value of their column. They "
         "stay in the table as they are.")},
    {"file-form", QT_TRANSLATE_NOOP("Problems", "The file itself"),
     QT_TRANSLATE_NOOP("Problems", "What saving changes in the file as a whole.")},
}};

QString translated(const char *text)
{
    return QCoreApplication::translate("Problems", text);
}

} // namespace

QLatin1StringView idOfProblemKind(ProblemKind kind)
{
    return QLatin1StringView(kWords[static_cast<std::size_t>(kind)].id);
}

std::optional<ProblemKind> problemKindOfId(QStringView id)
{
    const auto kinds = allProblemKinds();
    const auto *found = std::find_if(kinds.begin(), kinds.end(),
                                     [&](ProblemKind kind) { return idOfProblemKind(kind) == id; });
    return found != kinds.end() ? std::optional(*found) : std::nullopt;
}

QString titleOfProblemKind(ProblemKind kind)
{
    return translated(kWords[static_cast<std::size_t>(kind)].title);
}

QString meaningOfProblemKind(ProblemKind kind)
{
    return translated(kWords[static_cast<std::size_t>(kind)].meaning);
}

} // namespace runebook
