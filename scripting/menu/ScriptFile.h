#pragma once

#include <QCoreApplication>
#include <QString>
#include <optional>

namespace runebook {

/// A script as the Scripts menu shows it: what its file says about itself.
struct ScriptFile {
    Q_DECLARE_TR_FUNCTIONS(ScriptFile)
public:
    QString path; ///< the one that could be read
    QString title; ///< as the file has it, of any length and with any characters
    QString toolTip; ///< its docstring; null when it has none

    /// So many bytes of a file are looked at; what stands behind them, a docstring for one, is not seen.
    static constexpr qsizetype kMaxBytes = 1 << 20;

    /// Why a file is no script of the menu.
    enum class Omission { NotReadable, NotUtf8, NoTitle, NoTitleInTime };

    /// Nothing for a file that cannot be read, that is not UTF-8, or that declares no title; \a omission gets
    /// which.
    static std::optional<ScriptFile> read(const QString &path, Omission *omission = nullptr);
    /// The reason as a person reads it: "no title".
    static QString reasonOf(Omission omission);

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
