#include "model/EditedValue.h"

#include "model/FieldTable.h"
#include "model/FileText.h"
#include "model/RoundTrip.h"

#include <QLocale>
#include <algorithm>

namespace runebook {

void storeEdited(VXGlyphInfo &info, GlyphField field, const QStringList &value)
{
    if (std::all_of(value.begin(), value.end(), [](const QString &part) { return part.isEmpty(); }))
        info.clear(field);
    else if (field == GlyphField::Unicodes)
        info.setUnicodes(value);
    else if (rowOf(field).kind == FieldKind::List)
        info.editValue(field, FieldValue::list(value));
    else
        storeEdited(info, field, value.first());
}

void storeEdited(VXGlyphInfo &info, GlyphField field, const QString &text)
{
    if (text.isEmpty())
        info.clear(field);
    else
        storeText(info, field, text);
}

void storeText(VXGlyphInfo &info, GlyphField field, const QString &text)
{
    if (rowOf(field).setter == FieldSetter::OwnRule)
        info.setTextOf(field, text);
    else
        info.editText(field, text);
}

QString refusalOfEdited(GlyphField field, const QStringList &value)
{
    for (const QString &part : value) {
        if (takesOthers(objectionToFileText(part)))
            return sentenceOfObjection(part, titleOfField(field));
    }
    return {};
}

QString refusalOfEdited(const VXGlyphInfo &info)
{
    for (const GlyphField field : RoundTrip::writtenFields()) {
        if (RoundTrip::takesOthers(info, field))
            return sentenceOfObjection(info.displayText(field), titleOfField(field));
    }
    return {};
}

QString LeftOut::text() const
{
    if (records == 0)
        return {};
    return QCoreApplication::translate("LeftOut", "Records left out: %1. %2")
        .arg(QLocale().toString(qlonglong(records)), sentence);
}

} // namespace runebook
