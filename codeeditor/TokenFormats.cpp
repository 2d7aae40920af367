#include "codeeditor/TokenFormats.h"

#include "codeeditor/CharacterClasses.h"
#include "codeeditor/CodeColors.h"
#include "codeeditor/FormatOverlay.h"
#include "codeeditor/TDToken.h"

#include <cmath>

namespace runebook {

namespace {

constexpr double kFontSizeTolerance = 0.5; // points

bool isDictionary(const QVariant &value)
{
    return value.typeId() == QMetaType::QVariantMap;
}

QTextCharFormat unshaped(QTextCharFormat format)
{
    format.setFontStyleStrategy(QFont::PreferNoShaping);
    return format;
}

/// White space is not there to be read.
bool isToBeRead(const QString &key)
{
    return key.size() != 1 || !isBlank(key.front().unicode());
}

} // namespace

TokenFormats::TokenFormats(const QVariantHash &table, int fontSize, const QPalette &palette, bool showsBlanks)
    : m_palette(palette), m_fontSize(fontSize), m_showsBlanks(showsBlanks), m_unshapedFormats {unshaped({})}
{
    m_quotedStringIndex = add({{foregroundColorAttributeName, quotedStringColor()}}, Use::ToBeRead);
    m_numberIndex = add({{foregroundColorAttributeName, numberColor()}}, Use::ToBeRead);
    for (auto entry = table.cbegin(); entry != table.cend(); ++entry) {
        if (isDictionary(*entry))
            m_words.insert(entry.key(),
                           addEntry(entry->toMap(), isToBeRead(entry.key()) ? Use::ToBeRead : Use::Blanks));
    }
    m_entries.clear();
    m_commentIndex = m_words.find(commentAttributesKey);
    const QVariant defaultColor = table.value(defaultForegroundKey);
    if (defaultColor.typeId() == QMetaType::QColor)
        m_defaultIndex = add({{foregroundColorAttributeName, defaultColor}}, Use::ToBeRead);
}

int TokenFormats::addEntry(const QVariantMap &attributes, Use use)
{
    for (const Entry &known : std::as_const(m_entries)) {
        if (known.use == use && known.attributes == attributes)
            return known.index;
    }
    m_entries.append({attributes, use, add(attributes, use)});
    return m_entries.last().index;
}

int TokenFormats::add(const QVariantMap &attributes, Use use)
{
    QVariantMap sized = attributes;
    QFont font = attributes.value(fontAttributeName).value<QFont>();
    if (attributes.contains(fontAttributeName)
        && std::abs(font.pointSizeF() - m_fontSize) > kFontSizeTolerance) {
        font.setPointSize(m_fontSize);
        sized.insert(fontAttributeName, font);
    }
    QTextCharFormat format = formatFromAttributes(sized);
    if (use == Use::ToBeRead && format.hasProperty(kGivenColorProperty))
        format.setForeground(readableColor(format.foreground().color(), m_palette.color(QPalette::Base)));
    m_formats.append(format);
    m_unshapedFormats.append(unshaped(format));
    m_invisible.append(use == Use::Blanks && !m_showsBlanks && !attributes.contains(fontAttributeName));
    return int(m_formats.size()) - 1;
}

int TokenFormats::indexFor(const TDToken &token) const
{
    switch (token.kind()) {
    case TDToken::Kind::QuotedString:
        return m_quotedStringIndex;
    case TDToken::Kind::Number:
        return m_numberIndex;
    case TDToken::Kind::Comment:
        return m_commentIndex;
    case TDToken::Kind::Word:
        return m_words.find(token.stringValue());
    case TDToken::Kind::Whitespace:
        return m_words.find(token.stringValue().first(1));
    case TDToken::Kind::Symbol:
    case TDToken::Kind::EndOfInput:
        break;
    }
    return kNone;
}

bool TokenFormats::isStringOrComment(int index) const
{
    return index != kNone && (index == m_quotedStringIndex || index == m_commentIndex);
}

} // namespace runebook
