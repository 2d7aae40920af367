#include "editing/window/PreviewPicture.h"

#include "platform/ShownText.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QTextLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr double kSignGap = 0.28; // of the font's size, on both sides of a sign
constexpr qsizetype kLookedAt = 64; // characters, for those that no font has

std::unique_ptr<QTextLayout> layoutOf(const QString &text, const QFont &font,
                                      const QTextCharFormat &format = {})
{
    auto layout = std::make_unique<QTextLayout>(text, font);
    if (format.isValid())
        layout->setFormats({{0, static_cast<int>(text.size()), format}});
    layout->beginLayout();
    QTextLine line = layout->createLine();
    if (line.isValid())
        line.setLineWidth(1e6);
    layout->endLayout();
    return layout;
}

/// What is painted of a text, from its own top left corner.
QRectF inkOf(const QTextLayout &layout)
{
    QRectF ink;
    for (const QGlyphRun &run : layout.glyphRuns()) {
        const QRawFont font = run.rawFont();
        const QList<quint32> glyphs = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i) {
            const QRectF glyph = font.boundingRect(glyphs.at(i)).translated(positions.at(i));
            ink = glyph.isEmpty() ? ink : ink.united(glyph);
        }
    }
    return ink;
}

bool isMark(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing
        || category == QChar::Mark_SpacingCombining;
}

/// Whether something is to be seen of the character in a font that has it.
bool isVisible(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        // Variation selectors and their like change what stands in front of them.
        return !(character >= 0xFE00 && character <= 0xFE0F)
            && !(character >= 0xE0000 && character <= 0xE0FFF) && character != 0x034F;
    }
}

} // namespace

PreviewPicture::PreviewPicture(const FormattedText &text)
{
    if (text.text.isEmpty())
        return;
    const QFont font = text.formats.isEmpty() ? QFont() : text.formats.front().format.font();
    const QString shown = shownText(text.text, kMostInPreview);
    QList<QTextLayout::FormatRange> signs = text.formats.mid(1);
    signs.removeIf([&shown](const auto &sign) { return sign.start + sign.length > shown.size(); });
    std::sort(signs.begin(), signs.end(), [](const auto &a, const auto &b) { return a.start < b.start; });
    qsizetype done = 0;
    for (const QTextLayout::FormatRange &sign : signs) {
        addLetters(shown.mid(done, sign.start - done), font);
        addSign(shown.mid(sign.start, sign.length).trimmed(), sign.format);
        done = sign.start + sign.length;
    }
    addLetters(shown.mid(done), font);
    const QFontMetricsF metrics(font);
    m_bounds = m_bounds.united(QRectF(0, -metrics.ascent(), m_x, metrics.ascent() + metrics.descent()));
}

PreviewPicture::~PreviewPicture() = default;
PreviewPicture::PreviewPicture(PreviewPicture &&) noexcept = default;
PreviewPicture &PreviewPicture::operator=(PreviewPicture &&) noexcept = default;

void PreviewPicture::addLetters(const QString &text, const QFont &font)
{
    if (text.isEmpty())
        return;
    findMissing(text, font);
    const bool isBareMark = isMark(text.toUcs4().front());
    add({isBareMark ? QChar(0x25CC) + text : text, false, {}}, font, {}, 0);
}

void PreviewPicture::addSign(const QString &text, const QTextCharFormat &format)
{
    add({text, true, {}}, format.font(), format, format.font().pointSizeF() * kSignGap);
}

void PreviewPicture::add(Piece piece, const QFont &font, const QTextCharFormat &format, double gap)
{
    std::unique_ptr<QTextLayout> layout = layoutOf(piece.text, font, format);
    const QTextLine line = layout->lineAt(0);
    const QRectF ink = inkOf(*layout);
    // Marks reach out to the left of where they begin, slanted letters over their end.
    const double left = qMin(0.0, ink.left());
    const double right = qMax(line.naturalTextWidth(), ink.right());
    const QPointF place(m_x + gap - left, -line.ascent());
    piece.ink = ink.translated(place);
    m_bounds = m_bounds.united(piece.ink);
    m_x += right - left + 2 * gap;
    m_pieces.push_back(std::move(piece));
    m_layouts.emplace_back(place, std::move(layout));
}

void PreviewPicture::findMissing(const QString &text, const QFont &font)
{
    for (const char32_t character : text.left(kLookedAt).toUcs4()) {
        m_hasLetters = true;
        if (!isVisible(character)) {
            m_hasVisible = true;
            continue;
        }
        const auto layout = layoutOf(QString::fromUcs4(&character, 1), font);
        bool isThere = true;
        for (const QGlyphRun &run : layout->glyphRuns())
            isThere = isThere && !run.glyphIndexes().contains(0);
        m_hasVisible = m_hasVisible || isThere;
        if (!isThere && !m_missing.contains(character))
            m_missing << character;
    }
}

void PreviewPicture::draw(QPainter &painter) const
{
    for (const auto &[place, layout] : m_layouts)
        layout->draw(&painter, place);
}

} // namespace runebook
