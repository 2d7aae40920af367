#include "editing/fields/FieldEditing.h"

#include "editing/fields/CodePointTokens.h"
#include "editing/fields/EditNames.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/fields/LongValues.h"
#include "model/EditedValue.h"
#include "model/FieldTable.h"
#include "model/FileText.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(FieldEditing)
};

Error refusal(const QString &reason)
{
    return {u"EditError"_s, 1, reason, {}, {}};
}

/// Stores a text that nothing objects to; an emptied field becomes absent.
void setField(VXGlyphInfo &info, GlyphField field, const QString &text)
{
    if (text.isEmpty())
        info.clear(field);
    else if (field == GlyphField::Case)
        info.setCase(VXGlyphInfo::caseFromString(text));
    else if (field == GlyphField::Direction)
        info.setDirection(VXGlyphInfo::directionFromString(text));
    else if (field == GlyphField::Unicodes)
        storeEdited(info, field, codePointTokensInText(text));
    else if (rowOf(field).kind == FieldKind::List)
        storeEdited(info, field, text.split(kListSeparator));
    else
        storeEdited(info, field, text);
}

QString nameOfChange(GlyphField field, const InfoList &changed)
{
    return editNameOf(Texts::tr("Change %2 of %1").replace(u"%2"_s, fieldTitle(field)), changed);
}

/// What the field would show after the text was stored.
QString textAsStored(GlyphField field, const QString &text)
{
    return field == GlyphField::Unicodes ? codePointsOfText(text).kept.join(kListSeparator) : text;
}

} // namespace

Error objectionToLongText(GlyphField field, QStringView text)
{
    if (!takesOthers(objectionToFileText(text)))
        return {};
    return {u"EditError"_s, 2, sentenceOfObjection(text, titleOfField(field)), {}, {}};
}

Error objectionToText(GlyphField field, const QString &text)
{
    if (const QString sentence = refusalOfEdited(field, {text}); !sentence.isNull())
        return {u"EditError"_s, 2, sentence, {}, {}};
    switch (field) {
    case GlyphField::Name: {
        static const VXGlyphInfo kOfNoDocument;
        Error error;
        kOfNoDocument.validateName(text, &error);
        return error;
    }
    case GlyphField::Case:
        if (!text.isEmpty() && VXGlyphInfo::stringFromCase(VXGlyphInfo::caseFromString(text)) != text
            && text != "other"_L1)
            return refusal(Texts::tr("The case is one of upper, lower, smallCaps, minor, or empty."));
        return {};
    case GlyphField::Direction:
        if (!text.isEmpty()
            && VXGlyphInfo::stringFromDirection(VXGlyphInfo::directionFromString(text)) != text)
            return refusal(Texts::tr("The direction is one of LTR, RTL, BIDI, VTL, VTR, or empty."));
        return {};
    default:
        return {};
    }
}

Error objectionToText(const VXDocument &document, const InfoList &infos, GlyphField field,
                      const QString &text)
{
    Error error = objectionToText(field, text);
    const bool canBeSaved = error.domain != "EditError"_L1;
    if (field == GlyphField::Name && canBeSaved) {
        if (infos.size() > 1)
            return refusal(Texts::tr("Several glyphs cannot have the same name."));
        if (!infos.empty())
            infos.front()->validateName(text, &error);
    } else if (field == GlyphField::AltNames && canBeSaved) {
        if (const QString name = repeatingName(document, text.split(kListSeparator)); !name.isNull())
            return refusal(Texts::tr("Repeating name: %1").arg(name));
    }
    return error;
}

QStringList vocabularyOf(GlyphField field)
{
    const auto words = rowOf(field).vocabulary;
    return words ? words() : QStringList();
}

QString repeatingName(const VXDocument &document, const QStringList &names)
{
    for (const QString &name : names) {
        if (!name.isEmpty() && document.infoForName(name))
            return name;
    }
    return {};
}

bool setFieldFromText(VXDocument &document, const InfoList &infos, GlyphField field, const QString &text,
                      Error *error)
{
    if (infos.empty())
        return true;
    const QString stored = textAsStored(field, text);
    const auto isSame = [&](const InfoPtr &info) { return info->displayText(field) == stored; };
    if (std::all_of(infos.begin(), infos.end(), isSame))
        return true;
    if (const Error reason = objectionToText(document, infos, field, text); !reason.domain.isEmpty())
        return fail(error, reason);
    InfoList changed;
    std::copy_if(infos.begin(), infos.end(), std::back_inserter(changed),
                 [&isSame](const InfoPtr &info) { return !isSame(info); });
    const UndoGroup group(document.undoManager(), nameOfChange(field, changed));
    for (const InfoPtr &info : changed)
        setField(*info, field, stored);
    return true;
}

void setFieldToValue(VXDocument &document, const InfoList &infos, GlyphField field, const FieldValue &value)
{
    const UndoGroup group(document.undoManager(), nameOfChange(field, infos));
    for (const InfoPtr &info : infos) {
        if (value.isEmpty())
            info->clear(field);
        else
            info->editValue(field, value);
    }
}

bool lookAlike(const VXGlyphInfo &a, const VXGlyphInfo &b, GlyphField field)
{
    if (field == GlyphField::Case)
        return a.caseValue() == b.caseValue();
    if (field == GlyphField::Direction)
        return a.direction() == b.direction();
    const FieldValue &one = a.stored(field);
    const FieldValue &other = b.stored(field);
    if (FieldValue::equal(one, a.sourceData(), other, b.sourceData()))
        return true;
    // Lists and texts look alike by what is shown of them; texts that are not equal look different, but for
    // an absent and an empty one: very long ones are not made for that.
    if (field != GlyphField::Unicodes && !one.isList() && !other.isList())
        return one.isEmpty() && other.isEmpty();
    return a.displayText(field) == b.displayText(field);
}

CommonValue commonValue(std::span<const InfoPtr> infos, GlyphField field)
{
    if (infos.empty())
        return {};
    const VXGlyphInfo &first = *infos.front();
    const bool isCommon = std::all_of(infos.begin(), infos.end(),
                                      [&](const InfoPtr &info) { return lookAlike(first, *info, field); });
    if (!isCommon)
        return {{}, 0, true};
    const ShownValue value = shownValue(first, field);
    return {value.text, value.length, false};
}

} // namespace runebook
