#include "editing/compare/CompareModes.h"

#include "editing/compare/CommandRow.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/CompareSheet.h"

#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLocale>
#include <QRadioButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Row = CommandRow<CompareModes, CompareModes::Command>;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {CompareModes::ShowOnlyRight,
         QT_TR_NOOP("Only on the &Right"),
         {Qt::CTRL | Qt::Key_1},
         [](CompareModes &) { CompareModes::choose(CompareMode::OnlyRight); }},
        {CompareModes::ShowOnlyLeft,
         QT_TR_NOOP("Only on the &Left"),
         {Qt::CTRL | Qt::Key_2},
         [](CompareModes &) { CompareModes::choose(CompareMode::OnlyLeft); }},
        {CompareModes::ShowDifferent,
         QT_TR_NOOP("On &Both, Different"),
         {Qt::CTRL | Qt::Key_3},
         [](CompareModes &) { CompareModes::choose(CompareMode::Different); }},
        {CompareModes::OnlyDifferences,
         QT_TR_NOOP("Only &What Differs"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_O},
         [](CompareModes &) { CompareModes::toggleOnlyDifferences(); }},
    };
    return rows;
}

} // namespace

CompareModes::CompareModes(ListedKeys &keys, CompareSheet &sheet, const Widgets &widgets)
    : m_keys(keys), m_sheet(sheet), m_widgets(widgets)
{
    auto *modes = new QActionGroup(this);
    for (const Row &row : commandRows()) {
        QAction *action = m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
        action->setCheckable(true);
        if (row.command != OnlyDifferences)
            modes->addAction(action);
    }
    for (int mode = 0; mode < kCompareModeCount; ++mode) {
        const auto place = static_cast<std::size_t>(mode);
        widgets.counts[place]->setTextFormat(Qt::PlainText);
        connect(widgets.modes[place], &QRadioButton::clicked, this,
                [mode] { choose(static_cast<CompareMode>(mode)); });
    }
    connect(widgets.key, &QComboBox::activated, this,
            [](int key) { Settings::kCompareKey.set(static_cast<CompareKey>(key)); });
    connect(widgets.onlyDifferences, &QCheckBox::clicked, this, &CompareModes::toggleOnlyDifferences);
    followSettings();
    connect(&keys, &ListedKeys::countsChanged, this, &CompareModes::showCounts);
    connect(&keys, &ListedKeys::done, this, &CompareModes::pickModeOfDone);
    showSettings();
    showCounts();
}

void CompareModes::followSettings()
{
    // What somebody has chosen stays, empty or not.
    const auto follow = [this] {
        m_picksMode = false;
        showSettings();
    };
    Settings::kCompareMode.onChange(this, follow);
    Settings::kCompareKey.onChange(this, follow);
    Settings::kComparesWithoutCase.onChange(this, follow);
    Settings::kComparesWithoutSpaces.onChange(this, follow);
    Settings::kComparesWithoutFields.onChange(this, follow);
    Settings::kComparesOnlyDifferences.onChange(this, [this] { showSettings(); });
}

void CompareModes::choose(CompareMode mode)
{
    Settings::kCompareMode.set(mode);
}

void CompareModes::toggleOnlyDifferences()
{
    Settings::kComparesOnlyDifferences.set(!Settings::kComparesOnlyDifferences.value());
}

/// Of documents that the window was opened for: a list that is empty is nothing to begin with.
void CompareModes::pickModeOfDone()
{
    if (!std::exchange(m_picksMode, false) || m_keys.count(Settings::kCompareMode.value()) != 0)
        return;
    for (const CompareMode mode : {CompareMode::OnlyRight, CompareMode::OnlyLeft, CompareMode::Different}) {
        if (m_keys.count(mode) > 0) {
            choose(mode);
            return;
        }
    }
}

void CompareModes::showSettings()
{
    const auto mode = static_cast<std::size_t>(Settings::kCompareMode.value());
    m_widgets.modes[mode]->setChecked(true);
    m_actions[mode]->setChecked(true);
    m_widgets.key->setCurrentIndex(static_cast<int>(Settings::kCompareKey.value()));
    const bool isFolded = Settings::kComparesOnlyDifferences.value();
    m_actions[OnlyDifferences]->setChecked(isFolded);
    m_widgets.onlyDifferences->setChecked(isFolded);
    m_sheet.setOnlyDifferent(isFolded);
}

void CompareModes::showCounts()
{
    for (std::size_t i = 0; i < kCompareModeCount; ++i) {
        const qsizetype count = m_keys.count(static_cast<CompareMode>(i));
        const QString number = count >= 0 ? QLocale().toString(count) : m_keys.isCounting() ? u"…"_s : u"–"_s;
        m_widgets.counts[i]->setText(number);
        const QString title = m_widgets.modes[i]->text();
        m_widgets.modes[i]->setAccessibleName(count >= 0 ? tr("%1: %2").arg(title, number) : title);
    }
}

} // namespace runebook
