#include "document/VXDocument.h"

// Of a document: the previews of its records.

#include "document/GlyphPreview.h"
#include "document/PreviewFonts.h"

using namespace runebook;

namespace {

/// The document as previews see it.
class DocumentLookups final : public GlyphLookups
{
public:
    explicit DocumentLookups(const VXDocument &document) : m_document(document) { }
    InfoPtr infoForName(const QString &name) const override { return m_document.infoForName(name); }
    std::optional<InfoList> baseInfosForUniName(const QString &name) const override
    {
        return m_document.baseInfosForUniName(name);
    }

private:
    const VXDocument &m_document;
};

} // namespace

QString VXDocument::stringForInfo(const InfoPtr &info) const
{
    return GlyphPreview::text(DocumentLookups(*this), info);
}

QString VXDocument::baseStringForInfo(const InfoPtr &info) const
{
    return GlyphPreview::baseText(DocumentLookups(*this), info);
}

FormattedText VXDocument::formatStringFromInfo(const InfoPtr &info) const
{
    return GlyphPreview::formatted(DocumentLookups(*this), info);
}

FormattedText VXDocument::formatInfoStringFont(const QString &text, const QFont &font)
{
    return GlyphPreview::formatted(text, font);
}

std::optional<QFont> VXDocument::fontForScriptSize(const QString &script, double size)
{
    return PreviewFonts::fontForScript(script, size);
}

QString VXDocument::previewFontForScript(const QString &script)
{
    return PreviewFonts::pathForScript(script);
}

void VXDocument::registerPreviewFontForScript(const QString &path, const QString &script)
{
    PreviewFonts::choose(path, script);
}

void VXDocument::removePreviewFontForScript(const QString &script)
{
    PreviewFonts::remove(script);
}

void VXDocument::setNeedsUpdateScriptToFontCache()
{
    PreviewFonts::setNeedUpdate();
}
