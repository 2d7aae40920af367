// Feeds arbitrary texts to the predicate language, as a predicate, as an argument and as a value. Aborts when
// an argument breaks out of its place, when a printed predicate does not parse again, or when folding bytes
// and folding text disagree.

#include "platform/TextFolding.h"
#include "tests/platform/PredicateOracle.h"

#include <cstdint>
#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// Has the same value under every key.
class Subject : public PredicateSubject
{
public:
    explicit Subject(PredicateValue value) : m_value(std::move(value)) { }
    PredicateValue valueForKey(const QString &) const override { return m_value; }

private:
    PredicateValue m_value;
};

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void checkPredicate(const QString &text)
{
    Error error;
    const std::optional<Predicate> predicate = Predicate::parse(text, &error);
    require(predicate ? error.code == 0 : !error.failureReason.isEmpty());
    if (!predicate)
        return;
    const Verdict verdict = evaluate(*predicate, Subject(text));
    const std::optional<Predicate> again = Predicate::parse(predicate->predicateFormat());
    require(again && evaluate(*again, Subject(text)) == verdict);
    for (const PredicateValue &value :
         {PredicateValue {}, PredicateValue(QStringList {text, u"a"_s}), PredicateValue(double(text.size()))})
        (void)evaluate(*predicate, Subject(value));
}

void checkArgument(const QString &text)
{
    const auto equal = Predicate::withFormat(u"a == %@ && a IN %@"_s, {text, QStringList {text}});
    require(equal.has_value());
    require((evaluate(*equal, Subject(text)) == Verdict::Yes) == !text.isEmpty());
    require(evaluate(*equal, Subject(text + u'x')) == Verdict::No);
    (void)Predicate::withFormat(text, {text});
}

void checkFolding(const QString &text, std::string_view bytes)
{
    for (const Folding folding :
         {Folding(Fold::Case), Folding(Fold::Diacritics), Fold::Case | Fold::Diacritics}) {
        std::string folded;
        appendFoldedUtf8(folded, bytes, folding);
        const bool proper = text.toUtf8() == QByteArrayView(bytes.data(), qsizetype(bytes.size()));
        require(!proper || folded == foldedUtf8(text, folding));
        const QString once = foldForSearch(text, folding);
        require(once == foldForSearch(once, folding) || !text.isValidUtf16());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    const QString utf8 = QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
    checkPredicate(utf8);
    checkArgument(utf8);
    checkFolding(utf8, bytes);

    // As UTF-16 the same bytes hold lone surrogates.
    QString utf16(qsizetype(size / 2), Qt::Uninitialized);
    if (size > 1)
        memcpy(utf16.data(), data, size / 2 * 2);
    checkArgument(utf16);
    checkFolding(utf16, {});
    return 0;
}
