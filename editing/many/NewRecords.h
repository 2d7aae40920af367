#pragma once

#include "document/VXDocument.h"

#include <QSet>
#include <vector>

namespace runebook {

/// Gives names that no record has, and none twice: behind "a" comes "a.001", behind "a.001" "a.002".
class FreeNames
{
public:
    explicit FreeNames(const VXDocument &document) : m_document(document) { }
    QString nameFor(const QString &name);

private:
    const VXDocument &m_document;
    QSet<QString> m_given;
    QHash<QString, int> m_last; ///< by what stands before the number
};

/// "uni0041" or "u1F600" for a code point text; null for what is none.
QString nameOfCodePoint(const QString &codePoint);

/// A record called \a name with the values of \a fields that \a info has.
InfoPtr recordLike(const VXGlyphInfo &info, const QString &name, const std::vector<GlyphField> &fields);
/// The same with every field but the code points.
InfoPtr duplicateOf(const VXGlyphInfo &info, const QString &name);

/// A new record and the one that it comes behind.
struct NewRecord {
    InfoPtr info;
    InfoPtr behind;
};
/// Inserts each behind its record; several behind the same one in their order. Gives back the new ones as
/// they stand then.
InfoList insertBehind(VXDocument &document, std::vector<NewRecord> records);

} // namespace runebook
