#pragma once

#include "document/GlyphPreview.h"

#include <QRectF>
#include <memory>
#include <vector>

class QPainter;
class QTextLayout;

namespace runebook {

/// A preview laid out to be painted: letters and signs in a row on one baseline, each clear of the others,
/// marks without a letter on a dotted circle. Knows which characters nobody can see.
class PreviewPicture
{
public:
    struct Piece {
        QString text;
        bool isSign = false; ///< "=" or "+" between the letters
        QRectF ink; ///< what is painted, in the coordinates of the picture
    };

    explicit PreviewPicture(const FormattedText &text);
    ~PreviewPicture();
    PreviewPicture(PreviewPicture &&) noexcept;
    PreviewPicture &operator=(PreviewPicture &&) noexcept;

    const std::vector<Piece> &pieces() const { return m_pieces; }
    /// All ink, and a line of the font at least; the baseline is at 0.
    QRectF bounds() const { return m_bounds; }
    /// The code points that no installed font has, each once.
    const QList<char32_t> &missing() const { return m_missing; }
    /// Whether there is nothing to see but missing characters.
    bool isNothingThere() const { return m_hasLetters && !m_hasVisible; }
    void draw(QPainter &painter) const;

private:
    void addLetters(const QString &text, const QFont &font);
    void addSign(const QString &text, const QTextCharFormat &format);
    void add(Piece piece, const QFont &font, const QTextCharFormat &format, double gap);
    void findMissing(const QString &text, const QFont &font);

    std::vector<Piece> m_pieces;
    std::vector<std::pair<QPointF, std::unique_ptr<QTextLayout>>> m_layouts;
    QRectF m_bounds;
    QList<char32_t> m_missing;
    double m_x = 0;
    bool m_hasLetters = false;
    bool m_hasVisible = false;
};

} // namespace runebook
