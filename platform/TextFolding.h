#pragma once

#include <QFlags>
#include <QString>
#include <QStringView>
#include <string>
#include <string_view>

namespace runebook {

/// What a comparison of texts overlooks.
enum class Fold : quint8 {
    Case = 1, ///< full case folding of Unicode: "ß", "ẞ" and "SS" are one, so are the three sigmas
    Diacritics = 2, ///< canonical decomposition without its marks: "é" is "e", "が" is "か"
};
Q_DECLARE_FLAGS(Folding, Fold)
Q_DECLARE_OPERATORS_FOR_FLAGS(Folding)

// Two texts are alike under a folding when their folded forms are equal, and one occurs in the other when its
// folded form does. Folding works on each character for itself, so the folded form of two texts joined is
// their folded forms joined: a column of many texts can be folded and searched as one.
//
// A mark is what is nonspacing, enclosing, or reordered by canonical ordering. Spacing vowel signs of Indic
// scripts are no marks. Letters whose stroke or hook is no mark of its own in Unicode stay what they are
// ("ø", "ł", "đ", "ı"), and so do compatibility characters ("①"; but "ﬁ" is "fi" without regard to case,
// because case folding says so). A text of nothing but marks folds to the empty text.
//
// Nothing is an error: lone surrogates and malformed bytes fold to themselves. All functions are thread-safe
// and linear in the length of the text.

/// The folded form of \a text; \a text itself when \a folding is empty.
QString foldForSearch(QStringView text, Folding folding);

/// Appends the folded form of \a utf8 to \a out, as UTF-8. For columns: runs of ASCII cost a copy.
void appendFoldedUtf8(std::string &out, std::string_view utf8, Folding folding);

/// The same for UTF-16 text. Lone surrogates become three bytes each, as if UTF-8 could hold them, so that
/// different texts stay different.
void appendFoldedUtf8(std::string &out, QStringView text, Folding folding);

/// The folded form of \a text as UTF-8, to be looked for in a column folded alike.
std::string foldedUtf8(QStringView text, Folding folding);

} // namespace runebook
