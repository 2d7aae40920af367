#include "model/VXGlyphInfo.h"

#include "model/FieldTable.h"
#include "model/GlyphInfoOwner.h"
#include "model/InfoFieldUndo.h"
#include "model/NameRules.h"
#include "model/StringHelpers.h"

#include <QCoreApplication>
#include <QMutex>
#include <QSet>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

// Refused by setMarks: a list that an old tool wrote into every Arabic record.
constexpr std::string_view kRefusedMarks =
    "fathatan-ar, dammatan-ar, fatha-ar, damma-ar, shadda-ar, sukun-ar, madda-ar, hamzaabove-ar, "
    "noonghunna-ar, alefabove-ar, kasratan-ar, kasra-ar, hamzabelow-ar, alefbelow-ar";

constexpr quint32 kNoCodePoint = 0xFFFFFF;

/// Reads as far as there are hexadecimal digits, after an optional 0x; kept in 32 bits. For views of UTF-16
/// and of Latin-1.
template <typename View> quint32 scanHex(View text)
{
    const bool hasPrefix =
        text.size() >= 2 && text.at(0) == u'0' && (text.at(1) == u'x' || text.at(1) == u'X');
    quint32 value = 0;
    for (qsizetype i = hasPrefix ? 2 : 0; i < text.size(); ++i) {
        const int digit = hexDigit(text.at(i));
        if (digit < 0)
            break;
        value = value << 4 | static_cast<quint32>(digit);
    }
    return value;
}

constexpr auto kCopied = fieldsBy<[](const FieldRow &row) { return isStored(row.field) && row.isCopied; }>();
constexpr auto kArchivedTexts = fieldsBy<[](const FieldRow &row) {
    return isStored(row.field) && row.isArchived && row.kind == FieldKind::Text;
}>();
// All that need no look of their own, see isEqualToInfo().
constexpr auto kEqualTexts = fieldsBy<[](const FieldRow &row) {
    return isStored(row.field) && row.isEquality && row.kind == FieldKind::Text
        && row.field != GlyphField::Name && row.field != GlyphField::Desc;
}>();

QString orNull(const QString &text)
{
    return text.isNull() ? u"(null)"_s : text;
}

} // namespace

VXGlyphInfo::VXGlyphInfo(FieldValue name)
{
    m_values[static_cast<std::size_t>(GlyphField::Name)] = std::move(name);
}

const FieldValue &VXGlyphInfo::unknownName()
{
    static const FieldValue name = FieldValue::text(u"unknown"_s);
    return name;
}

InfoPtr VXGlyphInfo::copy() const
{
    InfoPtr copy = init();
    copy->m_source = m_source;
    for (const GlyphField field : kCopied)
        copy->m_values[static_cast<std::size_t>(field)] = stored(field);
    copy->m_case = m_case;
    copy->m_direction = m_direction;
    copy->m_index = m_index;
    return copy;
}

void VXGlyphInfo::encodeWithCoder(QVariantMap &coder) const
{
    for (const GlyphField field : kArchivedTexts) {
        if (!stored(field).isAbsent())
            coder.insert(keyOfField(field), stringValue(field));
    }
    coder.insert(u"case"_s, static_cast<qint32>(m_case));
    coder.insert(u"unicodes"_s, unicodes());
    coder.insert(u"direction"_s, static_cast<qint32>(m_direction));
    coder.insert(u"altNames"_s, altNames());
    coder.insert(u"index"_s, m_index);
}

InfoPtr VXGlyphInfo::initWithCoder(const QVariantMap &coder)
{
    InfoPtr info = init();
    for (const GlyphField field : kArchivedTexts) {
        const auto found = coder.constFind(keyOfField(field));
        info->m_values[static_cast<std::size_t>(field)] =
            found == coder.constEnd() ? FieldValue() : FieldValue::text(found->toString());
    }
    const auto decodeList = [&](GlyphField field) {
        const QStringList list = coder.value(keyOfField(field)).toStringList();
        if (!list.isEmpty())
            info->m_values[static_cast<std::size_t>(field)] = FieldValue::list(list);
    };
    decodeList(GlyphField::Unicodes);
    decodeList(GlyphField::AltNames);
    info->m_case = static_cast<quint8>(coder.value(u"case"_s).toInt());
    info->m_direction = static_cast<qint8>(coder.value(u"direction"_s).toInt());
    info->m_index = coder.value(u"index"_s).toULongLong();
    return info;
}

// Fields

QStringList VXGlyphInfo::unicodes() const
{
    const FieldValue &value = stored(GlyphField::Unicodes);
    // A piece is one code point as it was read; it is never split.
    return value.isPiece() ? QStringList {value.toString(sourceData())} : value.toList(sourceData());
}

QStringList VXGlyphInfo::entriesOf(GlyphField field) const
{
    if (field == GlyphField::Unicodes)
        return unicodes();
    return rowOf(field).kind == FieldKind::List ? stored(field).toList(sourceData())
                                                : QStringList {stringValue(field)};
}

QString VXGlyphInfo::unicode() const
{
    const FieldValue &value = stored(GlyphField::Unicodes);
    return value.isPiece() ? value.toString(sourceData()) : value.toList(sourceData()).value(0);
}

std::string_view VXGlyphInfo::unicodeUtf8(std::string &buffer) const
{
    const FieldValue &value = stored(GlyphField::Unicodes);
    if (value.isPiece())
        return value.bytes(sourceData());
    const QByteArray first = value.toList(sourceData()).value(0).toUtf8();
    buffer.assign(first.constData(), static_cast<std::size_t>(first.size()));
    return buffer;
}

QObject *VXGlyphInfo::documentObject() const
{
    return m_document ? m_document->asObject() : nullptr;
}

std::string_view VXGlyphInfo::unchangedLine(int fileVersion) const
{
    const quint8 wanted = fileVersion == 1 ? 1 : fileVersion >= 2 ? 2 : 0;
    return (m_lineVersions & wanted) && m_line.isPiece() ? m_line.bytes(sourceData()) : std::string_view();
}

// Setters

FieldValue VXGlyphInfo::currentValue(GlyphField field) const
{
    switch (field) {
    case GlyphField::Direction:
        return FieldValue::number(m_direction);
    case GlyphField::Case:
        return FieldValue::number(m_case);
    default:
        return stored(field);
    }
}

FieldValue VXGlyphInfo::exchange(GlyphField field, FieldValue value)
{
    FieldValue old = currentValue(field);
    m_lineVersions = 0;
    if (field == GlyphField::Direction) {
        m_direction = static_cast<qint8>(value.toNumber());
    } else if (field == GlyphField::Case) {
        m_case = static_cast<quint8>(value.toNumber());
    } else {
        m_values[static_cast<std::size_t>(field)] = std::move(value);
        if (field == GlyphField::Unicodes)
            updateUnicodeChar();
    }
    return old;
}

void VXGlyphInfo::updateUnicodeChar()
{
    if (const FieldValue &value = stored(GlyphField::Unicodes); value.isPiece()) {
        // Read as Latin-1: no byte of a longer character is a digit there either.
        const std::string_view bytes = value.bytes(sourceData());
        m_unicodeChar = scanHex(QLatin1StringView(bytes.data(), static_cast<qsizetype>(bytes.size())));
        return;
    }
    const QString first = unicode();
    m_unicodeChar = first.isNull() ? kNoCodePoint : scanHex(QStringView(first));
}

void VXGlyphInfo::registerUndo(GlyphField field)
{
    if (UndoManager *manager = m_document ? m_document->undoManager() : nullptr)
        InfoFieldUndo<VXGlyphInfo, GlyphField, FieldValue>::registerOld(*manager, *this, field);
}

quint64 VXGlyphInfo::s_changesOfListed = 0;

void VXGlyphInfo::notifyChanged(GlyphField field, const FieldValue &old)
{
    // Readers make records on several threads; those stand in no list yet.
    if (m_listings > 0)
        ++s_changesOfListed;
    if (m_document)
        m_document->infoHasChanged(*this, field, old);
    else if (m_listings > 0 && GlyphInfoOwner::ownerlessHasChanged)
        GlyphInfoOwner::ownerlessHasChanged(*this);
}

void VXGlyphInfo::setStored(GlyphField field, FieldValue value)
{
    registerUndo(field);
    const FieldValue old = exchange(field, std::move(value));
    notifyChanged(field, old);
}

void VXGlyphInfo::takeValuesOf(const VXGlyphInfo &fresh)
{
    for (int i = 0; i < kStoredFieldCount; ++i) {
        const auto field = static_cast<GlyphField>(i);
        const FieldValue &theirs = fresh.stored(field);
        if (FieldValue::equal(stored(field), sourceData(), theirs, fresh.sourceData()))
            continue;
        // A piece lies in bytes that this record does not have.
        if (theirs.isAbsent())
            setStored(field, {});
        else if (rowOf(field).kind == FieldKind::List)
            setStored(field, FieldValue::list(fresh.entriesOf(field)));
        else
            setStored(field, FieldValue::text(fresh.stringValue(field)));
    }
    setDirection(fresh.direction());
    setCase(fresh.caseValue());
}

void VXGlyphInfo::setText(GlyphField field, const QString &text)
{
    setStored(field, FieldValue::text(text));
}

bool VXGlyphInfo::refusesMarks(std::string_view marksUtf8)
{
    return marksUtf8 == kRefusedMarks;
}

void VXGlyphInfo::setMarks(const QString &marks)
{
    if (marks != QLatin1StringView(kRefusedMarks.data(), static_cast<qsizetype>(kRefusedMarks.size())))
        setText(GlyphField::Marks, marks);
}

void VXGlyphInfo::setUnicodeLegacy(const QString &text)
{
    const FieldValue fresh = FieldValue::text(text);
    if (FieldValue::equal(stored(GlyphField::UnicodeLegacy), sourceData(), fresh, nullptr))
        return;
    exchange(GlyphField::UnicodeLegacy, fresh);
    if (m_document)
        m_document->contentHasChanged(*this);
    else if (m_listings > 0 && GlyphInfoOwner::ownerlessHasChanged)
        GlyphInfoOwner::ownerlessHasChanged(*this);
}

void VXGlyphInfo::setUnicodes(const QStringList &unicodes)
{
    QStringList kept;
    kept.reserve(unicodes.size());
    for (const QString &unicode : unicodes) {
        if (!unicode.isEmpty())
            kept += unicode.toUpper();
    }
    setStored(GlyphField::Unicodes, FieldValue::list(kept));
}

void VXGlyphInfo::setDirection(int direction)
{
    if (static_cast<qint8>(direction) != m_direction)
        setStored(GlyphField::Direction, FieldValue::number(direction));
}

void VXGlyphInfo::setCase(int letterCase)
{
    if (static_cast<quint8>(letterCase) != m_case)
        setStored(GlyphField::Case, FieldValue::number(letterCase));
}

void VXGlyphInfo::setIndex(quint64 index)
{
    m_index = index;
    notifyChanged(GlyphField::Index, FieldValue());
}

void VXGlyphInfo::setUnicharString(const QString &text)
{
    exchange(GlyphField::UnicharString, FieldValue::text(text));
}

void VXGlyphInfo::setAltNames(const QStringList &names)
{
    setStored(GlyphField::AltNames, FieldValue::list(names));
}

void VXGlyphInfo::setAltNames(const QString &names)
{
    setStored(GlyphField::AltNames,
              names.isNull() ? FieldValue() : FieldValue::list(names.split(kListSeparator)));
}

void VXGlyphInfo::setDesc(const QString &desc)
{
    const FieldValue &old = stored(GlyphField::Desc);
    if (old.isAbsent() ? desc.isNull() : !desc.isNull() && old.toString(sourceData()) == desc)
        return;
    setText(GlyphField::Desc, desc);
}

void VXGlyphInfo::clear(GlyphField field)
{
    if (field == GlyphField::Case)
        setCase(noCase);
    else if (field == GlyphField::Direction)
        setDirection(DirectionNotSet);
    else
        setStored(field, FieldValue());
}

// By key

QVariant VXGlyphInfo::valueForKey(const QString &key, Error *error) const
{
    const std::optional<GlyphField> field = fieldForKey(key);
    if (!field) {
        fail(error,
             {u"User"_s,
              1,
              QCoreApplication::translate("VXGlyphInfo", "A glyph info has no field “%1”.").arg(key),
              {},
              {}});
        return {};
    }
    switch (*field) {
    case GlyphField::Unicodes:
        return unicodes();
    case GlyphField::AltNames:
        return altNames();
    case GlyphField::Direction:
        return direction();
    case GlyphField::Case:
        return caseValue();
    case GlyphField::Index:
        return index();
    case GlyphField::UnicodeChar:
        return unicodeChar();
    case GlyphField::Document:
        return QVariant::fromValue(documentObject());
    case GlyphField::Unicode:
        return unicode();
    default:
        return stringValue(*field);
    }
}

namespace {

bool isText(const QVariant &value)
{
    return !value.isValid() || value.isNull() || value.typeId() == QMetaType::QString;
}

bool isList(const QVariant &value)
{
    return value.typeId() == QMetaType::QStringList || value.typeId() == QMetaType::QVariantList;
}

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

} // namespace

bool VXGlyphInfo::setValueForKey(const QVariant &value, const QString &key)
{
    const std::optional<GlyphField> field = fieldForKey(key);
    if (!field) {
        setValueForUndefinedKey(value, key);
        return true;
    }
    if (isList(value) && rowOf(*field).kind == FieldKind::List) {
        if (*field == GlyphField::Unicodes)
            setUnicodes(value.toStringList());
        else
            setStored(*field, FieldValue::list(value.toStringList()));
        return true;
    }
    if (isNumber(value)) {
        if (*field == GlyphField::Direction)
            setDirection(value.toInt());
        else if (*field == GlyphField::Case)
            setCase(value.toInt());
        else if (*field == GlyphField::Index)
            setIndex(value.toULongLong());
        else
            return false;
        return true;
    }
    return isText(value) && setTextOf(*field, value.toString());
}

bool VXGlyphInfo::setTextOf(GlyphField field, const QString &text)
{
    const FieldRow &row = rowOf(field);
    if (row.setter != FieldSetter::Plain)
        return setTextByOwnRule(field, text);
    if (row.kind != FieldKind::Text)
        return false;
    setText(field, text);
    return true;
}

bool VXGlyphInfo::setTextByOwnRule(GlyphField field, const QString &text)
{
    switch (field) {
    case GlyphField::Marks:
        setMarks(text);
        return true;
    case GlyphField::AltNames:
        setAltNames(text);
        return true;
    case GlyphField::UnicodeLegacy:
        setUnicodeLegacy(text);
        return true;
    case GlyphField::Desc:
        setDesc(text);
        return true;
    case GlyphField::UnicharString:
        setUnicharString(text);
        return true;
    case GlyphField::Unicode:
        if (text.isNull())
            setUnicodes({});
        else
            setUnicode(text);
        return true;
    default:
        return false;
    }
}

void VXGlyphInfo::setValueForUndefinedKey(const QVariant &value, const QString &key)
{
    if (key == "description"_L1) {
        setDesc(value.toString());
        return;
    }
    if (key == "unicodeLegecy"_L1) {
        setUnicodeLegacy(value.toString());
        return;
    }
    if (key == "sortNameOld"_L1)
        return;

    static QMutex mutex;
    static QSet<QString> reported;
    {
        const QMutexLocker lock(&mutex);
        if (reported.contains(key))
            return;
        reported.insert(key);
    }
    Error error;
    error.domain = u"User"_s;
    error.code = 1;
    // Both at once, so that a "%2" inside the key is not taken for the place of the value.
    error.failureReason =
        QCoreApplication::translate("VXGlyphInfo", "There is an unknown entry in the file: %1 = %2")
            .arg(key, value.toString());
    ErrorPresenter::shared().present(error);
}

QString VXGlyphInfo::displayText(GlyphField field) const
{
    switch (field) {
    case GlyphField::Unicodes:
        return unicodes().join(kListSeparator);
    case GlyphField::Unicode:
        return unicode();
    case GlyphField::Direction:
        return stringFromDirection(m_direction);
    case GlyphField::Case:
        // People see the word that files do not get.
        return m_case == other ? u"other"_s : stringFromCase(m_case);
    case GlyphField::Index:
        return QString::number(m_index);
    case GlyphField::UnicodeChar:
        return QString::number(m_unicodeChar);
    case GlyphField::Document:
        return {};
    default:
        return stringValue(field);
    }
}

// Asking

bool VXGlyphInfo::isEqualToInfo(const InfoPtr &compared) const
{
    if (!compared)
        return false;
    const auto equal = [&](GlyphField field) {
        return FieldValue::equal(stored(field), sourceData(), compared->stored(field),
                                 compared->sourceData());
    };
    if (!equal(GlyphField::Name))
        return false;
    const FieldValue &mine = stored(GlyphField::Unicodes);
    const FieldValue &theirs = compared->stored(GlyphField::Unicodes);
    const bool bothPieces = mine.isPiece() && theirs.isPiece();
    if (bothPieces ? !equal(GlyphField::Unicodes) : unicodes() != compared->unicodes())
        return false;
    for (const GlyphField field : kEqualTexts) {
        if (!equal(field))
            return false;
    }
    if (m_direction != compared->m_direction || !equal(GlyphField::AltNames))
        return false;
    // Asymmetric: an absent description here passes only against a present one there.
    const bool isAbsent = stored(GlyphField::Desc).isAbsent();
    const bool same = isAbsent ? compared->stored(GlyphField::Desc).isAbsent() : equal(GlyphField::Desc);
    return same != isAbsent;
}

QString VXGlyphInfo::description() const
{
    const QStringList codePoints = unicodes();
    return QString::asprintf("<GlyphInfo: <%p> N:", static_cast<const void *>(this)) + orNull(name())
        + ", U:"_L1 + (codePoints.isEmpty() ? u"-"_s : codePoints.join(u',')) + ", Sc:"_L1 + orNull(script())
        + ", Cat:"_L1 + orNull(category()) + ", SubCat:"_L1 + orNull(subCategory()) + " prod:"_L1
        + orNull(production()) + ", sort:"_L1 + orNull(sortName()) + "\nAnchors:"_L1 + orNull(anchors())
        + ",\nMarks:"_L1 + orNull(marks()) + "\nComponents:"_L1 + orNull(decompose()) + u'>';
}

QString VXGlyphInfo::lineTabbed(const QStringList &keys, Error *error) const
{
    QStringList values;
    values.reserve(keys.size());
    for (const QString &key : keys) {
        Error unknownKey;
        const QVariant value = valueForKey(key, &unknownKey);
        if (!unknownKey.domain.isEmpty()) {
            fail(error, unknownKey);
            return {};
        }
        QString text = isList(value) ? value.toStringList().join(kListSeparator) : value.toString();
        if (key == "unicode"_L1 && text.size() >= 2)
            text.prepend("0x"_L1);
        values += text;
    }
    // Joined, a single empty value would be a null text, which means failure here.
    return values.join(u'\t') + u""_s;
}

bool VXGlyphInfo::validateName(const QString &name, Error *error) const
{
    QString objection = textOfObjection(objectionToName(QStringView(name)));
    if (objection.isNull() && m_document) {
        const InfoPtr first = m_document->infoForName(name);
        if (first && first.get() != this)
            objection = textOfTakenName(name);
    }
    if (objection.isNull())
        return true;
    return fail(error, {u"TesselErrorDomain"_s, 125, objection, {}, {}});
}

void VXGlyphInfo::generateUniName()
{
    if (const QString production = productionNameFor(name(), unicode()); !production.isNull())
        setProduction(production);
}
