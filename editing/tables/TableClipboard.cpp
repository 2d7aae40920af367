#include "editing/tables/TableClipboard.h"

#include "document/TableWriter.h"
#include "editing/tables/TableExport.h"
#include "platform/TurningWindows.h"

#include <algorithm>
#include <array>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Form {
    QLatin1StringView type;
    char separator;
};

constexpr Form kPlain {"text/plain"_L1, '\t'};
constexpr Form kTabs {"text/tab-separated-values"_L1, '\t'};
constexpr Form kCommas {"text/csv"_L1, ','};
constexpr std::array kForms {kPlain, kTabs, kCommas};

TableChoices choicesFor(const std::vector<GlyphField> &fields)
{
    TableChoices choices = TableChoices::remembered();
    choices.fields = fields;
    choices.hasByteOrderMark = false;
    return choices;
}

/// Any thread.
QByteArray tableBytes(const InfoList &infos, TableChoices choices, char separator)
{
    choices.separator = separator;
    QByteArray bytes;
    const BlockSink sink = [&bytes](std::string_view block) {
        bytes.append(block.data(), std::ssize(block));
        return true;
    };
    TableWriter(infos, tableForm(choices))(sink, nullptr);
    return bytes;
}

/// Data of a drag. What the other program asks for is made then, once.
class TableOnDemand : public QMimeData
{
public:
    TableOnDemand(InfoList infos, std::vector<GlyphField> fields)
        : m_infos(std::move(infos)), m_fields(std::move(fields))
    {
    }

    QStringList formats() const override
    {
        QStringList types = QMimeData::formats();
        for (const Form &form : kForms)
            types << form.type;
        return types;
    }
    bool hasFormat(const QString &type) const override { return formats().contains(type); }

protected:
    QVariant retrieveData(const QString &type, QMetaType preferred) const override
    {
        const auto form = std::find_if(kForms.begin(), kForms.end(),
                                       [&type](const Form &each) { return each.type == type; });
        if (form == kForms.end())
            return QMimeData::retrieveData(type, preferred);
        QByteArray &bytes = m_bytes[form->separator == '\t' ? 0 : 1];
        if (bytes.isEmpty())
            bytes = tableBytes(m_infos, choicesFor(m_fields), form->separator);
        return bytes;
    }

private:
    InfoList m_infos;
    std::vector<GlyphField> m_fields;
    mutable std::array<QByteArray, 2> m_bytes;
};

PastedTable tableWith(const QByteArray &utf8, char separator)
{
    DelimitedCells cells = cellsOfText({utf8.constData(), static_cast<std::size_t>(utf8.size())}, separator);
    PastedTable table {std::move(cells.rows), 0, cells.faultyRows};
    for (const QStringList &row : table.rows)
        table.columns = std::max(table.columns, row.size());
    return table;
}

} // namespace

std::unique_ptr<QMimeData> tableData(const InfoList &infos, const std::vector<GlyphField> &fields)
{
    if (infos.empty() || fields.empty())
        return nullptr;
    constexpr qsizetype kUsualRow = 200; // bytes
    const TableChoices choices = choicesFor(fields);
    std::array<QByteArray, 2> bytes;
    QString text;
    doApart(std::ssize(infos) * kUsualRow, [&] {
        bytes = {tableBytes(infos, choices, kTabs.separator), tableBytes(infos, choices, kCommas.separator)};
        text = QString::fromUtf8(bytes[0]);
    });
    auto data = std::make_unique<QMimeData>();
    data->setText(text);
    data->setData(kTabs.type, bytes[0]);
    data->setData(kCommas.type, bytes[1]);
    return data;
}

std::unique_ptr<QMimeData> tableDataOnDemand(InfoList infos, std::vector<GlyphField> fields)
{
    return std::make_unique<TableOnDemand>(std::move(infos), std::move(fields));
}

bool mayHoldTable(const QMimeData &clipboard)
{
    return std::any_of(kForms.begin(), kForms.end(),
                       [&](const Form &form) { return clipboard.hasFormat(form.type); });
}

PastedTable tableOfText(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    if (!text.contains(u'\t')) {
        for (const char separator : {',', ';'}) {
            PastedTable table = tableWith(utf8, separator);
            if (table.columns > 1 && table.seemsToHaveHeadings())
                return table;
        }
    }
    return tableWith(utf8, '\t');
}

PastedTable tableOfClipboard(const QMimeData &clipboard)
{
    if (clipboard.hasFormat(kTabs.type))
        return tableWith(clipboard.data(kTabs.type), kTabs.separator);
    const QString text = clipboard.text();
    if (!text.contains(u'\t') && clipboard.hasFormat(kCommas.type))
        return tableWith(clipboard.data(kCommas.type), kCommas.separator);
    return tableOfText(text);
}

} // namespace runebook
