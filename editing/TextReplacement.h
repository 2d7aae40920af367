#pragma once

#include "model/StringHelpers.h"

#include <QString>
#include <string>
#include <string_view>
#include <vector>

namespace runebook {

/// Replaces one text by another wherever it occurs: exactly as written, from left to right, what was put in
/// is not searched again. A character outside the basic plane is never torn apart. An empty text to find
/// occurs nowhere.
class TextReplacement
{
public:
    TextReplacement(const QString &find, const QString &replacement);

    const QString &find() const { return m_find; }
    const QString &replacement() const { return m_replacement; }
    /// False when the two texts are equal or there is nothing to find: then no text ever changes.
    bool changesAnything() const { return m_changesAnything; }

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
    qsizetype nextIn(QStringView text, qsizetype from) const;

    QString m_find;
    QString m_replacement;
    std::string m_findUtf8; ///< empty when no well-formed text can contain what is to be found
    std::string m_replacementUtf8;
    bool m_changesAnything;
};

} // namespace runebook
