#include "document/GlyphPreview.h"

#include "document/PreviewFonts.h"
#include "model/StringHelpers.h"

#include <QFontDatabase>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr double kPreviewSize = 100;

// A list whose decompositions name each other could make texts without end or of any length.
constexpr qsizetype kMaxLength = 4096;
constexpr int kMaxSteps = 20'000;
constexpr qsizetype kMaxDepth = 1'200; // each level takes its part of the stack

/// Makes the texts of one preview, following decompositions, production names and base names.
class PreviewBuilder
{
public:
    explicit PreviewBuilder(const GlyphLookups &lookups) : m_lookups(lookups) { }

    QString base(const InfoPtr &info)
    {
        if (!info || ++m_steps > kMaxSteps || m_open.size() >= kMaxDepth || m_open.contains(info.get()))
            return u""_s;
        m_open << info.get();
        const QString text = baseOfOpen(*info);
        m_open.removeLast();
        return text.left(kMaxLength);
    }

    QString preview(const InfoPtr &info)
    {
        QString text = base(info);
        if (text.isEmpty())
            return u""_s;
        const InfoList components = componentsOf(*info);
        if (components.size() < 2)
            return text;
        QStringList parts;
        for (const InfoPtr &component : components) {
            const QString part = base(component);
            if (part.isEmpty()) {
                parts.clear();
                break;
            }
            parts << part;
        }
        const QChar joiner(0x200D);
        if (components.back()->name().contains("halant"_L1))
            text += joiner;
        else if (components.front()->name().contains("halant"_L1))
            text.prepend(joiner);
        if (parts.size() >= 2)
            text += " = "_L1 + parts.join(" + "_L1);
        return text.left(kMaxLength);
    }

private:
    QString baseOfOpen(const VXGlyphInfo &info)
    {
        const QString codePoint = info.unicode();
        if (codePoint.size() >= 2)
            return stringWithChar(hexStringToInt(codePoint));
        const QStringList decompose = componentNames(info);
        if (!decompose.isEmpty()) {
            QString text;
            for (const QString &name : decompose) {
                if (const InfoPtr component = m_lookups.infoForName(name);
                    component && text.size() < kMaxLength)
                    text += m_open.contains(component.get()) ? QString() : preview(component);
            }
            return text;
        }
        if (const InfoList bases = producedBy(info); !bases.empty()) {
            QString text;
            for (const InfoPtr &part : bases)
                text += base(part);
            return text;
        }
        const QString name = info.name();
        const qsizetype dot = name.indexOf(u'.');
        return dot < 0 ? u""_s : base(m_lookups.infoForName(name.left(dot)));
    }

    /// So much of a value as a preview can be made of; a cell asks for it whenever it is painted.
    static QString beginning(const VXGlyphInfo &info, GlyphField field)
    {
        return info.stored(field).beginning(info.sourceData(), kMaxLength);
    }

    static QStringList componentNames(const VXGlyphInfo &info)
    {
        const QString text = beginning(info, GlyphField::Decompose);
        return text.isEmpty() ? QStringList() : text.split(kListSeparator);
    }

    InfoList producedBy(const VXGlyphInfo &info) const
    {
        const QString production = beginning(info, GlyphField::Production);
        return production.size() < 2 ? InfoList()
                                     : m_lookups.baseInfosForUniName(production).value_or(InfoList());
    }

    InfoList componentsOf(const VXGlyphInfo &info) const
    {
        const QStringList decompose = componentNames(info);
        if (decompose.isEmpty())
            return producedBy(info);
        InfoList components;
        for (const QString &name : decompose) {
            if (const InfoPtr component = m_lookups.infoForName(name))
                components.push_back(component);
        }
        return components;
    }

    const GlyphLookups &m_lookups;
    QList<const VXGlyphInfo *> m_open;
    int m_steps = 0;
};

} // namespace

QString GlyphPreview::text(const GlyphLookups &lookups, const InfoPtr &info)
{
    return PreviewBuilder(lookups).preview(info);
}

QString GlyphPreview::baseText(const GlyphLookups &lookups, const InfoPtr &info)
{
    return PreviewBuilder(lookups).base(info);
}

FormattedText GlyphPreview::formatted(const GlyphLookups &lookups, const InfoPtr &info)
{
    QFont systemFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    systemFont.setPointSizeF(kPreviewSize);
    return formatted(text(lookups, info),
                     PreviewFonts::fontForScript(info->script(), kPreviewSize).value_or(systemFont));
}

FormattedText GlyphPreview::formatted(const QString &text, const QFont &font)
{
    QTextCharFormat scriptFormat;
    scriptFormat.setFont(font);
    QFont systemFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    systemFont.setPointSizeF(font.pointSizeF());
    QTextCharFormat signFormat;
    signFormat.setFont(systemFont);
    signFormat.setForeground(QColor(Qt::lightGray));

    FormattedText preview;
    preview.text = text;
    preview.formats << QTextLayout::FormatRange {0, static_cast<int>(text.size()), scriptFormat};
    const auto addSign = [&](qsizetype place) {
        preview.formats << QTextLayout::FormatRange {static_cast<int>(place), 3, signFormat};
    };
    if (const qsizetype equals = text.indexOf(" = "_L1); equals >= 0)
        addSign(equals);
    for (qsizetype plus = text.indexOf(" + "_L1); plus >= 0; plus = text.indexOf(" + "_L1, plus + 3))
        addSign(plus);
    return preview;
}

} // namespace runebook
