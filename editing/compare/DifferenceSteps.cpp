#include "editing/compare/DifferenceSteps.h"

#include "editing/compare/CommandRow.h"

#include <QLabel>
#include <QListView>
#include <QLocale>
#include <QToolButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Row = CommandRow<DifferenceSteps, DifferenceSteps::Command>;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {DifferenceSteps::Next,
         QT_TR_NOOP("&Next Difference"),
         {QKeySequence(Qt::Key_F8), QKeySequence(Qt::ALT | Qt::Key_Down)},
         [](DifferenceSteps &steps) { steps.go(1); },
         ":/icons/next.svg"},
        {DifferenceSteps::Previous,
         QT_TR_NOOP("&Previous Difference"),
         {Qt::SHIFT | Qt::Key_F8, Qt::ALT | Qt::Key_Up},
         [](DifferenceSteps &steps) { steps.go(-1); },
         ":/icons/previous.svg"},
        {DifferenceSteps::SelectAll, QT_TR_NOOP("Select &All Glyphs"), standardKeys(QKeySequence::SelectAll),
         &DifferenceSteps::selectAll},
    };
    return rows;
}

QString numberText(qsizetype number)
{
    return QLocale().toString(number);
}

} // namespace

DifferenceSteps::DifferenceSteps(ListedKeys &keys, const ShownRecords &records, const Widgets &widgets)
    : m_keys(keys), m_records(records), m_widgets(widgets)
{
    for (const Row &row : commandRows())
        m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
    widgets.next->setDefaultAction(m_actions[Next]);
    widgets.previous->setDefaultAction(m_actions[Previous]);
    widgets.position->setTextFormat(Qt::PlainText);
    widgets.list->setModel(&keys.list());
    widgets.list->setSelectionModel(keys.list().selectionModel());
    connect(&keys.list(), &KeyList::selectionChanged, this, [this] { m_wrap = Wrap::None; });
    connect(&keys, &ListedKeys::wentOn, this, &DifferenceSteps::goOn);
}

void DifferenceSteps::go(int step)
{
    m_keys.finish();
    KeyList &list = m_keys.list();
    const IndexSet rows = list.selectionIndexes();
    const qsizetype count = list.rowCount();
    if (count == 0)
        return;
    qsizetype row = step > 0 ? 0 : count - 1;
    if (!rows.empty())
        row = step > 0 ? rows.back() + 1 : rows.front() - 1;
    const Wrap wrap = row < 0 ? Wrap::ToEnd : row >= count ? Wrap::ToTop : Wrap::None;
    row = (row + count) % count;
    list.setSelectionIndexes({row});
    m_widgets.list->scrollTo(list.index(static_cast<int>(row)));
    m_wrap = wrap;
    show();
}

void DifferenceSteps::goOn(bool isFromTop)
{
    const KeyList &list = m_keys.list();
    m_widgets.list->scrollTo(list.index(static_cast<int>(list.selectionIndexes().front())));
    if (isFromTop)
        m_wrap = Wrap::ToTop;
    show();
}

void DifferenceSteps::selectAll()
{
    m_widgets.list->selectAll();
}

void DifferenceSteps::show()
{
    m_widgets.position->setText(positionText());
    for (const Command command : {Next, Previous})
        m_actions[command]->setEnabled(m_keys.list().rowCount() > 0);
}

QString DifferenceSteps::positionText() const
{
    const KeyList &list = m_keys.list();
    const qsizetype count = list.rowCount();
    const qsizetype selected = list.selectedCount();
    if (selected == 0)
        return {};
    if (selected > 1) {
        const QString text = tr("%1 of %2 selected").arg(numberText(selected), numberText(count));
        return m_records.isFinding() ? text + u'…' : text;
    }
    const qsizetype row = list.selectionIndexes().front();
    QString text = tr("%1 of %2").arg(numberText(row + 1), numberText(count));
    switch (m_wrap) {
    case Wrap::ToTop:
        return tr("%1, from the top again").arg(text);
    case Wrap::ToEnd:
        return tr("%1, from the end again").arg(text);
    case Wrap::None:
        break;
    }
    return text;
}

} // namespace runebook
