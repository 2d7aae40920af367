#include "editing/tables/TableExport.h"

#include "document/TableWriter.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/tables/TableSettings.h"
#include "platform/ShownText.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kPreviewRecords = 8;
constexpr std::size_t kBetweenLooks = 64;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TableExport)
};

} // namespace

TableChoices TableChoices::remembered()
{
    TableChoices choices;
    const auto add = [&choices](GlyphField field, bool isTaken) {
        if (std::find(choices.order.begin(), choices.order.end(), field) != choices.order.end())
            return;
        choices.order.push_back(field);
        if (isTaken)
            choices.fields.push_back(field);
    };
    const QStringList stored = Settings::kTableFields.value();
    for (const QString &key : stored) {
        const bool isTaken = !key.startsWith(u'-');
        if (const auto field = fieldOfHeading(QStringView(key).sliced(isTaken ? 0 : 1)))
            add(*field, isTaken);
    }
    for (const GlyphField field : tableFields())
        add(field, stored.isEmpty());
    const QString separator = Settings::kTableSeparator.value();
    choices.separator = separator == ","_L1 ? ',' : separator == ";"_L1 ? ';' : '\t';
    choices.hasTitles = Settings::kTableTitles.value();
    choices.hasByteOrderMark = Settings::kTableMark.value();
    choices.records = TableRecords(Settings::kTableRecords.value());
    return choices;
}

void TableChoices::remember() const
{
    QStringList keys;
    for (const GlyphField field : order) {
        const bool isTaken = std::find(fields.begin(), fields.end(), field) != fields.end();
        keys << (isTaken ? QString() : u"-"_s) + headingOfField(field);
    }
    Settings::kTableFields.set(keys);
    Settings::kTableTitles.set(hasTitles);
    Settings::kTableSeparator.set(QString(QLatin1Char(separator)));
    Settings::kTableMark.set(hasByteOrderMark);
    Settings::kTableRecords.set(int(records));
}

TableFormPtr tableForm(const TableChoices &choices)
{
    DelimitedFormat format;
    format.separator = choices.separator;
    format.hasByteOrderMark = choices.hasByteOrderMark;
    TableForm form = TableForm::of(choices.fields, format);
    for (TableColumn &column : form.columns) {
        if (choices.hasTitles)
            column.heading = fieldTitle(*column.field);
    }
    return std::make_shared<TableForm>(std::move(form));
}

QString tablePreview(const InfoList &infos, const TableChoices &choices)
{
    const InfoList first(infos.begin(), infos.begin() + qsizetype(std::min(infos.size(), kPreviewRecords)));
    QString text;
    const BlockSink sink = [&text](std::string_view block) {
        text += QString::fromUtf8(block.data(), std::ssize(block));
        return true;
    };
    TableWriter(first, tableForm(choices))(sink, nullptr);
    QStringList lines = text.split(u'\n').mid(0, kPreviewRecords + 1);
    for (QString &line : lines)
        line = shownText(line, kMostInCell);
    if (infos.size() > kPreviewRecords)
        lines << u"…"_s;
    return lines.join(u'\n').trimmed();
}

QString suffixOf(const TableChoices &choices)
{
    return choices.separator == '\t' ? u"tsv"_s : u"csv"_s;
}

bool TableLossCount::goOn(const InfoList &infos, const TableForm &form, const std::function<bool()> &isLate)
{
    while (next < infos.size()) {
        const VXGlyphInfo &info = *infos[next++];
        if (hasTableLosses(info, form) && records++ == 0)
            first = cellDisplayText(info, GlyphField::Name) + u": "_s
                + tableLosses(info, form).front().sentence(info);
        if (next % kBetweenLooks == 0 && isLate())
            return false;
    }
    return true;
}

QString TableLossCount::text() const
{
    if (records == 0)
        return {};
    return records == 1 ? Texts::tr("The table does not hold all of one record. %1").arg(first)
                        : Texts::tr("The table does not hold all of %1 records. The first is %2")
                              .arg(QLocale().toString(qlonglong(records)), first);
}

Error objectionToTarget(const QString &path, const QString &ownFile)
{
    const QString file = QFileInfo(path).canonicalFilePath();
    if (file.isEmpty() || file != QFileInfo(ownFile).canonicalFilePath())
        return {};
    return {u"TableError"_s, 2, Texts::tr("The table cannot be written over this document."),
            Texts::tr("“%1” is the file of the document itself.").arg(path),
            Texts::tr("Choose another name. To change the document's own file, save it.")};
}

bool exportTable(const InfoList &infos, const TableChoices &choices, const QString &path,
                 const std::function<bool(double part)> &goOn, Error *error)
{
    const TableWriter writer(infos, tableForm(choices));
    constexpr double kUsualRow = 120; // bytes; only the progress depends on it
    const double all = double(infos.size() + 1) * kUsualRow;
    bool isStopped = false;
    const ContentProducer produce = [&](const BlockSink &sink, Error *reason) {
        double written = 0;
        const BlockSink counted = [&](std::string_view block) {
            written += double(block.size());
            isStopped = !goOn(std::min(written / all, 1.0));
            return !isStopped && sink(block);
        };
        return writer(counted, reason);
    };
    if (FileSaver::save(path, produce, error))
        return true;
    if (isStopped && error)
        *error = {};
    return false;
}

} // namespace runebook
