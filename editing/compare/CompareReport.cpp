#include "editing/compare/CompareReport.h"

#include "editing/compare/ComparedFields.h"
#include "editing/compare/RecordPairs.h"
#include "platform/PlainText.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Two values longer than this together stand on lines of their own.
constexpr qsizetype kOneLine = 72;

class TextReport
{
    Q_DECLARE_TR_FUNCTIONS(CompareReport)
public:
    TextReport(QTextStream &out, CompareKey key, const WorkProgress &progress, std::size_t pairs)
        : m_out(out), m_key(key), m_work(progress, 3 * pairs)
    {
    }

    /// False when it was stopped.
    bool write(const QString &left, const QString &right, const FileDifference &difference)
    {
        m_out << u"- %1\n"_s.arg(source(left, difference.leftCount));
        m_out << u"+ %1\n"_s.arg(source(right, difference.rightCount));
        if (difference.pairs.empty()) {
            m_out << '\n' << tr("No differences.") << '\n';
            return true;
        }
        const qsizetype onlyLeft = writeMissing(difference, Side::Left);
        const qsizetype onlyRight = writeMissing(difference, Side::Right);
        const qsizetype different = writeDifferent(difference);
        m_out << '\n'
              << tr("%1 only left, %2 only right, %3 different").arg(onlyLeft).arg(onlyRight).arg(different)
              << '\n';
        return !m_work.isStopped();
    }

private:
    enum class Side { Left, Right };

    static QString source(const QString &path, qsizetype count)
    {
        return (count == 1 ? tr("%1  (%2 glyph)") : tr("%1  (%2 glyphs)"))
            .arg(terminalText(path), QString::number(count));
    }

    QString titleOf(const VXGlyphInfo &info) const
    {
        const QString text = pairingText(info, m_key);
        return terminalText(text == info.name() ? text : u"%1  %2"_s.arg(text, info.name()));
    }

    /// The glyphs that only one side has. Their number.
    qsizetype writeMissing(const FileDifference &difference, Side side)
    {
        qsizetype count = 0;
        for (const RecordPair &pair : difference.pairs) {
            if (!m_work.goOn())
                break;
            if (pair.left && pair.right)
                continue;
            const VXGlyphInfo *info = side == Side::Left ? pair.left.get() : pair.right.get();
            if (!info)
                continue;
            if (count++ == 0)
                m_out << '\n' << (side == Side::Left ? tr("Only left:") : tr("Only right:")) << '\n';
            m_out << (side == Side::Left ? "  - " : "  + ") << titleOf(*info) << '\n';
        }
        return count;
    }

    qsizetype writeDifferent(const FileDifference &difference)
    {
        qsizetype count = 0;
        for (const RecordPair &pair : difference.pairs) {
            if (!m_work.goOn())
                break;
            if (!pair.left || !pair.right)
                continue;
            if (count++ == 0)
                m_out << '\n' << tr("Different:") << '\n';
            m_out << "  " << titleOf(*pair.left) << '\n';
            for (const ComparedField *field : differingFields(*pair.left, *pair.right))
                writeField(*field, *pair.left, *pair.right);
        }
        return count;
    }

    void writeField(const ComparedField &field, const VXGlyphInfo &left, const VXGlyphInfo &right)
    {
        const QString one = shown(left.displayText(field.field));
        const QString other = shown(right.displayText(field.field));
        const QString key = keyOfField(field.field);
        if (one.size() + other.size() <= kOneLine)
            m_out << "      " << key << ": " << one << " → " << other << '\n';
        else
            m_out << "      " << key << ":\n        - " << one << "\n        + " << other << '\n';
    }

    static QString shown(const QString &value)
    {
        return value.isEmpty() ? tr("(none)") : terminalText(value);
    }

    QTextStream &m_out;
    CompareKey m_key;
    CountedWork m_work;
};

QJsonValue jsonValue(const VXGlyphInfo &info, GlyphField field)
{
    if (field == GlyphField::Unicodes || field == GlyphField::AltNames)
        return QJsonArray::fromStringList(info.valueForKey(keyOfField(field)).toStringList());
    return info.displayText(field);
}

/// A record's fields that have a value.
QJsonObject jsonRecord(const VXGlyphInfo &info)
{
    QJsonObject record;
    for (const ComparedField &field : comparedFields()) {
        if (!info.displayText(field.field).isEmpty())
            record.insert(keyOfField(field.field), jsonValue(info, field.field));
    }
    return record;
}

QJsonObject jsonPair(const RecordPair &pair, CompareKey key)
{
    const VXGlyphInfo &present = pair.left ? *pair.left : *pair.right;
    QJsonObject object {{propertyOfKey(key), pairingText(present, key)}, {u"name"_s, present.name()}};
    if (!pair.left || !pair.right) {
        object.insert(u"missing"_s, pair.left ? u"right"_s : u"left"_s);
        object.insert(u"record"_s, jsonRecord(present));
        return object;
    }
    QJsonObject fields;
    for (const ComparedField *field : differingFields(*pair.left, *pair.right)) {
        fields.insert(keyOfField(field->field),
                      QJsonObject {{u"left"_s, jsonValue(*pair.left, field->field)},
                                   {u"right"_s, jsonValue(*pair.right, field->field)}});
    }
    object.insert(u"different"_s, fields);
    return object;
}

bool writeJson(QTextStream &out, const FileDifference &difference, CompareKey key,
               const WorkProgress &progress)
{
    CountedWork work(progress, difference.pairs.size());
    const char *separator = "[\n";
    for (const RecordPair &pair : difference.pairs) {
        if (!work.goOn())
            return false;
        out << separator
            << QString::fromUtf8(QJsonDocument(jsonPair(pair, key)).toJson(QJsonDocument::Compact));
        separator = ",\n";
    }
    out << (difference.pairs.empty() ? "[]\n" : "\n]\n");
    return true;
}

} // namespace

bool writeReport(QTextStream &out, const QString &left, const QString &right,
                 const FileDifference &difference, CompareKey key, ReportFormat format,
                 const WorkProgress &progress)
{
    if (format == ReportFormat::Json)
        return writeJson(out, difference, key, progress);
    return TextReport(out, key, progress, difference.pairs.size()).write(left, right, difference);
}

CompareResult compareFiles(const QString &left, const QString &right, CompareKey key, ReportFormat format,
                           QTextStream &out, Error *error)
{
    const std::optional<FileDifference> difference = differenceOfFiles(left, right, key, error);
    if (!difference)
        return FilesUnreadable;
    writeReport(out, left, right, *difference, key, format);
    return difference->pairs.empty() ? FilesEqual : FilesDifferent;
}

} // namespace runebook
