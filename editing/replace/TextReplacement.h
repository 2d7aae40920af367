#pragma once

#include "model/StringHelpers.h"

#include <QRegularExpression>
#include <QString>
#include <string>
#include <string_view>
#include <vector>

namespace runebook {

/// How a text is looked for. The usual way: exactly as written, anywhere.
struct ReplaceOptions {
    bool matchCase = true;
    bool wholeValue = false; ///< only where it is all there is
    bool isPattern = false; ///< a regular expression; \1 or $1 in the replacement is its first group

    bool isUsual() const { return *this == ReplaceOptions(); }
    friend bool operator==(const ReplaceOptions &, const ReplaceOptions &) = default;
};

/// Replaces one text by another wherever it occurs: exactly as written, unless options want it otherwise,
/// from left to right, what was put in is not searched again. A character outside the basic plane is never
/// torn apart. An empty text to find occurs nowhere.
class TextReplacement
{
public:
    TextReplacement(const QString &find, const QString &replacement, const ReplaceOptions &options = {});

    const QString &find() const { return m_find; }
    const QString &replacement() const { return m_replacement; }
    /// False when the two texts are equal or there is nothing to find: then no text ever changes.
    bool changesAnything() const { return m_changesAnything; }
    /// Why the regular expression is none; null when there is nothing to say.
    const QString &problem() const { return m_problem; }
    /// Whether a regular expression took too many steps somewhere. What it was asked after that has no
    /// answer.
    bool hasGivenUp() const { return m_hasGivenUp; }

    /// How often the text occurs.
    qsizetype countIn(QStringView text) const;
    /// The same in UTF-8; for looking through many texts without making strings of them.
    qsizetype countIn(std::string_view utf8) const;
    bool occursIn(std::string_view utf8) const;

    /// \a text with everything replaced.
    QString replacedIn(const QString &text) const;
    /// The same in UTF-8, into \a out.
    void replaceIn(std::string_view utf8, std::string &out) const;

    /// The places of one replacement: what was found in the old text, what stands there in the new one.
    struct Places {
        std::vector<UnitRange> found;
        std::vector<UnitRange> inserted;
    };
    Places placesIn(QStringView text) const;

private:
    struct Match {
        qsizetype location;
        qsizetype length;
        QString inserted;
    };
    /// A piece of a replacement: a text, or the number of a group.
    struct Piece {
        QString text;
        int group = -1;
    };

    void compile(const ReplaceOptions &options);
    void parseReplacement();
    /// The places of other than usual searches where something changes.
    std::vector<Match> matchesIn(const QString &text) const;
    qsizetype nextIn(QStringView text, qsizetype from) const;

    QString m_find;
    QString m_replacement;
    std::string m_findUtf8; ///< empty when no well-formed text can contain what is to be found
    std::string m_replacementUtf8;
    bool m_changesAnything;
    bool m_isUsual;
    QRegularExpression m_pattern; ///< of all that is not usual
    std::vector<Piece> m_pieces;
    QString m_problem;
    mutable bool m_hasGivenUp = false;
};

} // namespace runebook
