#pragma once

#include <QFont>
#include <QList>
#include <QPalette>
#include <QStringList>
#include <QStringView>
#include <QVariantHash>
#include <optional>
#include <vector>

class TDTokenizer;

namespace runebook {

/// The keys of an attribute dictionary and of the keyword attribute table.
extern const QString foregroundColorAttributeName; // "NSColor": a QColor
extern const QString fontAttributeName; // "NSFont": a QFont
extern const QString linkAttributeName; // "NSLink": a text
extern const QString commentAttributesKey; // "VXCommmentAttributes", with three m
extern const QString defaultForegroundKey; // "VXForegroundColorXYZ": a QColor

/// The code fonts of a panel; bold and italic are missing where the family has none.
struct CodeFonts {
    std::optional<QFont> regular;
    std::optional<QFont> bold;
    std::optional<QFont> italic;
};

/// The table from words (and the first characters of white space) to attribute dictionaries that colours
/// Python: comments, keywords, scripting objects, built-ins, white space, in that order. Labels take their
/// colours from \a palette.
QVariantHash defaultKeywordAttributes(const CodeFonts &fonts, const QPalette &palette);

/// Sets \a tokenizer up for Python: "#" and ''' comments, the apostrophe as a quote, and \a keywords.
void setUpPythonTokenizer(TDTokenizer &tokenizer, const QVariantHash &keywords);

/// True for the words that Python keeps for itself.
bool isPythonKeyword(QStringView word);

/// The completion words of the property list at \a path (an array of texts), in order; texts only. Empty
/// when the file is missing, unreadable or no array.
QStringList completionWords(const QString &path);

/// From words to small numbers, much faster than a general hash: a colouring pass asks for every word of a
/// text.
class WordIndex
{
public:
    static constexpr int kNotFound = -1;

    void insert(const QString &word, int value);
    int find(QStringView word) const;

private:
    struct Slot {
        QString word;
        int value = kNotFound;
    };
    static std::size_t hash(QStringView word);
    void grow();

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
};

} // namespace runebook
