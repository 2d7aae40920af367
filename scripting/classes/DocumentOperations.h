#pragma once

#include "document/VXDocument.h"

namespace runebook {

/// Operations of records whose C++ forms scripts cannot call as they are.
class RecordOperations : public QObject
{
    Q_OBJECT
public:
    /// The glyph list: code point text to name.
    Q_INVOKABLE QVariantMap aglfn(VXGlyphInfo *) const;
    /// The record as a map from keys to values, and back.
    Q_INVOKABLE QVariantMap encodeWithCoder(VXGlyphInfo *record) const;
    Q_INVOKABLE InfoPtr initWithCoder(VXGlyphInfo *, const QVariantMap &archive) const;
    /// Of a VXDocument, or None. The record is not put into its list.
    Q_INVOKABLE void setDocument(const InfoPtr &record, QObject *document) const;
    Q_INVOKABLE InfoPtr copyWithZone(VXGlyphInfo *record, const QVariant &) const;
};

/// The same for documents. A font crosses as a map of "name" (its family), "size" in points, "bold" and
/// "italic"; a text with fonts as a list of maps of "string" and, where it has one, "font".
class DocumentOperations : public QObject
{
    Q_OBJECT
public: // the list; an index that is out of range raises IndexError
    Q_INVOKABLE InfoPtr objectInInfosAtIndex(VXDocument *document, qsizetype index) const;
    Q_INVOKABLE void insertObjectInInfosAtIndex(VXDocument *document, const InfoPtr &info,
                                                qsizetype index) const;
    Q_INVOKABLE void insertObjectsInInfosAtIndexes(VXDocument *document, const InfoList &infos,
                                                   const runebook::IndexSet &indexes) const;
    Q_INVOKABLE void removeObjectFromInfosAtIndex(VXDocument *document, qsizetype index) const;
    Q_INVOKABLE void removeObjectsFromInfosAtIndexes(VXDocument *document,
                                                     const runebook::IndexSet &indexes) const;
    Q_INVOKABLE void replaceObjectInInfosAtIndexWithObject(VXDocument *document, qsizetype index,
                                                           const InfoPtr &info) const;

public: // previews
    Q_INVOKABLE QVariantList formatStringFromInfo(VXDocument *document, const InfoPtr &info) const;
    Q_INVOKABLE QVariantList formatInfoStringFont(VXDocument *, const QString &text,
                                                  const QVariantMap &font) const;
    /// Invalid when no font was chosen for the script.
    Q_INVOKABLE QVariant fontForScriptSize(VXDocument *, const QString &script, double size) const;
};

/// Makes them known to the bridge.
void registerDocumentOperations();

} // namespace runebook
