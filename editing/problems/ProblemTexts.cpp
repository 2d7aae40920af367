#include "editing/problems/ProblemTexts.h"

#include "document/SavableForm.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/problems/AnchorSides.h"
#include "editing/problems/HintTexts.h"
#include "editing/problems/RecordTexts.h"
#include "model/CodePointRules.h"
#include "model/NameRules.h"
#include "model/RoundTrip.h"
#include "platform/ShownText.h"

#include <QCoreApplication>
#include <QLocale>
#include <QSet>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ProblemTexts)
};

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

/// A text from a file, short enough to be read in a line.
QString quoted(const QString &text)
{
    constexpr qsizetype kLongest = 80;
    const QString line = cellDisplayText(text);
    return u"“"_s + shownText(line, kLongest) + u'”';
}

/// How many records have the name \a text, by its key.
QString countOf(const KeyCounts &counts, std::string_view text)
{
    return numberText(counts.count(keyOfName(text)));
}

/// One entry of a list that is kept in one text; the others become no texts of their own.
QString entryOf(const VXGlyphInfo &info, GlyphField field, int index)
{
    std::string buffer;
    std::string_view rest = info.utf8(field, buffer);
    const std::string_view separator(kListSeparator.data(), static_cast<std::size_t>(kListSeparator.size()));
    for (; index > 0; --index) {
        const std::size_t end = rest.find(separator);
        if (end == rest.npos)
            return {};
        rest.remove_prefix(end + separator.size());
    }
    return FieldValue::textOfUtf8(rest.substr(0, rest.find(separator)));
}

QString textOnCodePoints(const VXGlyphInfo &info)
{
    constexpr qsizetype kMost = 8;
    QStringList sentences;
    for (const QString &text : info.unicodes()) {
        if (sentences.size() == kMost) {
            sentences << u"…"_s;
            break;
        }
        switch (objectionToCodePoint(text.toStdString())) {
        case CodePointObjection::None:
            break;
        case CodePointObjection::NoNumber:
            sentences << Texts::tr("%1 is no hexadecimal number.").arg(quoted(text));
            break;
        case CodePointObjection::TooLarge:
            sentences << Texts::tr("%1 is beyond the last code point, 10FFFF.").arg(quoted(text));
            break;
        case CodePointObjection::Surrogate:
            sentences << Texts::tr("%1 is a surrogate, half a character.").arg(quoted(text));
            break;
        case CodePointObjection::Form:
            sentences << Texts::tr("%1 is not written as four to six upper-case digits.").arg(quoted(text));
            break;
        }
    }
    return sentences.join(u' ');
}

/// The names by which a composition leads back to its own, such as "a, b, a".
QString textOnCircle(const VXDocument &document, const VXGlyphInfo &info)
{
    constexpr std::size_t kMost = 10'000;
    std::vector<std::pair<QString, std::size_t>> met {{info.name(), 0}}; // with the place of who mentions it
    QSet<QString> names;
    for (std::size_t at = 0; at < met.size() && met.size() < kMost; ++at) {
        const InfoPtr composed = at == 0 ? InfoPtr() : document.infoForName(met[at].first);
        if (at > 0 && !composed)
            continue;
        const QString components = at == 0 ? info.decompose() : composed->decompose();
        for (const QString &component : components.split(kListSeparator)) {
            if (component == info.name() && at > 0) {
                QStringList path {component};
                for (std::size_t place = at; place > 0; place = met[place].second)
                    path.prepend(met[place].first);
                path.prepend(info.name());
                return Texts::tr("It leads back to itself: %1.").arg(quoted(path.join(u", "_s)));
            }
            if (component != info.name() && !names.contains(component)) {
                names.insert(component);
                met.emplace_back(component, at);
            }
        }
    }
    return Texts::tr("It leads back to itself.");
}

QString textOnAnchor(const QString &anchor)
{
    const std::string text = anchor.toStdString();
    const QString other = QString::fromStdString(AnchorSides::counterpart(AnchorSides::plainAnchor(text)));
    return Texts::tr("%1 meets nothing: no record has the anchor %2.").arg(quoted(anchor), quoted(other));
}

QString textOnLosses(const VXGlyphInfo &info, ProblemKind kind, int fileVersion)
{
    QStringList sentences;
    if (kind == ProblemKind::QuoteOrBreak) {
        std::string buffer;
        for (const GlyphField field : RoundTrip::writtenFields()) {
            const std::string_view text = info.utf8(field, buffer);
            if (text.find('"') != text.npos)
                sentences << Texts::tr("%1 holds a double quote.").arg(fieldTitle(field));
            if (text.find('\n') != text.npos)
                sentences << Texts::tr("%1 holds a line break.").arg(fieldTitle(field));
        }
        return sentences.join(u' ');
    }
    for (const RoundTrip::Loss &loss : RoundTrip(fileVersion).losses(info))
        sentences << sentenceOfLoss(info, loss, fieldTitle(loss.field));
    return sentences.join(u' ');
}

} // namespace

QString textOfProblem(const Problem &problem, const ProblemContext &context)
{
    if (!problem.info)
        return {};
    const VXGlyphInfo &info = *problem.info;
    std::string buffer;
    switch (problem.kind) {
    case ProblemKind::MissingName:
        return info.name().isEmpty() ? Texts::tr("The record has no name.")
                                     : Texts::tr("The name is the one of records without a name.");
    case ProblemKind::InvalidName:
        return cellDisplayText(textOfObjection(objectionToName(QStringView(info.name()))));
    case ProblemKind::DuplicateName: {
        return Texts::tr("%1 records have this name.")
            .arg(countOf(context.relations.names(), info.utf8(GlyphField::Name, buffer)));
    }
    case ProblemKind::RepeatingAltName: {
        const QString name = entryOf(info, GlyphField::AltNames, problem.part);
        return cellDisplayText(
            objectionToText(context.document, {problem.info}, GlyphField::AltNames, name).description);
    }
    case ProblemKind::InvalidCodePoint:
        return textOnCodePoints(info);
    case ProblemKind::DuplicateCodePoint: {
        const QString text = info.unicodes().value(problem.part);
        const auto codePoint = codePointOfText(text.toStdString());
        const quint32 count = codePoint ? context.codes.count(quint64(*codePoint) + 1) : 0;
        return Texts::tr("%1 stands %2 times in the document.").arg(quoted(text), numberText(count));
    }
    case ProblemKind::ManyCodePoints:
        return Texts::tr("Of %1 code points a file keeps two.").arg(numberText(info.unicodes().size()));
    case ProblemKind::LongName:
        return Texts::tr("The name has %1 characters.").arg(numberText(info.name().toUcs4().size()));
    case ProblemKind::MissingComponent:
        return Texts::tr("No record is called %1.")
            .arg(quoted(entryOf(info, GlyphField::Decompose, problem.part)));
    case ProblemKind::SelfReference:
        return Texts::tr("%1 holds the record’s own name.").arg(fieldTitle(GlyphField::Decompose));
    case ProblemKind::CircularComponent:
        return textOnCircle(context.document, info);
    case ProblemKind::AmbiguousComponent: {
        const QString name = entryOf(info, GlyphField::Decompose, problem.part);
        return Texts::tr("%1 records are called %2.")
            .arg(countOf(context.relations.names(), name.toStdString()), quoted(name));
    }
    case ProblemKind::MissingMark:
        return Texts::tr("No record is called %1.")
            .arg(quoted(entryOf(info, GlyphField::Marks, problem.part)));
    case ProblemKind::DuplicateProduction:
        return Texts::tr("%1 records have the production name %2.")
            .arg(numberText(context.relations.productionCount(info.utf8(GlyphField::Production, buffer))),
                 quoted(info.production()));
    case ProblemKind::OneSidedAnchor:
        return textOnAnchor(entryOf(info, GlyphField::Anchors, problem.part));
    case ProblemKind::UnknownCategory:
        return Texts::tr("%1 is no known category.").arg(quoted(info.category()));
    case ProblemKind::UnknownSubCategory:
        return Texts::tr("%1 is no known subcategory.").arg(quoted(info.subCategory()));
    case ProblemKind::UnknownScript:
        return Texts::tr("%1 is no known script.").arg(quoted(info.script()));
    default:
        if (isHint(problem.kind))
            return textOfHint(problem.kind, info, context.document);
        return textOnLosses(info, problem.kind, context.document.fileVersion());
    }
}

} // namespace runebook
