// The text that shows what a record stands for: its character, or the characters that compose it.
#include "document/VXDocument.h"
#include "model/StringHelpers.h"

#include <QFontDatabase>

using namespace runebook;
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
    explicit PreviewBuilder(const VXDocument &document) : m_document(document) { }

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
                if (const InfoPtr component = m_document.infoForName(name);
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
        return dot < 0 ? u""_s : base(m_document.infoForName(name.left(dot)));
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
                                     : m_document.baseInfosForUniName(production).value_or(InfoList());
    }

    InfoList componentsOf(const VXGlyphInfo &info) const
    {
        const QStringList decompose = componentNames(info);
        if (decompose.isEmpty())
            return producedBy(info);
        InfoList components;
        for (const QString &name : decompose) {
            if (const InfoPtr component = m_document.infoForName(name))
                components.push_back(component);
        }
        return components;
    }

    const VXDocument &m_document;
    QList<const VXGlyphInfo *> m_open;
    int m_steps = 0;
};

bool isUpperHex(QStringView text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F'); });
}

} // namespace

QString VXDocument::stringForInfo(const InfoPtr &info) const
{
    return PreviewBuilder(*this).preview(info);
}

QString VXDocument::baseStringForInfo(const InfoPtr &info) const
{
    return PreviewBuilder(*this).base(info);
}

std::optional<InfoList> VXDocument::baseInfosForUniName(const QString &name) const
{
    struct Form {
        QLatin1StringView prefix;
        qsizetype digits;
    };
    for (const Form form : {Form {"uni"_L1, 4}, Form {"u"_L1, 5}}) {
        const QStringView digits = QStringView(name).mid(form.prefix.size());
        if (!name.startsWith(form.prefix) || digits.isEmpty() || digits.size() % form.digits != 0
            || !isUpperHex(digits))
            continue;
        InfoList infos;
        for (qsizetype i = 0; i < digits.size(); i += form.digits) {
            const QString chunk = digits.mid(i, form.digits).toString();
            InfoPtr info = infoForUnicode(chunk);
            if (!info) {
                info = VXGlyphInfo::init();
                info->setName(form.prefix + chunk);
                info->setUnicode(chunk);
            }
            infos.push_back(std::move(info));
        }
        return infos;
    }
    return {};
}

FormattedText VXDocument::formatStringFromInfo(const InfoPtr &info) const
{
    QFont systemFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    systemFont.setPointSizeF(kPreviewSize);
    return formatInfoStringFont(stringForInfo(info),
                                fontForScriptSize(info->script(), kPreviewSize).value_or(systemFont));
}

FormattedText VXDocument::formatInfoStringFont(const QString &text, const QFont &font)
{
    QTextCharFormat scriptFormat;
    scriptFormat.setFont(font);
    QFont systemFont = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    systemFont.setPointSizeF(font.pointSizeF());
    QTextCharFormat signFormat;
    signFormat.setFont(systemFont);
    signFormat.setForeground(QColor(Qt::lightGray));

    FormattedText formatted;
    formatted.text = text;
    formatted.formats << QTextLayout::FormatRange {0, static_cast<int>(text.size()), scriptFormat};
    const auto addSign = [&](qsizetype place) {
        formatted.formats << QTextLayout::FormatRange {static_cast<int>(place), 3, signFormat};
    };
    if (const qsizetype equals = text.indexOf(" = "_L1); equals >= 0)
        addSign(equals);
    for (qsizetype plus = text.indexOf(" + "_L1); plus >= 0; plus = text.indexOf(" + "_L1, plus + 3))
        addSign(plus);
    return formatted;
}
