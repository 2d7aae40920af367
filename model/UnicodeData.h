#pragma once

#include "model/UnicodeFormat.h"

#include <QFile>
#include <QStringList>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace runebook {

/// What Unicode says about characters, from a file that ships with the program. It is opened when first asked
/// for and read where it lies, so that nobody pays who does not ask. All threads may ask.
class UnicodeData
{
public:
    /// The data of this program; without the file all code points count as unassigned.
    static const UnicodeData &shared();
    explicit UnicodeData(const QString &path);
    Q_DISABLE_COPY_MOVE(UnicodeData)
    bool isLoaded() const { return m_nameCodes.size() > 0; }

public: // one character
    bool isAssigned(char32_t codePoint) const;
    /// Characters that have category, bidirectional class, script, combining class and mirroring in common
    /// have one number, below kindCount().
    quint16 kindOf(char32_t codePoint) const;
    quint32 kindCount() const { return m_kinds.size() / 4; }
    bool hasCanonicalDecomposition(char32_t codePoint) const;
    /// Whether its decomposition has \a part as it stands in the data. Makes nothing.
    bool hasPart(char32_t codePoint, char32_t part) const;
    /// "LATIN SMALL LETTER A"; null where Unicode gives none, as for control characters.
    QString name(char32_t codePoint) const;
    std::string asciiName(char32_t codePoint) const;
    /// Whether \a text begins with the name, which it has. Makes nothing.
    bool beginsWithName(std::string_view text, char32_t codePoint) const;
    /// Further names, corrected ones first; abbreviations included.
    QStringList aliases(char32_t codePoint) const;
    /// The general category, "Lu"; "Cn" for what is not assigned.
    QString category(char32_t codePoint) const;
    /// "Basic Latin"; null outside of all blocks.
    QString block(char32_t codePoint) const;
    /// "Latin", "Common", "Inherited", "Old_Italic"; "Unknown" for what is not assigned.
    QString script(char32_t codePoint) const;
    /// "L", "R", "AL", "EN" ... ; "L" for what is not assigned, whatever the block.
    QString bidiClass(char32_t codePoint) const;
    int combiningClass(char32_t codePoint) const;
    bool isMirrored(char32_t codePoint) const;
    /// The simple mappings; the code point itself where there is none.
    char32_t upper(char32_t codePoint) const { return mapped(codePoint, 1); }
    char32_t lower(char32_t codePoint) const { return mapped(codePoint, 2); }
    char32_t title(char32_t codePoint) const { return mapped(codePoint, 3); }

    struct Decomposition {
        QString tag; ///< "<super>"; null for a canonical one
        std::vector<char32_t> parts; ///< as the data say it, not taken further apart; empty without one
    };
    Decomposition decomposition(char32_t codePoint) const;
    /// What it is canonically made of when nothing can be taken further apart, in the order of the data; the
    /// code point itself where it is one.
    std::vector<char32_t> canonicalParts(char32_t codePoint) const;
    /// The code points that stand in canonical decompositions, ascending.
    std::vector<char32_t> allCanonicalParts() const;

public: // finding
    /// The code point of a name or of an alias, in any case, blanks around it ignored.
    std::optional<char32_t> codePointOfName(QStringView name) const;
    /// All blocks by name, in the order of their code points.
    QStringList blocks() const;
    /// The first and the last code point of a block, named in any case.
    std::optional<std::pair<char32_t, char32_t>> rangeOfBlock(QStringView name) const;

    struct Found {
        char32_t codePoint = 0;
        QString name; ///< the one that fits, which may be an alias
        friend bool operator==(const Found &, const Found &) = default;
    };
    /// Characters whose name has all \a words, each as a word or as its beginning, in any order and case, best
    /// first: the name itself, then names that begin with the text, then those with all as whole words, then the
    /// others; among equals the shorter name, then the lower code point. Names that follow a rule (Hangul
    /// syllables, CJK ideographs) are found as a whole only. Milliseconds.
    QList<Found> search(QStringView words, qsizetype limit = 50) const;

private:
    struct Words;
    template <typename Number> UnicodeFormat::Numbers<Number> numbers(UnicodeFormat::Table table) const;
    std::string_view bytes(UnicodeFormat::Table table) const;
    std::string_view piece(UnicodeFormat::Table text, const UnicodeFormat::Numbers<quint32> &starts,
                           quint32 index) const;
    QString text(quint32 index) const;
    QString textOfRange(const UnicodeFormat::Numbers<quint32> &ranges, char32_t codePoint) const;
    quint16 kindNumber(char32_t codePoint, quint32 column) const;
    char32_t mapped(char32_t codePoint, quint32 column) const;
    std::string_view tokens(quint32 nameIndex) const;
    std::string listedName(quint32 nameIndex) const;
    std::optional<quint32> wordIndex(std::string_view word) const;
    std::optional<char32_t> codePointOfRule(std::string_view upperName) const;
    std::optional<char32_t> codePointOfListedName(std::string_view upperName) const;

    QFile m_file;
    QByteArray m_read; ///< where the file cannot be mapped
    const char *m_bytes = nullptr;
    UnicodeFormat::Head m_head;
    UnicodeFormat::Numbers<quint32> m_textStarts, m_wordStarts, m_nameCodes, m_nameStarts, m_rules, m_runStarts;
    UnicodeFormat::Numbers<quint32> m_blocks, m_cases, m_decompositions, m_parts;
    UnicodeFormat::Numbers<quint16> m_nameOrder, m_runKinds, m_kinds;
};

} // namespace runebook
