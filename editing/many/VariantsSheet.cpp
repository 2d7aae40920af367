#include "editing/many/VariantsSheet.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/many/ManySettings.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

VariantsSheet::VariantsSheet(VXDocument &document, InfoList bases, QWidget *parent)
    : PlanSheet(document, tr("Add Variants"), tr("&Add"), parent), m_bases(std::move(bases))
{
    setObjectName(u"variantsSheet"_s);
    auto *form = new QWidget;
    m_suffixes = new QLineEdit(form);
    m_suffixes->setText(Settings::kVariantSuffixes.value());
    m_suffixes->setPlaceholderText(tr("Such as .sc .ss01"));
    connect(m_suffixes, &QLineEdit::textChanged, this, &VariantsSheet::refreshLater);
    auto *suffixesLabel = new QLabel(tr("&Suffixes:"), form);
    suffixesLabel->setBuddy(m_suffixes);
    m_suffixes->setAccessibleName(tr("Suffixes"));
    m_fields = new QListWidget(form);
    m_fields->setAccessibleName(tr("Fields that variants take over"));
    m_fields->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *fieldsLabel = new QLabel(tr("&Fields that variants take over:"), form);
    fieldsLabel->setBuddy(m_fields);
    const std::vector<GlyphField> chosen = VariantChoices::remembered().fields;
    for (const GlyphField field : VariantChoices::possibleFields()) {
        const bool isChosen = std::find(chosen.begin(), chosen.end(), field) != chosen.end();
        const QString title = field == GlyphField::Production ? tr("%1, with the suffix") : u"%1"_s;
        auto *item = new QListWidgetItem(title.arg(fieldTitle(field)), m_fields);
        item->setData(Qt::UserRole, int(field));
        item->setCheckState(isChosen ? Qt::Checked : Qt::Unchecked);
    }
    m_fields->setCurrentRow(0);
    m_fields->setMinimumHeight(m_fields->sizeHintForRow(0) * 5);
    auto *layout = new QVBoxLayout(form);
    layout->setContentsMargins(0, 0, layout->contentsMargins().right(), 0);
    layout->addWidget(suffixesLabel);
    layout->addWidget(m_suffixes);
    layout->addWidget(fieldsLabel);
    layout->addWidget(m_fields, 1);
    setOptions(form, m_suffixes);
}

VariantChoices VariantsSheet::choices() const
{
    VariantChoices choices {VariantChoices::suffixesOfText(m_suffixes->text()), {}};
    for (int row = 0; row < m_fields->count(); ++row) {
        const QListWidgetItem *item = m_fields->item(row);
        if (item->checkState() == Qt::Checked)
            choices.fields.push_back(GlyphField(item->data(Qt::UserRole).toInt()));
    }
    return choices;
}

std::unique_ptr<RecordPlan> VariantsSheet::makePlan()
{
    return std::make_unique<VariantsPlan>(document(), m_bases, choices());
}

void VariantsSheet::remember()
{
    choices().remember(m_suffixes->text());
}

} // namespace runebook
