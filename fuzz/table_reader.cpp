// A table: whatever is read is written again byte for byte, and as another table it holds the same values.
#include "document/TableReader.h"
#include "document/TableWriter.h"
#include "fuzz/Require.h"

using namespace runebook;

namespace {

QByteArray bytesOf(const InfoList &infos, const TableFormPtr &form)
{
    std::string bytes;
    TableWriter(infos, form)([&bytes](std::string_view block) { return bytes += block, true; }, nullptr);
    return QByteArray::fromStdString(bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const ExactBytes bytes(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    Error error;
    const std::optional<TableReading> table = TableReader().read(bytes.view(), &error);
    REQUIRE(table.has_value() == error.domain.isEmpty(), error.domain, error.text());
    if (!table)
        return 0;
    REQUIRE(bytesOf(table->infos, table->form) == bytes.view(), QString::number(table->infos.size()),
            QString::fromUtf8(bytes.view()));
    const auto all = std::make_shared<const TableForm>(TableForm::of(tableFields()));
    const auto again = TableReader().read(bytesOf(table->infos, all), &error);
    REQUIRE(again && again->problemCount == 0, error.text(), QString());
    REQUIRE(again->infos.size() == table->infos.size(), QString::number(again->infos.size()),
            QString::number(table->infos.size()));
    for (std::size_t i = 0; i < table->infos.size(); ++i) {
        const VXGlyphInfo &info = *table->infos[i];
        for (const GlyphField field : tableFields()) {
            const bool isSame = again->infos[i]->displayText(field) == info.displayText(field);
            REQUIRE(isSame || changeInTable(info, field), again->infos[i]->displayText(field),
                    info.displayText(field));
        }
    }
    return 0;
}
