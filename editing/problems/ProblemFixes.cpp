#include "editing/problems/ProblemFixes.h"

#include "document/SavableForm.h"
#include "editing/fields/CodePointTokens.h"
#include "editing/problems/HintTexts.h"
#include "model/CodePointRules.h"
#include "model/NameRules.h"

#include <QCoreApplication>
#include <QLocale>
#include <QSet>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Fixes = std::vector<FieldFix>;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ProblemFixes)
};

bool isUsable(const QString &name)
{
    return objectionToName(QStringView(name)) == NameObjection::None;
}

QStringList trimmedParts(const QString &text)
{
    QStringList parts;
    for (const QString &part : text.split(kListSeparator)) {
        if (const QString trimmed = part.trimmed(); !trimmed.isEmpty())
            parts << trimmed;
    }
    return parts;
}

/// Spaces around the name go; of several names in one the further ones become alternate names.
Fixes nameFixes(const VXDocument &document, const VXGlyphInfo &info)
{
    const QStringList names = trimmedParts(info.name());
    const bool areUsable = !names.isEmpty() && std::all_of(names.begin(), names.end(), isUsable);
    if (!areUsable || names.first() == info.name() || document.infoForName(names.first()))
        return {};
    Fixes fixes {{GlyphField::Name, {names.first()}}};
    QStringList others = info.altNames();
    others << names.sliced(1);
    others.removeDuplicates();
    if (others != info.altNames())
        fixes.push_back({GlyphField::AltNames, others});
    return fixes;
}

/// Prefixes, blanks and superfluous zeros go, short ones are filled, lists in one text are split.
Fixes codePointFixes(const VXGlyphInfo &info)
{
    const QStringList present = info.unicodes();
    QStringList tokens = codePointTokensInText(present.join(u' '));
    for (QString &token : tokens) {
        while (token.size() > 4 && token.startsWith(u'0'))
            token.remove(0, 1);
    }
    const QStringList corrected = normalizedCodePointTokens(tokens);
    const bool isWhole = corrected.size() == tokens.size()
        && std::all_of(corrected.begin(), corrected.end(), [](const QString &text) {
                             return objectionToCodePoint(text.toStdString()) == CodePointObjection::None;
                         });
    if (!isWhole || corrected == present)
        return {};
    return {{GlyphField::Unicodes, corrected}};
}

/// A record that names the same code point twice needs it once.
Fixes repeatedCodePointFixes(const VXGlyphInfo &info)
{
    QStringList codePoints = info.unicodes();
    if (codePoints.removeDuplicates() == 0)
        return {};
    return {{GlyphField::Unicodes, codePoints}};
}

Fixes plannedFixes(const VXDocument &document, ProblemKind kind, const VXGlyphInfo &info)
{
    switch (kind) {
    case ProblemKind::InvalidName:
        return nameFixes(document, info);
    case ProblemKind::InvalidCodePoint:
        return codePointFixes(info);
    case ProblemKind::DuplicateCodePoint:
    case ProblemKind::ManyCodePoints:
        return repeatedCodePointFixes(info);
    case ProblemKind::QuoteOrBreak:
    case ProblemKind::LostValue:
        return savableForm(info, document.fileVersion());
    default:
        return isHint(kind) ? hintFixes(document, kind, info) : Fixes();
    }
}

/// None when a value that no save writes would be among them; \a leftOut then counts the record.
Fixes fixesFor(const VXDocument &document, ProblemKind kind, const VXGlyphInfo &info,
               LeftOut *leftOut = nullptr)
{
    Fixes fixes = plannedFixes(document, kind, info);
    for (const FieldFix &fix : fixes) {
        const QString refusal = refusalOfEdited(fix.field, fix.value);
        if (refusal.isNull())
            continue;
        if (leftOut)
            leftOut->add(refusal);
        return {};
    }
    return fixes;
}

void store(VXGlyphInfo &info, const FieldFix &fix)
{
    if (fix.field == GlyphField::Case)
        info.setCase(VXGlyphInfo::caseFromString(fix.value.first()));
    else if (fix.field == GlyphField::Direction)
        info.setDirection(VXGlyphInfo::directionFromString(fix.value.first()));
    else
        storeEdited(info, fix.field, fix.value);
}

} // namespace

QString ProblemFixes::titleFor(ProblemKind kind)
{
    switch (kind) {
    case ProblemKind::InvalidName:
        return Texts::tr("Trim and Split Names");
    case ProblemKind::InvalidCodePoint:
        return Texts::tr("Correct Code Points");
    case ProblemKind::DuplicateCodePoint:
    case ProblemKind::ManyCodePoints:
        return Texts::tr("Remove Repeated Code Points");
    case ProblemKind::QuoteOrBreak:
        return Texts::tr("Remove Quotes and Line Breaks");
    case ProblemKind::LostValue:
        return Texts::tr("Trim and Split Values");
    case ProblemKind::UnicodeCase:
        return Texts::tr("Set Case by Unicode");
    case ProblemKind::UnicodeScript:
        return Texts::tr("Set Script by Unicode");
    case ProblemKind::UnicodeDirection:
        return Texts::tr("Set Direction by Unicode");
    case ProblemKind::UnicodeDecomposition:
        return Texts::tr("Decompose by Unicode");
    case ProblemKind::UnicodeDescription:
        return Texts::tr("Set Description by Unicode");
    case ProblemKind::UnicodeProduction:
    case ProblemKind::FontName:
        return Texts::tr("Set Production Names by Code Point");
    default:
        return {};
    }
}

bool ProblemFixes::canFix(const VXDocument &document, ProblemKind kind, const VXGlyphInfo &info)
{
    return !fixesFor(document, kind, info).empty();
}

qsizetype ProblemFixes::apply(VXDocument &document, std::span<const Problem> problems, LeftOut *leftOut)
{
    // Planned before anything is changed: the step is named by their number, and a name that two records
    // would get goes to the first of them.
    std::vector<std::pair<InfoPtr, FieldFix>> plan;
    QSet<const VXGlyphInfo *> fixed;
    QSet<QString> newNames;
    QString title;
    for (const Problem &problem : problems) {
        if (!problem.info || problem.info->listings() == 0 || fixed.contains(problem.info.get()))
            continue;
        const Fixes fixes = fixesFor(document, problem.kind, *problem.info, leftOut);
        if (fixes.empty())
            continue;
        if (const FieldFix &first = fixes.front(); first.field == GlyphField::Name) {
            if (newNames.contains(first.value.first()))
                continue;
            newNames.insert(first.value.first());
        }
        const QString own = titleFor(problem.kind);
        title = title.isNull() || title == own ? own : Texts::tr("Fix Problems");
        fixed.insert(problem.info.get());
        for (const FieldFix &fix : fixes)
            plan.emplace_back(problem.info, fix);
    }
    if (plan.empty())
        return 0;
    const auto count = static_cast<qsizetype>(fixed.size());
    const UndoGroup group(document.undoManager(),
                          Texts::tr("%1 (Records: %2)").arg(title, QLocale().toString(qlonglong(count))));
    for (const auto &[info, fix] : plan)
        store(*info, fix);
    return count;
}

} // namespace runebook
