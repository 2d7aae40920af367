#include "editing/problems/HintTexts.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/problems/CharacterParts.h"
#include "editing/problems/UnicodeChecks.h"
#include "model/CodePointRules.h"
#include "model/NameRules.h"
#include "model/ProposedFields.h"
#include "model/StringHelpers.h"
#include "model/UnicodeData.h"
#include "platform/ShownText.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(HintTexts)
};

QString quoted(const QString &text)
{
    constexpr qsizetype kLongest = 80;
    return u"“"_s + shownText(cellDisplayText(text), kLongest) + u'”';
}

char32_t codePointOf(const VXGlyphInfo &info)
{
    return codePointOfText(info.unicode().toStdString()).value_or(0);
}

QString nameOfCharacter(const VXDocument &document, char32_t codePoint)
{
    const InfoPtr info = document.infoForUnicode(hexStringFromInt(codePoint));
    return info ? info->name() : QString();
}

/// "U+00E9, LATIN SMALL LETTER E WITH ACUTE"
QString characterText(char32_t codePoint)
{
    return u"U+%1, %2"_s.arg(hexStringFromInt(codePoint), proposedDescription(codePoint));
}

QString foreignComponent(const VXDocument &document, const VXGlyphInfo &info)
{
    const char32_t codePoint = codePointOf(info);
    for (const QString &name : info.decompose().split(u", "_s)) {
        const InfoPtr component = document.infoForName(name);
        if (!component || component->unicodes().isEmpty())
            continue;
        if (!CharacterParts::isPartOf(codePointOf(*component), codePoint))
            return name;
    }
    return {};
}

QStringList proposedNames(const VXDocument &document, const VXGlyphInfo &info)
{
    QStringList names;
    for (const char32_t part : proposedComponents(codePointOf(info))) {
        names += nameOfCharacter(document, part);
        if (names.last().isEmpty())
            return {};
    }
    return names;
}

} // namespace

QString textOfHint(ProblemKind kind, const VXGlyphInfo &info, const VXDocument &document)
{
    const char32_t codePoint = codePointOf(info);
    const QString character = characterText(codePoint);
    switch (kind) {
    case ProblemKind::UnicodeCase:
        return Texts::tr("The case is %1, the character is %2.")
            .arg(quoted(VXGlyphInfo::stringFromCase(info.caseValue())), character);
    case ProblemKind::UnicodeScript:
        return Texts::tr("The script is %1, that of the character is %2.")
            .arg(quoted(info.script()), quoted(proposedScript(codePoint)));
    case ProblemKind::UnicodeDirection:
        return Texts::tr("The direction is %1, that of the character is %2.")
            .arg(quoted(VXGlyphInfo::stringFromDirection(info.direction())),
                 quoted(VXGlyphInfo::stringFromDirection(
                     info.direction() == VXGlyphInfo::RTL ? VXGlyphInfo::LTR : VXGlyphInfo::RTL)));
    case ProblemKind::UnicodeDecomposition:
        return Texts::tr("%1 is no part of %2.").arg(quoted(foreignComponent(document, info)), character);
    case ProblemKind::UnicodeDescription:
        return Texts::tr("The character is %1.").arg(character);
    case ProblemKind::UnicodeProduction:
        return Texts::tr("%1 stands for another character than %2.")
            .arg(quoted(info.production()), character);
    case ProblemKind::FontName:
        return Texts::tr("A font would call the glyph %1.").arg(quoted(UnicodeChecks::fontName(info)));
    default:
        return {};
    }
}

std::vector<FieldFix> hintFixes(const VXDocument &document, ProblemKind kind, const VXGlyphInfo &info)
{
    const char32_t codePoint = codePointOf(info);
    switch (kind) {
    case ProblemKind::UnicodeCase:
        return {{GlyphField::Case, {VXGlyphInfo::stringFromCase(proposedCase(codePoint))}}};
    case ProblemKind::UnicodeScript:
        return {{GlyphField::Script, {proposedScript(codePoint)}}};
    case ProblemKind::UnicodeDirection: {
        // What goes without saying is said where the field said the opposite.
        const bool isRightToLeft = info.direction() == VXGlyphInfo::LTR;
        return {{GlyphField::Direction, {isRightToLeft ? u"RTL"_s : u"LTR"_s}}};
    }
    case ProblemKind::UnicodeDescription:
        return {{GlyphField::Desc, {proposedDescription(codePoint)}}};
    case ProblemKind::UnicodeDecomposition: {
        const QStringList names = proposedNames(document, info);
        return names.isEmpty() ? std::vector<FieldFix>()
                               : std::vector<FieldFix> {{GlyphField::Decompose, {names.join(u", "_s)}}};
    }
    case ProblemKind::UnicodeProduction:
    case ProblemKind::FontName: {
        const QString production =
            info.unicodes().isEmpty() ? QString() : productionNameFor(info.name(), info.unicode());
        const QString own = production.isEmpty() ? info.name() : production;
        if (!UnicodeChecks::isFontName(own.toStdString()) || own == UnicodeChecks::fontName(info))
            return {};
        return {{GlyphField::Production, {production}}};
    }
    default:
        return {};
    }
}

} // namespace runebook
