#include "editing/FieldEditing.h"

#include "editing/CodePointTokens.h"
#include "editing/EditNames.h"
#include "editing/GlyphColumns.h"
#include "model/FileText.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("FieldEditing", text);
}

Error refusal(const QString &reason)
{
    return {u"EditError"_s, 1, reason, {}, {}};
}

/// Why the text cannot be the field's value for these records; an empty domain when it can.
Error objection(const VXDocument &document, const InfoList &infos, GlyphField field, const QString &text)
{
    Error error;
    if (takesOthers(objectionToFileText(text)))
        return {u"EditError"_s, 2, sentenceOfObjection(text, fieldTitle(field)), {}, {}};
    switch (field) {
    case GlyphField::Name:
        if (infos.size() > 1)
            return refusal(tr("Several glyphs cannot have the same name."));
        infos.front()->validateName(text, &error);
        return error;
    case GlyphField::AltNames:
        if (const QString name = repeatingName(document, text.split(kListSeparator)); !name.isNull())
            return refusal(tr("Repeating name: %1").arg(name));
        return {};
    case GlyphField::Case:
        if (!text.isEmpty() && VXGlyphInfo::stringFromCase(VXGlyphInfo::caseFromString(text)) != text
            && text != "other"_L1)
            return refusal(tr("The case is one of upper, lower, smallCaps, minor, or empty."));
        return {};
    case GlyphField::Direction:
        if (!text.isEmpty()
            && VXGlyphInfo::stringFromDirection(VXGlyphInfo::directionFromString(text)) != text)
            return refusal(tr("The direction is one of LTR, RTL, BIDI, VTL, VTR, or empty."));
        return {};
    default:
        return {};
    }
}

void setField(VXGlyphInfo &info, GlyphField field, const QString &text)
{
    switch (field) {
    case GlyphField::Unicodes:
        info.setUnicodes(normalizedCodePointTokens(codePointTokensInText(text)));
        break;
    case GlyphField::AltNames:
        info.setAltNames(text.isEmpty() ? QStringList() : text.split(kListSeparator));
        break;
    case GlyphField::Case:
        info.setCase(VXGlyphInfo::caseFromString(text));
        break;
    case GlyphField::Direction:
        info.setDirection(text.isEmpty() ? static_cast<int>(VXGlyphInfo::DirectionNotSet)
                                         : VXGlyphInfo::directionFromString(text));
        break;
    case GlyphField::UnicodeLegacy:
        // The setter leaves no step of its own; for the user it is an edit like any other.
        info.editText(field, text);
        break;
    default:
        info.setValueForKey(text, keyOfField(field));
        break;
    }
}

} // namespace

QStringList vocabularyOf(GlyphField field)
{
    switch (field) {
    case GlyphField::Category:
        return VXGlyphInfo::categories();
    case GlyphField::SubCategory:
        return VXGlyphInfo::subCategories();
    case GlyphField::Script:
        return VXGlyphInfo::scripts();
    case GlyphField::Case: {
        QStringList words;
        for (int value = VXGlyphInfo::upper; value <= VXGlyphInfo::minor; ++value)
            words << VXGlyphInfo::stringFromCase(value);
        words << u"other"_s;
        return words;
    }
    case GlyphField::Direction: {
        QStringList words;
        for (int value = VXGlyphInfo::BIDI; value <= VXGlyphInfo::VTR; ++value)
            words << VXGlyphInfo::stringFromDirection(value);
        return words;
    }
    default:
        return {};
    }
}

QString repeatingName(const VXDocument &document, const QStringList &names)
{
    for (const QString &name : names) {
        if (document.infoForName(name))
            return name;
    }
    return {};
}

bool setFieldFromText(VXDocument &document, const InfoList &infos, GlyphField field, const QString &text,
                      Error *error)
{
    if (infos.empty())
        return true;
    const bool isSame = std::all_of(infos.begin(), infos.end(),
                                    [&](const InfoPtr &info) { return info->displayText(field) == text; });
    if (isSame)
        return true;
    if (const Error reason = objection(document, infos, field, text); !reason.domain.isEmpty())
        return fail(error, reason);
    InfoList changed;
    std::copy_if(infos.begin(), infos.end(), std::back_inserter(changed),
                 [&](const InfoPtr &info) { return info->displayText(field) != text; });
    const UndoGroup group(document.undoManager(),
                          editName(tr("Change %1").arg(fieldTitle(field)),
                                   tr("Change %2 of %1 Records").replace(u"%2"_s, fieldTitle(field)),
                                   std::ssize(changed)));
    for (const InfoPtr &info : changed)
        setField(*info, field, text);
    return true;
}

bool lookAlike(const VXGlyphInfo &a, const VXGlyphInfo &b, GlyphField field)
{
    if (field == GlyphField::Case)
        return a.caseValue() == b.caseValue();
    if (field == GlyphField::Direction)
        return a.direction() == b.direction();
    // An absent and an empty value look alike.
    return FieldValue::equal(a.stored(field), a.sourceData(), b.stored(field), b.sourceData())
        || a.displayText(field) == b.displayText(field);
}

CommonValue commonValue(std::span<const InfoPtr> infos, GlyphField field)
{
    if (infos.empty())
        return {};
    const VXGlyphInfo &first = *infos.front();
    const bool isCommon = std::all_of(infos.begin(), infos.end(),
                                      [&](const InfoPtr &info) { return lookAlike(first, *info, field); });
    return isCommon ? CommonValue {first.displayText(field), false} : CommonValue {{}, true};
}

} // namespace runebook
