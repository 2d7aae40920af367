#pragma once

#include "editing/many/PlanSheet.h"

class QComboBox;
class QLineEdit;

namespace runebook {

/// Asks for which characters records are to be added: pasted ones, ranges, or a block.
class CharactersSheet : public PlanSheet
{
    Q_OBJECT
public:
    /// The records come behind \a behind, or at the end when that is null.
    CharactersSheet(VXDocument &document, InfoPtr behind, QWidget *parent);

protected:
    std::unique_ptr<RecordPlan> makePlan() override;
    void remember() override { }

private:
    void takeBlock();

    InfoPtr m_behind;
    QLineEdit *m_characters;
    QComboBox *m_block;
};

} // namespace runebook
