// Looks for the partner of every brace of arbitrary text. Aborts when a partner is no brace, or does not lead
// back to where the search began.
#include "codeeditor/BraceMatching.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace runebook;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void checkBraces(const QString &text)
{
    for (int i = -1; i <= int(text.size()); ++i) {
        const auto partner = TE_findMatchingBraceForRangeInString(i, text);
        if (!partner)
            continue;
        require(partner->length == 1 && partner->location != i && partner->location < text.size());
        const char16_t there = text[partner->location].unicode();
        require(TE_isOpeningBrace(text[i].unicode()) ? TE_isClosingBrace(there) : TE_isOpeningBrace(there));
        const auto back = TE_findMatchingBraceForRangeInString(partner->location, text);
        require(back && back->location == i);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    qputenv("RUNEBOOK_DEFAULTS", "/dev/null/none");
    initBraces();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    checkBraces(
        QString::fromLatin1(reinterpret_cast<const char *>(data), qsizetype(std::min<size_t>(size, 2000))));
    QString utf16(qsizetype(std::min<size_t>(size, 4000) / 2), Qt::Uninitialized);
    if (!utf16.isEmpty())
        memcpy(utf16.data(), data, std::size_t(utf16.size()) * 2);
    checkBraces(utf16);
    return 0;
}
