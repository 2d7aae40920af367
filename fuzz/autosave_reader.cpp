// An autosaved content: whatever it holds is read to its end, and what was read comes back with all of its
// values when it is autosaved again. Records of any values come from inputs that begin with "V": the bytes
// behind it stand for what the comment holds in base 64, which random changes would only break.
#include "document/AutosaveForm.h"
#include "fuzz/Require.h"
#include "tests/model/PlainRecord.h"

using namespace runebook;
using namespace std::chrono_literals;

namespace {

constexpr auto kBegin = "<!-- runebook autosave 1 ";

QByteArray contentWithValues(const QByteArray &bytes)
{
    QByteArray content = "<glyph />\n<glyph />\n<glyph />\n";
    content += kBegin + QByteArray("3 30 2\n");
    constexpr QByteArrayView kBetween = "\n\n";
    for (qsizetype begin = 0, end = 0; end >= 0; begin = end + kBetween.size()) {
        end = bytes.indexOf(kBetween, begin);
        content += bytes.mid(begin, end < 0 ? -1 : end - begin).toBase64() + '\n';
    }
    return content + "-->\n";
}

QByteArray autosaved(const AutosavedContent &content)
{
    AutosaveSlices slices(content.infos, content.fileVersion, [] { return true; });
    std::string text;
    auto progress = SlicedContent::Progress::Unfinished;
    while (progress == SlicedContent::Progress::Unfinished) {
        text.reserve(text.size() + 4096);
        progress = slices.printMore(text, 1s);
    }
    if (const ContentProducer rest = slices.takeRest()) {
        rest(
            [&text](std::string_view block) {
                text += block;
                return true;
            },
            nullptr);
    }
    return QByteArray(text.data(), qsizetype(text.size()));
}

QString pictureOf(const VXGlyphInfo &info)
{
    PlainRecord record = PlainRecord::of(info);
    // Absent and empty are one here.
    record.texts.removeIf([](const auto &text) { return text.value().isEmpty(); });
    record.texts.remove(
        QStringLiteral("unicharString")); // follows from the code points where lines hold a record
    return record.toString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const bool givesValues = size > 0 && data[0] == 'V';
    const ExactBytes bytes(
        givesValues ? contentWithValues({reinterpret_cast<const char *>(data + 1), qsizetype(size - 1)})
                    : madeValid(data, size));
    const AutosavedContent read = readAutosavedContent(bytes.view());
    const QByteArray printed = autosaved(read);
    const AutosavedContent again = readAutosavedContent(printed);
    REQUIRE(again.isWhole, QString::fromUtf8(printed), QStringLiteral("a whole content"));
    REQUIRE(again.fileVersion == read.fileVersion, QString::number(again.fileVersion),
            QString::number(read.fileVersion));
    REQUIRE(again.infos.size() == read.infos.size(), QString::number(again.infos.size()),
            QString::number(read.infos.size()));
    for (std::size_t i = 0; i < read.infos.size(); ++i)
        REQUIRE(pictureOf(*again.infos[i]) == pictureOf(*read.infos[i]), pictureOf(*again.infos[i]),
                pictureOf(*read.infos[i]));
    return 0;
}
