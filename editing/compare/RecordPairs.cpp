#include "editing/compare/RecordPairs.h"

#include "document/GlyphDataReader.h"
#include "document/TableReader.h"
#include "editing/compare/CommonLines.h"
#include "editing/compare/ComparedFields.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QVarLengthArray>
#include <unordered_map>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Mostly one.
using Places = QVarLengthArray<std::size_t, 1>;

/// The records of one key, by their places in either list.
struct Group {
    Places left;
    Places right;
};

/// All that makes a record equal to another one.
std::string allFields(const VXGlyphInfo &info)
{
    std::string all;
    std::string buffer;
    for (const ComparedField &field : comparedFields()) {
        all += comparableValue(info, field.field, buffer).value_or("");
        all += '\x1F';
    }
    return all;
}

std::string groupText(const VXGlyphInfo &info, CompareKey key)
{
    std::string buffer;
    const std::string_view text = keyUtf8(info, key, buffer);
    if (!text.empty())
        return 'k' + std::string(text);
    return 'n' + std::string(keyUtf8(info, CompareKey::Name, buffer));
}

bool agreeInAllFields(const VXGlyphInfo &left, const VXGlyphInfo &right)
{
    const QList<ComparedField> &fields = comparedFields();
    return std::all_of(fields.begin(), fields.end(),
                       [&](const ComparedField &field) { return haveEqualValues(left, right, field.field); });
}

/// Takes out of both lists the records that have an equal on the other side.
void removeEqual(const InfoList &leftInfos, const InfoList &rightInfos, Group &group)
{
    if (group.left.size() == 1 && group.right.size() == 1) {
        if (agreeInAllFields(*leftInfos[group.left[0]], *rightInfos[group.right[0]]))
            group = {};
        return;
    }
    std::unordered_map<std::string, Places> byFields;
    for (const std::size_t place : group.right)
        byFields[allFields(*rightInfos[place])].push_back(place);
    std::vector<std::size_t> matched;
    for (auto &[fields, places] : byFields)
        std::reverse(places.begin(), places.end());
    erase_if(group.left, [&](std::size_t place) {
        const auto found = byFields.find(allFields(*leftInfos[place]));
        if (found == byFields.end() || found->second.empty())
            return false;
        matched.push_back(found->second.back());
        found->second.pop_back();
        return true;
    });
    std::sort(matched.begin(), matched.end());
    erase_if(group.right,
             [&](std::size_t place) { return std::binary_search(matched.begin(), matched.end(), place); });
}

} // namespace

QString pairingText(const VXGlyphInfo &info, CompareKey key)
{
    const QString text = info.valueForKey(propertyOfKey(key)).toString();
    return text.isEmpty() ? info.name() : text;
}

namespace {

/// Pairs the records of two lists; see differingPairs().
class Pairing
{
public:
    Pairing(const InfoList &left, const InfoList &right, CompareKey key, const WorkProgress &progress)
        : m_left(left),
          m_right(right),
          m_key(key),
          m_work(progress, 2 * (left.size() + right.size())),
          m_partner(left.size(), kNone),
          m_isListed(left.size()),
          m_isMissing(right.size())
    {
    }

    std::optional<std::vector<RecordPair>> run()
    {
        m_groups.reserve(m_left.size());
        group(m_left, &Group::left);
        group(m_right, &Group::right);
        for (auto &[text, group] : m_groups) {
            if (!m_work.goOn())
                break;
            pair(group);
        }
        if (m_work.isStopped())
            return {};
        return inOrder();
    }

private:
    static constexpr std::size_t kNone = ~std::size_t(0);

    void group(const InfoList &infos, Places Group::*places)
    {
        for (std::size_t i = 0; i < infos.size() && m_work.goOn(); ++i)
            (m_groups[groupText(*infos[i], m_key)].*places).push_back(i);
    }

    void pair(Group &group)
    {
        removeEqual(m_left, m_right, group);
        for (qsizetype i = 0; i < group.left.size(); ++i) {
            m_isListed[group.left[i]] = true;
            if (i < group.right.size())
                m_partner[group.left[i]] = group.right[i];
        }
        for (qsizetype i = group.left.size(); i < group.right.size(); ++i)
            m_isMissing[group.right[i]] = true;
    }

    std::vector<RecordPair> inOrder() const
    {
        std::vector<RecordPair> pairs;
        for (std::size_t i = 0; i < m_left.size(); ++i) {
            if (m_isListed[i])
                pairs.push_back({m_left[i], m_partner[i] == kNone ? nullptr : m_right[m_partner[i]]});
        }
        for (std::size_t i = 0; i < m_right.size(); ++i) {
            if (m_isMissing[i])
                pairs.push_back({nullptr, m_right[i]});
        }
        return pairs;
    }

    const InfoList &m_left;
    const InfoList &m_right;
    CompareKey m_key;
    CountedWork m_work;
    std::unordered_map<std::string, Group> m_groups;
    std::vector<std::size_t> m_partner; ///< of the left records, in the right list
    std::vector<bool> m_isListed; ///< of the left records
    std::vector<bool> m_isMissing; ///< of the right records, on the left
};

} // namespace

std::optional<std::vector<RecordPair>> differingPairs(const InfoList &left, const InfoList &right,
                                                      CompareKey key, const WorkProgress &progress)
{
    return Pairing(left, right, key, progress).run();
}

std::vector<RecordPair> differingPairs(const InfoList &left, const InfoList &right, CompareKey key)
{
    return *differingPairs(left, right, key, {});
}

// Files

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(RecordPairs)
};

/// The text of a glyph data file; a text that shows no sign of being one is an error, for two such files
/// would count as equal.
std::optional<QByteArray> readGlyphData(const QString &path, Error *error)
{
    std::optional<QByteArray> bytes = readUtf8File(path, error);
    if (bytes && !bytes->contains("<glyphData") && !bytes->contains("<glyph ")) {
        fail(error,
             {u"ReadError"_s,
              2,
              Texts::tr("“%1” could not be compared.").arg(path),
              Texts::tr("It is no glyph data file."),
              {}});
        return {};
    }
    return bytes;
}

std::optional<InfoList> readRecords(const QString &path, Error *error)
{
    if (isTablePath(path)) {
        const TableReader reader(
            {.separator = {}, .likelySeparator = separatorOfSuffix(path), .bad = TableReader::Bad::Fails});
        std::optional<TableReading> table = reader.read(path, error);
        return table ? std::optional(std::move(table->infos)) : std::nullopt;
    }
    std::optional<QByteArray> bytes = readGlyphData(path, error);
    if (!bytes)
        return {};
    return GlyphDataReader().read(*std::exchange(bytes, QByteArray()));
}

/// The lines of two glyph data files that only one of them has; nothing when they have to be read as a whole.
std::optional<OtherLines> otherLines(const QString &left, const QString &right)
{
    QFile files[] = {QFile(left), QFile(right)};
    for (QFile &file : files) {
        const QString path = file.fileName();
        if (isTablePath(path) || !QFileInfo(path).isFile()
            || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return {};
    }
    return linesNotInCommon(files[0], files[1]);
}

} // namespace

std::optional<FileDifference> differenceOfFiles(const QString &left, const QString &right, CompareKey key,
                                                Error *error)
{
    FileDifference difference;
    std::optional<InfoList> leftInfos;
    std::optional<InfoList> rightInfos;
    if (const std::optional<OtherLines> lines = otherLines(left, right)) {
        leftInfos = GlyphDataReader().read(lines->left);
        rightInfos = GlyphDataReader().read(lines->right);
        difference.leftCount = difference.rightCount = lines->common;
    } else {
        leftInfos = readRecords(left, error);
        rightInfos = leftInfos ? readRecords(right, error) : std::nullopt;
        if (!rightInfos)
            return {};
    }
    difference.leftCount += static_cast<qsizetype>(leftInfos->size());
    difference.rightCount += static_cast<qsizetype>(rightInfos->size());
    difference.pairs = differingPairs(*leftInfos, *rightInfos, key);
    return difference;
}

} // namespace runebook
