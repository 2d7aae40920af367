#include "model/EditedValue.h"

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
    else if (field == GlyphField::AltNames)
        info.setAltNames(value);
    else
        storeEdited(info, field, value.first());
}

// Not by key: find and replace comes here for every record.
void storeEdited(VXGlyphInfo &info, GlyphField field, const QString &text)
{
    if (text.isEmpty())
        info.clear(field);
    else if (field == GlyphField::Marks)
        info.setMarks(text); // which refuses some
    else if (field == GlyphField::Desc)
        info.setDesc(text);
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
