// A table: it reads, or fails, as the plain reader does.
#include "document/TabbedTable.h"
#include "fuzz/Require.h"
#include "tests/document/PlainFile.h"

using namespace runebook;

namespace {

/// Unknown keys are remembered for the whole run: a few are enough.
bool hasStrangeKeys(const QByteArray &bytes)
{
    return bytes.size() > 4096 || bytes.left(1024).count('\t') > 64;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray valid = madeValid(data, size);
    if (hasStrangeKeys(valid))
        return 0;
    const ExactBytes bytes(valid);
    Error error;
    const std::optional<InfoList> infos = TabbedReader().read(bytes.view(), &error);
    const auto expected = PlainTable::ofText(QString::fromUtf8(bytes.view()));
    REQUIRE(infos.has_value() == expected.has_value(), error.text(), QString::fromUtf8(valid));
    REQUIRE(infos.has_value() == error.domain.isEmpty(), error.domain, error.text());
    if (!infos)
        return 0;
    REQUIRE(infos->size() == expected->size(), QString::number(infos->size()), QString::fromUtf8(valid));
    for (std::size_t i = 0; i < infos->size(); ++i) {
        const PlainRecord record = PlainRecord::of(*(*infos)[i]);
        REQUIRE(record == (*expected)[i], record.toString(), (*expected)[i].toString());
    }
    return 0;
}
