#pragma once

#include <QFont>
#include <optional>

/// The font files that the user chose for the previews of a script, kept in the user defaults.
namespace runebook::PreviewFonts {

/// The font chosen for \a script, or nothing; an absent or empty script means "default".
std::optional<QFont> fontForScript(const QString &script, double size);
/// The path of the font file chosen for a script; null when there is none.
QString pathForScript(const QString &script);
/// Chooses the file at \a path; nothing when either is empty.
void choose(const QString &path, const QString &script);
void remove(const QString &script);
/// The fonts are made anew when the next one is asked for.
void setNeedUpdate();

} // namespace runebook::PreviewFonts
