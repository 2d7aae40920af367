#pragma once

#include <QString>
#include <optional>

namespace runebook {

/// A script as the Scripts menu shows it: what its file says about itself.
struct ScriptFile {
    QString path; ///< the one that could be read
    QString title; ///< as the file has it, of any length and with any characters
    QString toolTip; ///< its docstring; null when it has none

    /// So many bytes of a file are looked at; what stands behind them, a docstring for one, is not seen.
    static constexpr qsizetype kMaxBytes = 1 << 20;

    /// Nothing for a file that cannot be read, that is not UTF-8, or that declares no title.
    static std::optional<ScriptFile> read(const QString &path);

    /// The title that a line starting with "#MenuTitle:", "# MenuTitle:" or "#FLM:" declares, among the first
    /// three lines that are not empty; nothing when none does. A title needs three characters behind its
    /// marker, the blank counted; and a text of one single line has none. \a end gets the place behind the
    /// line.
    static std::optional<QString> menuTitle(QStringView text, qsizetype *end = nullptr);
    /// The text between the first triple quotes behind "__doc__", looked for from \a start on; null when
    /// there is none. Its first character is left out, deliberately: it is the line break in scripts that
    /// were written for this menu.
    static QString docString(QStringView text, qsizetype start);

    friend bool operator==(const ScriptFile &, const ScriptFile &) = default;
};

} // namespace runebook
