#pragma once

#include "codeeditor/KeywordTable.h"

#include <QList>
#include <QTextCharFormat>

class TDToken;

namespace runebook {

/// A keyword attribute table made ready for painting: every token kind and word is a small number, every
/// number a format. Colours that cannot be read on the palette's base are painted in the nearest shade of the
/// same hue that can; the given colour stays in the format (givenColorProperty) and is what attributes
/// answer.
class TokenFormats
{
public:
    static constexpr int kNone = -1;

    TokenFormats() = default;
    /// Fonts of the table whose size differs from \a fontSize (points) by more than 0.5 are converted to it.
    /// With \a showsBlanks the view draws marks for blanks, so these need a look too.
    TokenFormats(const QVariantHash &table, int fontSize, const QPalette &palette, bool showsBlanks);

    /// The number of the format that \a token is painted in, or kNone.
    int indexFor(const TDToken &token) const;
    /// The number of the format of what has no other, or kNone: then it is the widget's text colour.
    int defaultIndex() const { return m_defaultIndex; }
    bool isStringOrComment(int index) const;
    /// True when nothing of the format can be seen: it belongs to blanks, and has no font.
    bool isInvisible(int index) const { return m_invisible[index]; }
    const QTextCharFormat &at(int index) const { return m_formats[index]; }
    /// The same for a paragraph that is not shaped; kNone: of what has no other format.
    const QTextCharFormat &unshapedAt(int index) const { return m_unshapedFormats[index + 1]; }

private:
    enum class Use { ToBeRead, Blanks };
    int add(const QVariantMap &attributes, Use use);
    int addEntry(const QVariantMap &attributes, Use use);

    struct Entry {
        QVariantMap attributes;
        Use use;
        int index;
    };

    QPalette m_palette;
    int m_fontSize = 0;
    bool m_showsBlanks = false;
    QList<QTextCharFormat> m_formats;
    QList<QTextCharFormat> m_unshapedFormats; // that of kNone is the first
    QList<bool> m_invisible;
    QList<Entry> m_entries; // so that words of a kind share a format; emptied when the table is done
    WordIndex m_words;
    int m_quotedStringIndex = kNone;
    int m_numberIndex = kNone;
    int m_commentIndex = kNone;
    int m_defaultIndex = kNone;
};

} // namespace runebook
