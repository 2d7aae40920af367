/// \file
/// Makes the file of characters' data from the files of Unicode: runebook-make-unicode FOLDER OUT
#include "model/UnicodeFormat.h"

#include <QCoreApplication>
#include <QDir>
#include <QHash>
#include <QMap>
#include <QSaveFile>
#include <algorithm>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <vector>

using namespace Qt::StringLiterals;
using namespace runebook::UnicodeFormat;

namespace {

constexpr quint32 kLast = 0x10FFFF;

struct Name {
    quint32 code = 0; ///< with the bit of an alias
    QByteArray text;
};

struct Kind {
    quint16 category = 0, bidi = 0, script = 0, combiningAndMirrored = 0;
    friend bool operator==(const Kind &, const Kind &) = default;
};

class Maker
{
public:
    explicit Maker(const QString &folder)
        : m_folder(folder)
        , m_kinds(kLast + 1)
    {
    }
    QByteArray make();

private:
    QList<QByteArrayList> rows(const QString &file) const;
    quint16 text(const QByteArray &text);
    void readCharacters();
    void readCharacter(const QByteArrayList &row, quint32 first, quint32 last);
    void readScripts();
    void readBlocks();
    void readAliases();
    void writeNames();
    void writeKinds();
    void writeTexts();
    void add(Table table, quint32 number) { append(m_tables[table], number); }
    template <typename Number> static void append(QByteArray &bytes, Number number)
    {
        const Number little = qToLittleEndian(number);
        bytes.append(reinterpret_cast<const char *>(&little), sizeof little);
    }

    QString m_folder;
    std::array<QByteArray, TableCount> m_tables;
    QHash<QByteArray, quint16> m_textNumbers;
    QByteArrayList m_texts;
    std::vector<Kind> m_kinds;
    std::vector<Name> m_names;
};

quint32 hex(const QByteArray &text)
{
    bool isNumber = false;
    const quint32 value = text.toUInt(&isNumber, 16);
    if (!isNumber)
        throw std::runtime_error("not a code point: " + text.toStdString());
    return value;
}

std::pair<quint32, quint32> range(const QByteArray &text)
{
    const qsizetype dots = text.indexOf("..");
    return {hex(dots < 0 ? text : text.left(dots)), hex(dots < 0 ? text : text.mid(dots + 2))};
}

QList<QByteArrayList> Maker::rows(const QString &file) const
{
    QFile in(QDir(m_folder).filePath(file));
    if (!in.open(QIODevice::ReadOnly))
        throw std::runtime_error(in.fileName().toStdString() + ": " + in.errorString().toStdString());
    QList<QByteArrayList> found;
    while (!in.atEnd()) {
        QByteArray line = in.readLine();
        line.truncate(line.contains('#') ? line.indexOf('#') : line.size());
        QByteArrayList fields;
        for (const QByteArray &field : line.split(';'))
            fields += field.trimmed();
        if (fields.size() > 1)
            found += fields;
    }
    return found;
}

/// The number of a text of the vocabularies.
quint16 Maker::text(const QByteArray &text)
{
    if (!m_textNumbers.contains(text)) {
        m_textNumbers.insert(text, quint16(m_texts.size()));
        m_texts += text;
    }
    return m_textNumbers.value(text);
}

void Maker::readCharacters()
{
    const Kind unassigned {text("Cn"), text("L"), text("Unknown"), 0};
    std::fill(m_kinds.begin(), m_kinds.end(), unassigned);
    const QList<QByteArrayList> all = rows(u"UnicodeData.txt"_s);
    for (qsizetype i = 0; i < all.size(); ++i) {
        const bool isRange = all.at(i).at(1).endsWith(", First>");
        readCharacter(all.at(i), hex(all.at(i).at(0)), hex(all.at(isRange ? i + 1 : i).at(0)));
        i += isRange ? 1 : 0;
    }
}

void Maker::readCharacter(const QByteArrayList &row, quint32 first, quint32 last)
{
    const quint16 combining = quint16(row.at(3).toUInt() * 2 + (row.at(9) == "Y" ? 1 : 0));
    const Kind kind {text(row.at(2)), text(row.at(4)), text("Unknown"), combining};
    std::fill(m_kinds.begin() + first, m_kinds.begin() + last + 1, kind);

    const QByteArray name = row.at(1);
    const QByteArray rule = name.startsWith("<CJK") ? "CJK UNIFIED IDEOGRAPH-"
        : name.startsWith("<Tangut")                ? "TANGUT IDEOGRAPH-"
                                                    : "";
    const QByteArray digits = '-' + row.at(0);
    if (!rule.isEmpty() || name.endsWith(digits)) {
        const quint32 prefix = text(rule.isEmpty() ? name.chopped(digits.size() - 1) : rule);
        QByteArray &rules = m_tables[RuleNames];
        const Numbers<quint32> before(rules.constData(), quint32(rules.size()));
        const bool goesOn = before.size() > 0 && before[before.size() - 2] + 1 == first
            && before[before.size() - 1] == prefix;
        if (goesOn)
            rules.chop(8);
        else
            add(RuleNames, first);
        add(RuleNames, last);
        add(RuleNames, prefix);
    } else if (!name.startsWith('<')) {
        m_names.push_back({first, name});
    }

    if (!row.at(12).isEmpty() || !row.at(13).isEmpty() || !row.at(14).isEmpty()) {
        const quint32 upper = row.at(12).isEmpty() ? first : hex(row.at(12));
        add(Cases, first);
        add(Cases, upper);
        add(Cases, row.at(13).isEmpty() ? first : hex(row.at(13)));
        add(Cases, row.at(14).isEmpty() ? upper : hex(row.at(14)));
    }
    if (!row.at(5).isEmpty()) {
        QByteArrayList parts = row.at(5).split(' ');
        const bool hasTag = parts.first().startsWith('<');
        add(Decompositions, first);
        add(Decompositions, text(hasTag ? parts.takeFirst() : QByteArray()));
        add(Decompositions, quint32(m_tables[Parts].size() / 4));
        add(Decompositions, quint32(parts.size()));
        for (const QByteArray &part : std::as_const(parts))
            add(Parts, hex(part));
    }
}

void Maker::readScripts()
{
    for (const QByteArrayList &row : rows(u"Scripts.txt"_s)) {
        const auto [first, last] = range(row.at(0));
        for (quint32 code = first; code <= last; ++code)
            m_kinds[code].script = text(row.at(1));
    }
}

void Maker::readBlocks()
{
    for (const QByteArrayList &row : rows(u"Blocks.txt"_s)) {
        const auto [first, last] = range(row.at(0));
        add(Blocks, first);
        add(Blocks, last);
        add(Blocks, text(row.at(1)));
    }
}

void Maker::readAliases()
{
    std::stable_sort(m_names.begin(), m_names.end(), [](const Name &a, const Name &b) { return a.code < b.code; });
    for (const QByteArrayList &row : rows(u"NameAliases.txt"_s))
        m_names.push_back({hex(row.at(0)) | kAliasBit, row.at(1)});
}

/// The words of a name, each with whether a hyphen stands in front of it.
std::vector<std::pair<QByteArray, bool>> wordsOf(const QByteArray &name)
{
    std::vector<std::pair<QByteArray, bool>> words {{{}, false}};
    for (const char c : name) {
        if (c == ' ' || c == '-')
            words.push_back({{}, c == '-'});
        else
            words.back().first += c;
    }
    return words;
}

void Maker::writeNames()
{
    std::set<QByteArray> words;
    for (const Name &name : m_names) {
        for (const auto &word : wordsOf(name.text))
            words.insert(word.first);
    }
    QHash<QByteArray, quint32> numbers;
    for (const QByteArray &word : words) {
        numbers.insert(word, quint32(numbers.size()));
        add(WordStarts, quint32(m_tables[WordBytes].size()));
        m_tables[WordBytes] += word;
    }
    add(WordStarts, quint32(m_tables[WordBytes].size()));

    QByteArrayList tokens;
    for (const Name &name : m_names) {
        QByteArray bytes;
        for (const auto &[word, isBehindHyphen] : wordsOf(name.text))
            appendToken(bytes, numbers.value(word) * 2 + (isBehindHyphen ? 1 : 0));
        add(NameCodes, name.code);
        add(NameStarts, quint32(m_tables[NameTokens].size()));
        m_tables[NameTokens] += bytes;
        tokens += bytes;
    }
    add(NameStarts, quint32(m_tables[NameTokens].size()));

    if (m_names.size() > 0xFFFF)
        throw std::runtime_error("more names than the format has room for");
    std::vector<quint16> order(m_names.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = quint16(i);
    std::stable_sort(order.begin(), order.end(), [&tokens](quint16 a, quint16 b) { return tokens.at(a) < tokens.at(b); });
    for (const quint16 index : order)
        append(m_tables[NameOrder], index);
}

void Maker::writeKinds()
{
    std::vector<Kind> different;
    for (quint32 code = 0; code <= kLast; ++code) {
        const Kind &kind = m_kinds[code];
        if (code > 0 && kind == m_kinds[code - 1])
            continue;
        auto found = std::find(different.begin(), different.end(), kind);
        if (found == different.end())
            found = different.insert(found, kind);
        add(RunStarts, code);
        append(m_tables[RunKinds], quint16(found - different.begin()));
    }
    for (const Kind &kind : different) {
        for (const quint16 number : {kind.category, kind.bidi, kind.script, kind.combiningAndMirrored})
            append(m_tables[Kinds], number);
    }
}

void Maker::writeTexts()
{
    for (const QByteArray &each : std::as_const(m_texts)) {
        add(TextStarts, quint32(m_tables[TextBytes].size()));
        m_tables[TextBytes] += each;
    }
    add(TextStarts, quint32(m_tables[TextBytes].size()));
}

QByteArray Maker::make()
{
    readCharacters();
    readScripts();
    readBlocks();
    readAliases();
    writeNames();
    writeKinds();
    writeTexts();
    QByteArray head;
    QByteArray body;
    append(head, kMagic);
    for (const QByteArray &table : m_tables)
        body += table;
    quint32 start = sizeof(Head);
    append(head, quint32(start + body.size()));
    for (const QByteArray &table : m_tables) {
        append(head, start);
        start += quint32(table.size());
    }
    append(head, start);
    return head + body;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: runebook-make-unicode FOLDER OUT\n", stderr);
        return 2;
    }
    try {
        const QByteArray data = Maker(arguments.at(1)).make();
        QSaveFile out(arguments.at(2));
        if (!out.open(QIODevice::WriteOnly) || out.write(data) < 0 || !out.commit())
            throw std::runtime_error(out.fileName().toStdString() + ": " + out.errorString().toStdString());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "runebook-make-unicode: %s\n", error.what());
        return 1;
    }
    return 0;
}
