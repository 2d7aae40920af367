#pragma once

#include "editing/many/PlanSheet.h"
#include "editing/many/ProductionPlan.h"

class QCheckBox;
class QComboBox;

namespace runebook {

/// Asks by which rule production names are to be filled in.
class ProductionSheet : public PlanSheet
{
    Q_OBJECT
public:
    ProductionSheet(VXDocument &document, InfoList infos, QWidget *parent);

protected:
    std::unique_ptr<RecordPlan> makePlan() override;
    void remember() override;

private:
    InfoList m_infos;
    QComboBox *m_rule;
    QCheckBox *m_onlyEmpty;
};

} // namespace runebook
