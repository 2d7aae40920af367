#include "editing/many/ProductionSheet.h"

#include "editing/many/ManySettings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

ProductionSheet::ProductionSheet(VXDocument &document, InfoList infos, QWidget *parent)
    : PlanSheet(document, tr("Fill Production Names"), tr("&Fill"), parent), m_infos(std::move(infos))
{
    setObjectName(u"productionSheet"_s);
    auto *form = new QWidget;
    m_rule = new QComboBox(form);
    m_rule->addItem(tr("Glyph list, else code point"));
    m_rule->addItem(tr("Code point: uni0431, u1F600"));
    m_rule->addItem(tr("Parts of the name: a_b.sc"));
    m_rule->setCurrentIndex(Settings::kProductionRule.value());
    m_rule->setAccessibleName(tr("Rule"));
    auto *label = new QLabel(tr("&Rule:"), form);
    label->setBuddy(m_rule);
    m_onlyEmpty = new QCheckBox(tr("Only where there is &none yet"), form);
    m_onlyEmpty->setChecked(Settings::kProductionOnlyEmpty.value());
    connect(m_rule, &QComboBox::currentIndexChanged, this, &ProductionSheet::refreshLater);
    connect(m_onlyEmpty, &QCheckBox::toggled, this, &ProductionSheet::refreshLater);
    auto *layout = new QVBoxLayout(form);
    layout->setContentsMargins(0, 0, layout->contentsMargins().right(), 0);
    layout->addWidget(label);
    layout->addWidget(m_rule);
    layout->addWidget(m_onlyEmpty);
    layout->addStretch();
    setOptions(form, m_rule);
}

std::unique_ptr<RecordPlan> ProductionSheet::makePlan()
{
    return std::make_unique<ProductionPlan>(document(), m_infos, ProductionRule(m_rule->currentIndex()),
                                            m_onlyEmpty->isChecked() ? ProductionPlan::Which::OnlyEmpty
                                                                     : ProductionPlan::Which::All);
}

void ProductionSheet::remember()
{
    Settings::kProductionRule.set(m_rule->currentIndex());
    Settings::kProductionOnlyEmpty.set(m_onlyEmpty->isChecked());
}

} // namespace runebook
