#include "document/TableForm.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TableForm)
};

/// Calls \a visit with each loss until it answers false.
template <typename Visit> void forEachLoss(const VXGlyphInfo &info, const TableForm &form, Visit visit)
{
    for (const GlyphField field : tableFields()) {
        if (!form.columnOf(field)) {
            if (!form.isChoice && hasTableValue(info, field) && !visit(TableLoss {field, false, {}}))
                return;
        } else if (const auto change = changeInTable(info, field)) {
            if (!visit(TableLoss {field, true, change->after}))
                return;
        }
    }
}

} // namespace

TableForm TableForm::of(std::span<const GlyphField> fields, const DelimitedFormat &format)
{
    TableForm form;
    form.format = format;
    for (const GlyphField field : fields)
        form.columns.push_back({headingOfField(field), field, -1});
    return form;
}

TableForm TableForm::inFormat(const DelimitedFormat &other) const
{
    TableForm form = *this;
    form.keepsLines = keepsLines && other == format;
    form.format = other;
    return form;
}

TableForm TableForm::withColumns(std::vector<TableColumn> chosen) const
{
    TableForm form = *this;
    form.keepsLines = keepsLines && chosen == columns;
    form.columns = std::move(chosen);
    form.isChoice = true;
    return form;
}

void TableForm::adoptRow(const InfoPtr &info, const VXGlyphInfo &read)
{
    if (hasRowOf(read))
        adopted[info.get()] = {info, read.lineOffset(), read.lineOffset() + read.lineLength()};
}

bool TableForm::hasText(const Aside &aside) const
{
    return std::any_of(source.begin() + aside.begin, source.begin() + aside.end,
                       [this](char c) { return c != '\r' && c != '\n' && c != '"' && c != sourceSeparator; });
}

const TableColumn *TableForm::columnOf(GlyphField field) const
{
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [field](const TableColumn &column) { return column.field == field; });
    return found == columns.end() ? nullptr : &*found;
}

QString TableLoss::sentence(const VXGlyphInfo &info) const
{
    constexpr qsizetype kLongest = 80;
    const QString title = titleOfField(field);
    if (!hasColumn)
        return Texts::tr("%1 would be lost: the table has no column for it.").arg(title);
    if (field == GlyphField::Name && info.name().isEmpty())
        return Texts::tr("The record has no name; in a table it is called “%1”.").arg(after);
    return after.isEmpty() ? Texts::tr("%1 would be lost.").arg(title)
                           : Texts::tr("%1 would become “%2”.").arg(title, after.left(kLongest));
}

std::vector<TableLoss> tableLosses(const VXGlyphInfo &info, const TableForm &form)
{
    std::vector<TableLoss> losses;
    forEachLoss(info, form, [&](TableLoss loss) {
        losses.push_back(std::move(loss));
        return true;
    });
    return losses;
}

bool hasTableLosses(const VXGlyphInfo &info, const TableForm &form)
{
    bool isFound = false;
    forEachLoss(info, form, [&](const TableLoss &) {
        isFound = true;
        return false;
    });
    return isFound;
}

} // namespace runebook
