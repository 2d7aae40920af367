#include "editing/many/CharactersSheet.h"

#include "editing/many/CharactersPlan.h"
#include "model/StringHelpers.h"
#include "model/UnicodeData.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

CharactersSheet::CharactersSheet(VXDocument &document, InfoPtr behind, QWidget *parent)
    : PlanSheet(document, tr("Add Characters"), tr("&Add"), parent), m_behind(std::move(behind))
{
    setObjectName(u"charactersSheet"_s);
    auto *form = new QWidget;
    m_characters = new QLineEdit(form);
    m_characters->setMaxLength(std::numeric_limits<int>::max());
    m_characters->setPlaceholderText(tr("абв or U+0430-044F"));
    m_characters->setAccessibleName(tr("Characters or ranges"));
    connect(m_characters, &QLineEdit::textChanged, this, &CharactersSheet::refreshLater);
    auto *label = new QLabel(tr("&Characters or ranges:"), form);
    label->setBuddy(m_characters);
    m_block = new QComboBox(form);
    m_block->setAccessibleName(tr("Block"));
    m_block->setPlaceholderText(tr("Choose a block…"));
    m_block->addItems(UnicodeData::shared().blocks());
    m_block->setCurrentIndex(-1);
    m_block->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    constexpr int kSeenOfBlock = 24; // characters
    m_block->setMinimumContentsLength(kSeenOfBlock);
    connect(m_block, &QComboBox::currentIndexChanged, this, &CharactersSheet::takeBlock);
    auto *blockLabel = new QLabel(tr("&Block:"), form);
    blockLabel->setBuddy(m_block);
    auto *layout = new QVBoxLayout(form);
    layout->setContentsMargins(0, 0, layout->contentsMargins().right(), 0);
    layout->addWidget(label);
    layout->addWidget(m_characters);
    layout->addWidget(blockLabel);
    layout->addWidget(m_block);
    layout->addStretch();
    setOptions(form, m_characters);
}

void CharactersSheet::takeBlock()
{
    if (const auto range = UnicodeData::shared().rangeOfBlock(m_block->currentText()))
        m_characters->setText(
            u"U+%1-%2"_s.arg(hexStringFromInt(range->first), hexStringFromInt(range->second)));
}

std::unique_ptr<RecordPlan> CharactersSheet::makePlan()
{
    return std::make_unique<CharactersPlan>(document(), TypedCharacters::ofText(m_characters->text()),
                                            m_behind);
}

} // namespace runebook
