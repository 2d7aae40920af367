#include "codeeditor/KeywordTable.h"

#include "codeeditor/CodeColors.h"
#include "codeeditor/TDTokenizer.h"

#include <QFile>
#include <algorithm>
#include <memory>
#include <plist/plist.h>

using namespace Qt::StringLiterals;

namespace runebook {

const QString foregroundColorAttributeName = u"NSColor"_s;
const QString fontAttributeName = u"NSFont"_s;
const QString linkAttributeName = u"NSLink"_s;
const QString commentAttributesKey = u"VXCommmentAttributes"_s;
const QString defaultForegroundKey = u"VXForegroundColorXYZ"_s;

namespace {

// "print" stands twice in the list as it was handed down; the second one changes nothing.
constexpr const char *kKeywords[] = {"False",   "True",  "None",   "print", "and",    "del",    "from",
                                     "not",     "while", "as",     "elif",  "global", "or",     "with",
                                     "assert",  "else",  "if",     "pass",  "yield",  "break",  "except",
                                     "import",  "print", "class",  "exec",  "in",     "raise",  "continue",
                                     "finally", "is",    "return", "def",   "for",    "lambda", "try"};

constexpr const char *kScriptingObjects[] = {"Layer", "Tessel", "Font"};

constexpr const char *kBuiltins[] = {
    "all",        "abs",          "any",     "apply",     "callable",  "chr",      "cmp",        "coerce",
    "compile",    "delattr",      "dir",     "divmod",    "eval",      "execfile", "filter",     "getattr",
    "globals",    "hasattr",      "hash",    "hex",       "id",        "input",    "intern",     "isinstance",
    "issubclass", "iter",         "len",     "locals",    "map",       "max",      "min",        "oct",
    "ord",        "pow",          "range",   "raw_input", "reduce",    "reload",   "repr",       "round",
    "setattr",    "sorted",       "sum",     "unichr",    "vars",      "zip",      "basestring", "bool",
    "buffer",     "classmethod",  "complex", "dict",      "enumerate", "file",     "float",      "frozenset",
    "int",        "list",         "long",    "object",    "open",      "property", "reversed",   "set",
    "slice",      "staticmethod", "str",     "super",     "tuple",     "type",     "unicode",    "xrange"};

// The bracket stands where a tab might be expected: white space that begins with it, once a tokenizer is told
// to take it for white space, is painted like white space.
constexpr char16_t kWhitespaceKeys[] = {0x000A, 0x000D, 0x000C, 0x0020, 0x005B, 0x00A0, 0x1680, 0x2000,
                                        0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, 0x2008,
                                        0x2009, 0x200A, 0x200B, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};

static_assert(std::size(kKeywords) == 35 && std::size(kBuiltins) == 72 && std::size(kWhitespaceKeys) == 24);

QVariantMap attributes(const QColor &color, const std::optional<QFont> &font = std::nullopt)
{
    QVariantMap map {{foregroundColorAttributeName, color}};
    if (font)
        map.insert(fontAttributeName, *font);
    return map;
}

} // namespace

bool isPythonKeyword(QStringView word)
{
    return std::any_of(std::begin(kKeywords), std::end(kKeywords),
                       [word](const char *keyword) { return word == QLatin1StringView(keyword); });
}

QVariantHash defaultKeywordAttributes(const CodeFonts &fonts, const QPalette &palette)
{
    QVariantHash table;
    // One dictionary for all the words of a kind: copies of a map share it.
    const auto insertAll = [&table](const auto &words, const QVariantMap &shared) {
        for (const char *word : words)
            table.insert(QLatin1StringView(word), shared);
    };
    if (const std::optional<QFont> font = fonts.italic ? fonts.italic : fonts.regular)
        table.insert(commentAttributesKey, attributes(secondaryLabelColor(palette), font));
    insertAll(kKeywords, attributes(keywordColor(), fonts.bold));
    insertAll(kScriptingObjects, attributes(scriptingObjectColor()));
    insertAll(kBuiltins, attributes(builtinColor()));
    const QVariantMap whitespace = attributes(tertiaryLabelColor(palette));
    for (const char16_t key : kWhitespaceKeys)
        table.insert(QString(QChar(key)), whitespace);
    return table;
}

void setUpPythonTokenizer(TDTokenizer &tokenizer, const QVariantHash &table)
{
    tokenizer.setKeywords(table);
    tokenizer.addSingleLineCommentStartSymbol(u"#"_s);
    tokenizer.addMultiLineCommentStartSymbolEndSymbol(u"'''"_s, u"'''"_s);
    tokenizer.setTokenizerStateFromTo(tokenizer.quoteState(), u'\'', u'\'');
}

std::size_t WordIndex::hash(QStringView word)
{
    const std::size_t length = std::size_t(word.size());
    if (length == 0)
        return 0;
    const char16_t *units = word.utf16();
    return length * 0x9E3779B1u ^ units[0] * 0x85EBCA6Bu ^ units[length / 2] * 0xC2B2AE35u
        ^ units[length - 1] * 0x27D4EB2Fu;
}

void WordIndex::insert(const QString &word, int value)
{
    if (word.isEmpty())
        return;
    if (m_count * 4 >= m_slots.size())
        grow();
    std::size_t at = hash(word) >> 7;
    for (;; ++at) {
        Slot &slot = m_slots[at & (m_slots.size() - 1)];
        if (slot.word.isEmpty())
            ++m_count;
        else if (slot.word != word)
            continue;
        slot = {word, value};
        return;
    }
}

int WordIndex::find(QStringView word) const
{
    if (m_slots.empty())
        return kNotFound;
    for (std::size_t at = hash(word) >> 7;; ++at) {
        const Slot &slot = m_slots[at & (m_slots.size() - 1)];
        if (slot.word.isEmpty())
            return kNotFound;
        if (slot.word == word)
            return slot.value;
    }
}

void WordIndex::grow()
{
    std::vector<Slot> old(std::max<std::size_t>(64, m_slots.size() * 2));
    old.swap(m_slots);
    m_count = 0;
    for (const Slot &slot : old) {
        if (!slot.word.isEmpty())
            insert(slot.word, slot.value);
    }
}

QStringList completionWords(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    const std::unique_ptr<void, void (*)(plist_t)> owner(root, &plist_free);
    if (!root || plist_get_node_type(root) != PLIST_ARRAY)
        return {};

    QStringList words;
    const uint32_t count = plist_array_get_size(root);
    words.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const plist_t item = plist_array_get_item(root, i);
        uint64_t length = 0;
        if (const char *text = plist_get_string_ptr(item, &length))
            words.append(QString::fromUtf8(text, qsizetype(length)));
    }
    return words;
}

} // namespace runebook
