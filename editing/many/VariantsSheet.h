#pragma once

#include "editing/many/PlanSheet.h"
#include "editing/many/VariantsPlan.h"

class QLineEdit;
class QListWidget;

namespace runebook {

/// Asks which variants of some records are to be added, and what they take over.
class VariantsSheet : public PlanSheet
{
    Q_OBJECT
public:
    VariantsSheet(VXDocument &document, InfoList bases, QWidget *parent);

protected:
    std::unique_ptr<RecordPlan> makePlan() override;
    void remember() override;

private:
    VariantChoices choices() const;

    InfoList m_bases;
    QLineEdit *m_suffixes;
    QListWidget *m_fields;
};

} // namespace runebook
