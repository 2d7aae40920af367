#include "editing/compare/FieldFilter.h"

#include "editing/compare/ListedKeys.h"

#include <QComboBox>
#include <QLocale>

namespace runebook {

using namespace Qt::StringLiterals;

FieldFilter::FieldFilter(ListedKeys &keys, QComboBox &chooser, QWidget &row)
    : m_keys(keys), m_chooser(chooser), m_row(row)
{
    connect(&chooser, &QComboBox::activated, this, &FieldFilter::listChosen);
    connect(&keys, &ListedKeys::fieldCountsChanged, this, &FieldFilter::show);
    show();
}

void FieldFilter::show()
{
    m_chooser.clear();
    m_chooser.addItem(tr("Any Field"), QString());
    for (const ListedKeys::FieldCount &each : m_keys.fieldCounts()) {
        m_chooser.addItem(u"%1  %2"_s.arg(titleOf(*each.field), QLocale().toString(each.records)),
                          keyOfField(each.field->field));
        if (each.field->field == m_keys.field())
            m_chooser.setCurrentIndex(m_chooser.count() - 1);
    }
    m_row.setVisible(m_chooser.count() > 1);
}

void FieldFilter::choose(const QString &key)
{
    m_chooser.setCurrentIndex(std::max(0, m_chooser.findData(key)));
    listChosen();
}

void FieldFilter::listChosen()
{
    m_keys.listField(fieldForKey(m_chooser.currentData().toString()));
}

} // namespace runebook
