#include "editing/fields/FieldRemarks.h"

#include "document/SavableForm.h"
#include "editing/fields/FieldEditing.h"
#include "model/FileText.h"

namespace runebook {

namespace {

/// Sets the field again, to what \a form makes of its value, where the records are still in the document.
std::function<void()> takeOffer(VXDocument &document, const InfoList &infos, GlyphField field,
                                const std::function<QString(const VXGlyphInfo &info)> &form)
{
    return [guarded = QPointer<VXDocument>(&document), infos, field, form] {
        if (!guarded)
            return;
        for (const InfoPtr &info : infos) {
            // One that was taken out knows its document still, for undoing.
            if (info->document() == guarded && info->listings() > 0)
                setFieldFromText(*guarded, {info}, field, form(*info));
        }
        guarded->flushChanges();
    };
}

} // namespace

FieldRemark remarkOnRefusal(VXDocument &document, const InfoList &infos, GlyphField field,
                            const QString &text, const Error &error)
{
    FieldRemark remark {error.text(), {}, {}};
    if (!takesOthers(objectionToFileText(text)))
        return remark;
    remark.sentence = error.description;
    remark.offer = offerFor(text);
    remark.takeOffer =
        takeOffer(document, infos, field, [text = fileText(text)](const VXGlyphInfo &) { return text; });
    return remark;
}

std::optional<FieldRemark> remarkOnValue(VXDocument &document, const InfoList &infos, GlyphField field)
{
    // What becomes of code points their field tells by itself.
    if (infos.empty() || field == GlyphField::Unicodes)
        return {};
    // They were all given the same.
    const VXGlyphInfo &info = *infos.front();
    if (RoundTrip::isVeryLong(info))
        return {};
    const int version = document.fileVersion();
    for (const RoundTrip::Loss &loss : RoundTrip(version, RoundTrip::Of::Everything).losses(info)) {
        if (loss.field != field)
            continue;
        FieldRemark remark {sentenceOfLoss(info, loss, titleOfField(field)), {}, {}};
        for (const FieldFix &fix : savableForm(info, version)) {
            const QString offer = offerFor(info.displayText(field));
            if (fix.field != field || offer.isEmpty())
                continue;
            remark.offer = offer;
            remark.takeOffer =
                takeOffer(document, infos, field,
                          [text = fix.value.join(kListSeparator)](const VXGlyphInfo &) { return text; });
        }
        return remark;
    }
    return {};
}

} // namespace runebook
