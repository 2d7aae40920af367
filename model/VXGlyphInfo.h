#pragma once

#include "model/FieldValue.h"
#include "model/GlyphField.h"
#include "platform/Error.h"

#include <QHash>
#include <QMetaType>
#include <QObject>
#include <QStringList>
#include <QVariant>
#include <array>
#include <memory>
#include <vector>

class VXGlyphInfo;

namespace runebook {
class GlyphInfoOwner;
class GlyphLineWriter;
template <typename Record, typename Field, typename Value> class InfoFieldUndo;
} // namespace runebook

using InfoPtr = std::shared_ptr<VXGlyphInfo>;
using InfoList = std::vector<InfoPtr>;

/// The description of one glyph as a glyph data file stores it. Shared by the info list, undo steps and
/// scripts at once. A null string is an absent value, "" a present empty one; every writer treats both
/// alike. Every setter registers its inverse with the owning document and tells it of the change; a record
/// without a document just changes. Main thread only.
class VXGlyphInfo : public std::enable_shared_from_this<VXGlyphInfo>
{
    Q_GADGET
    Q_PROPERTY(QString name READ name WRITE setName)
    Q_PROPERTY(QString category READ category WRITE setCategory)
    Q_PROPERTY(QString subCategory READ subCategory WRITE setSubCategory)
    Q_PROPERTY(QString marks READ marks WRITE setMarks)
    Q_PROPERTY(QString anchors READ anchors WRITE setAnchors)
    Q_PROPERTY(QString unicodeLegacy READ unicodeLegacy WRITE setUnicodeLegacy)
    Q_PROPERTY(QStringList unicodes READ unicodes WRITE setUnicodes)
    Q_PROPERTY(QString script READ script WRITE setScript)
    Q_PROPERTY(QString production READ production WRITE setProduction)
    Q_PROPERTY(int direction READ direction WRITE setDirection)
    Q_PROPERTY(quint64 index READ index WRITE setIndex)
    Q_PROPERTY(QString sortName READ sortName WRITE setSortName)
    Q_PROPERTY(QString sortNameKeep READ sortNameKeep WRITE setSortNameKeep)
    Q_PROPERTY(QString sortNameOld READ sortNameOld WRITE setSortNameOld)
    Q_PROPERTY(QString unicharString READ unicharString WRITE setUnicharString)
    Q_PROPERTY(uint unicodeChar READ unicodeChar)
    Q_PROPERTY(int case READ caseValue WRITE setCase)
    Q_PROPERTY(QObject *document READ documentObject)
    Q_PROPERTY(QStringList altNames READ altNames WRITE setAltNames)
    Q_PROPERTY(QString desc READ desc WRITE setDesc)
    Q_PROPERTY(QString decompose READ decompose WRITE setDecompose)
    Q_PROPERTY(QString unicode READ unicode WRITE setUnicode)

public:
    enum Case : quint8 { noCase, upper, lower, smallCaps, minor, other };
    enum Direction : qint8 { DirectionNotSet = -2, BIDI = -1, LTR = 0, RTL = 1, VTL = 2, VTR = 3 };

public: // making
    class Reading; ///< a record while it is read; see GlyphReading.h
    /// A record as `init` makes it: the name "unknown", direction 0, everything else absent.
    Q_INVOKABLE VXGlyphInfo() : VXGlyphInfo(unknownName()) { }
    /// For readers, which find the name later: the same with that value as name.
    explicit VXGlyphInfo(runebook::FieldValue name);
    VXGlyphInfo(const VXGlyphInfo &) = delete;
    VXGlyphInfo &operator=(const VXGlyphInfo &) = delete;
    static InfoPtr init() { return std::make_shared<VXGlyphInfo>(); }
    /// A new record with the fields that a copy takes over: all but description, old sort name, document and
    /// numeric code point.
    Q_INVOKABLE InfoPtr copy() const;
    /// The record of one line of a glyph data file, trimmed; null when it is no glyph line. Writes 1 into
    /// \a fileVersion when the line had an "accents" attribute, 2 when it had a "case" attribute.
    Q_INVOKABLE static InfoPtr initWithLineXMLFileVersion(const QString &line, quint8 *fileVersion = nullptr);
    void encodeWithCoder(QVariantMap &coder) const;
    static InfoPtr initWithCoder(const QVariantMap &coder);

public: // fields
    QString name() const { return stringValue(runebook::GlyphField::Name); }
    QString category() const { return stringValue(runebook::GlyphField::Category); }
    QString subCategory() const { return stringValue(runebook::GlyphField::SubCategory); }
    QString marks() const { return stringValue(runebook::GlyphField::Marks); }
    QString anchors() const { return stringValue(runebook::GlyphField::Anchors); }
    QString unicodeLegacy() const { return stringValue(runebook::GlyphField::UnicodeLegacy); }
    QStringList unicodes() const;
    QString script() const { return stringValue(runebook::GlyphField::Script); }
    QString production() const { return stringValue(runebook::GlyphField::Production); }
    int direction() const { return m_direction; }
    quint64 index() const { return m_index; }
    QString sortName() const { return stringValue(runebook::GlyphField::SortName); }
    QString sortNameKeep() const { return stringValue(runebook::GlyphField::SortNameKeep); }
    QString sortNameOld() const { return stringValue(runebook::GlyphField::SortNameOld); }
    QString unicharString() const { return stringValue(runebook::GlyphField::UnicharString); }
    /// The value of the first code point; 0xFFFFFF when there is none, 0 when it is not hexadecimal and
    /// until code points are set for the first time.
    quint32 unicodeChar() const { return m_unicodeChar; }
    int caseValue() const { return m_case; }
    QStringList altNames() const { return stored(runebook::GlyphField::AltNames).toList(sourceData()); }
    QString desc() const { return stringValue(runebook::GlyphField::Desc); }
    QString decompose() const { return stringValue(runebook::GlyphField::Decompose); }
    /// The first code point text; null when there is none.
    QString unicode() const;
    runebook::GlyphInfoOwner *document() const { return m_document; }
    QObject *documentObject() const;

public: // setters
    Q_INVOKABLE void setName(const QString &name) { setText(runebook::GlyphField::Name, name); }
    Q_INVOKABLE void setCategory(const QString &text) { setText(runebook::GlyphField::Category, text); }
    Q_INVOKABLE void setSubCategory(const QString &text) { setText(runebook::GlyphField::SubCategory, text); }
    /// Refuses one particular list of Arabic marks silently.
    Q_INVOKABLE void setMarks(const QString &marks);
    Q_INVOKABLE void setAnchors(const QString &text) { setText(runebook::GlyphField::Anchors, text); }
    /// No undo step, no notification; the document counts as edited.
    Q_INVOKABLE void setUnicodeLegacy(const QString &text);
    /// Leaves out empty entries and turns the others to upper case.
    Q_INVOKABLE void setUnicodes(const QStringList &unicodes);
    Q_INVOKABLE void setUnicode(const QString &unicode) { setUnicodes({unicode}); }
    Q_INVOKABLE void addUnicode(const QString &unicode) { setUnicodes(unicodes() << unicode); }
    Q_INVOKABLE void setScript(const QString &text) { setText(runebook::GlyphField::Script, text); }
    Q_INVOKABLE void setProduction(const QString &text) { setText(runebook::GlyphField::Production, text); }
    /// -2 to 3; does nothing when it is the direction already.
    Q_INVOKABLE void setDirection(int direction);
    /// No undo step.
    Q_INVOKABLE void setIndex(quint64 index);
    Q_INVOKABLE void setSortName(const QString &text) { setText(runebook::GlyphField::SortName, text); }
    Q_INVOKABLE void setSortNameKeep(const QString &text)
    {
        setText(runebook::GlyphField::SortNameKeep, text);
    }
    Q_INVOKABLE void setSortNameOld(const QString &text) { setText(runebook::GlyphField::SortNameOld, text); }
    Q_INVOKABLE void setUnicharString(const QString &text);
    /// 0 to 5; does nothing when it is the case already.
    Q_INVOKABLE void setCase(int letterCase);
    Q_INVOKABLE void setAltNames(const QStringList &names);
    /// Splits \a names at every comma and blank.
    Q_INVOKABLE void setAltNames(const QString &names);
    Q_INVOKABLE void setDesc(const QString &desc);
    Q_INVOKABLE void setDecompose(const QString &text) { setText(runebook::GlyphField::Decompose, text); }
    /// Stores a text in a text field as an edit with its undo step and notice, whatever the field's own
    /// setter does.
    void editText(runebook::GlyphField field, const QString &text) { setText(field, text); }
    /// The same for a value that is made already: a long one on another thread.
    void editValue(runebook::GlyphField field, const runebook::FieldValue &value) { setStored(field, value); }
    /// Takes over every value of \a fresh that is not the same here, each as an edit.
    void takeValuesOf(const VXGlyphInfo &fresh);
    /// Makes a field absent, as in a record that never had it; case and direction become those of none.
    void clear(runebook::GlyphField field);
    /// Stores the reference without owning it.
    void setDocument(runebook::GlyphInfoOwner *document) { m_document = document; }

public: // by key
    /// The value under \a key: a text (null when absent), a list or a number. A key that names no field is an
    /// error.
    Q_INVOKABLE QVariant valueForKey(const QString &key, runebook::Error *error = nullptr) const;
    /// Stores \a value through the setter of \a key; keys that name no field go to setValueForUndefinedKey.
    /// False when the field does not take such a value; nothing has changed then.
    Q_INVOKABLE bool setValueForKey(const QVariant &value, const QString &key);
    /// Takes "description" and "unicodeLegecy"; any other key is reported once per run and dropped.
    Q_INVOKABLE void setValueForUndefinedKey(const QVariant &value, const QString &key);
    /// Stores a text through the setter of \a field; false for a field that takes none.
    bool setTextOf(runebook::GlyphField field, const QString &text);
    /// The entries of a list; a text alone.
    QStringList entriesOf(runebook::GlyphField field) const;
    /// One field as a text, however it is kept: lists joined with ", ", numbers as their words.
    QString displayText(runebook::GlyphField field) const;

public: // asking
    /// Field by field as the comparison of two documents needs it: case, legacy code point, old sort name,
    /// index and document take no part, and two records without description never count as equal.
    Q_INVOKABLE bool isEqualToInfo(const InfoPtr &compared) const;
    /// For people who debug.
    Q_INVOKABLE QString description() const;
    /// The record's line in a file of that version, line feed included.
    Q_INVOKABLE QString lineXMLFormatVersion(int fileVersion) const;
    /// The record's fields for \a keys, joined by tabs; null and an error for a key that names no field.
    Q_INVOKABLE QString lineTabbed(const QStringList &keys, runebook::Error *error = nullptr) const;

public: // names
    /// Whether \a name may be the record's name; the error says why not.
    Q_INVOKABLE bool validateName(const QString &name, runebook::Error *error = nullptr) const;
    /// Sets the production name from the first code point.
    Q_INVOKABLE void generateUniName();

public: // vocabularies: suggestions for the interface, nothing checks against them
    Q_INVOKABLE static QStringList categories();
    Q_INVOKABLE static QStringList subCategories();
    Q_INVOKABLE static QStringList scripts();
    /// Null for noCase, other and unknown values.
    Q_INVOKABLE static QString stringFromCase(int letterCase);
    /// Looks at the first character only.
    Q_INVOKABLE static int caseFromString(const QString &text);
    /// Null for -2 and unknown values.
    Q_INVOKABLE static QString stringFromDirection(int direction);
    Q_INVOKABLE static int directionFromString(const QString &text);
    /// Code point text to glyph name, from the glyph list that ships with the program; loaded once.
    static const QHash<QString, QString> &aglfn();
    /// Names of the glyph list that never become production names.
    static bool isIgnoredGlyphListName(QStringView name);

public: // for the readers, writers and indexes of this system
    const runebook::FieldValue &stored(runebook::GlyphField field) const
    {
        return m_values[static_cast<std::size_t>(field)];
    }
    /// A field's text as UTF-8, valid as long as the record and \a buffer are not changed.
    std::string_view utf8(runebook::GlyphField field, std::string &buffer) const
    {
        return stored(field).utf8(sourceData(), buffer);
    }
    /// The first code point as UTF-8.
    std::string_view unicodeUtf8(std::string &buffer) const;
    /// The bytes of the line that the record was read from while they are exactly what a file of
    /// \a fileVersion holds for it; otherwise empty.
    std::string_view unchangedLine(int fileVersion) const;
    /// Where the line of the record begins in the bytes that were read; -1 for a record that was not read
    /// from a file.
    qint64 lineOffset() const { return m_line.isPiece() ? qint64(m_line.pieceOffset()) : -1; }
    /// The length of that line in bytes; 0 for none, and for one of more than 64 MB.
    qint64 lineLength() const { return m_line.isPiece() ? qint64(m_line.pieceLength()) : 0; }
    /// Whether the record is as it was read from the file of its document: what that file holds of it was
    /// looked at then.
    bool isAsRead() const { return m_lineVersions & kAsRead; }
    /// From now on it counts as one that the file of its document does not have.
    void setNotAsRead() { m_lineVersions &= quint8(~kAsRead); }
    /// The record's place in its list when it was last asked for; a hint, to be checked.
    quint32 placeHint() const { return m_placeHint; }
    void setPlaceHint(quint32 place) { m_placeHint = place; }
    /// How often the record stands in lists of documents.
    int listings() const { return m_listings; }
    void setListings(int count) { m_listings = count; }
    /// How many changes of listed records there have been in this run: whoever heard fewer missed some.
    static quint64 changesOfListed() { return s_changesOfListed; }
    /// The name of a record that was given none.
    static const runebook::FieldValue &unknownName();
    /// The one list that setMarks refuses.
    static bool refusesMarks(std::string_view marksUtf8);
    QString stringValue(runebook::GlyphField field) const { return stored(field).toString(sourceData()); }
    /// The bytes that the pieces among its values lie in.
    const runebook::SourcePtr &source() const { return m_source; }
    const char *sourceData() const { return m_source ? m_source->data() : nullptr; }

private:
    template <typename Record, typename Field, typename Value> friend class runebook::InfoFieldUndo;

    void setText(runebook::GlyphField field, const QString &text);
    bool setTextByOwnRule(runebook::GlyphField field, const QString &text);
    void setStored(runebook::GlyphField field, runebook::FieldValue value);
    /// Exchanges the value of a field without undo or notice; numbers included.
    runebook::FieldValue exchange(runebook::GlyphField field, runebook::FieldValue value);
    runebook::FieldValue currentValue(runebook::GlyphField field) const;
    void registerUndo(runebook::GlyphField field);
    void notifyChanged(runebook::GlyphField field, const runebook::FieldValue &old);
    void updateUnicodeChar();

    runebook::SourcePtr m_source;
    std::array<runebook::FieldValue, runebook::kStoredFieldCount> m_values;
    runebook::FieldValue m_line;
    runebook::GlyphInfoOwner *m_document = nullptr;
    quint64 m_index = 0;
    quint32 m_unicodeChar = 0;
    quint32 m_placeHint = 0;
    qint32 m_listings = 0;
    qint8 m_direction = LTR;
    quint8 m_case = noCase;
    static constexpr quint8 kAsRead = 4;
    /// Bit 0: the line holds for version 1, bit 1: for the later ones, bit 2: nothing was changed.
    quint8 m_lineVersions = 0;

    static quint64 s_changesOfListed;
};

Q_DECLARE_METATYPE(InfoPtr)
