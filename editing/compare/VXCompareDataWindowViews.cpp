// What the compare window looks like: its controls, its texts, what is enabled and when.
#include "editing/compare/CompareMenus.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/GlyphColumns.h"
#include "platform/MainMenu.h"
#include "platform/MenuText.h"
#include "ui_VXCompareDataWindow.h"

#include <QEvent>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QToolBar>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

struct Chooser {
    QRadioButton *button;
    QLabel *count;
};

/// In the order of the modes.
std::array<Chooser, kCompareModeCount> choosersOf(const Ui::VXCompareDataWindow &ui)
{
    return {{{ui.onlyRightButton, ui.onlyRightCount},
             {ui.onlyLeftButton, ui.onlyLeftCount},
             {ui.differentButton, ui.differentCount}}};
}

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

} // namespace

// Set-up

void VXCompareDataWindow::setUpLists()
{
    // An empty tool bar joins the title bar where the desktop draws them as one.
    QToolBar *bar = addToolBar(tr("Tool Bar"));
    bar->setMovable(false);
    bar->setMaximumHeight(1);
    bar->toggleViewAction()->setVisible(false);
    setUnifiedTitleAndToolBarOnMac(true);
    setContextMenuPolicy(Qt::NoContextMenu);

    for (QLabel *label :
         {m_ui->onlyRightCount, m_ui->onlyLeftCount, m_ui->differentCount, m_ui->positionLabel,
          m_ui->staleLabel, m_ui->emptyLabel, m_ui->noteLabel, m_ui->overlookedLabel})
        label->setTextFormat(Qt::PlainText);
    m_ui->splitter->setStretchFactor(0, 0);
    m_ui->splitter->setStretchFactor(1, 1);
    m_ui->splitter->setSizes({260, 980});
    m_ui->leftDocuments->setModel(&m_leftDocList);
    m_ui->rightDocuments->setModel(&m_rightDocList);
    m_ui->keyView->setModel(&m_filteredKeys);
    m_ui->keyView->setSelectionModel(m_filteredKeys.selectionModel());

    connect(m_ui->leftDocuments, &QComboBox::activated, &m_leftDocList, &DocumentChoice::setSelectionIndex);
    connect(m_ui->rightDocuments, &QComboBox::activated, &m_rightDocList, &DocumentChoice::setSelectionIndex);
    const auto choosers = choosersOf(*m_ui);
    for (int mode = 0; mode < kCompareModeCount; ++mode) {
        connect(choosers[static_cast<std::size_t>(mode)].button, &QRadioButton::clicked, this,
                [mode] { Settings::kCompareMode.set(static_cast<CompareMode>(mode)); });
    }
    connect(m_ui->keyChooser, &QComboBox::activated, this,
            [](int key) { Settings::kCompareKey.set(static_cast<CompareKey>(key)); });
    connect(m_ui->fieldFilter, &QComboBox::activated, this, [this] { showKeys(keysToList()); });
    connect(m_ui->onlyDifferencesBox, &QCheckBox::clicked, this, &VXCompareDataWindow::toggleOnlyDifferences);
    connect(m_ui->refreshButton, &QPushButton::clicked, this, &VXCompareDataWindow::updateFilters);
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &VXCompareDataWindow::cancelComparison);
}

void VXCompareDataWindow::setUpActions()
{
    m_menus = new CompareMenus(*this);
    m_ui->previousButton->setDefaultAction(m_menus->action(CompareMenus::PreviousDifference));
    m_ui->nextButton->setDefaultAction(m_menus->action(CompareMenus::NextDifference));
    setUpTakeButton(CompareSheet::Left);
    setUpTakeButton(CompareSheet::Right);
    connect(m_sheet, &CompareSheet::takeRequested, this,
            [this](CompareSheet::Side target, GlyphField field) { takeField(target, field); });
    Settings::kComparesOnlyDifferences.onChange(this, [this] { showDefaults(); });
}

/// A button that takes the shown records across, with a menu of what else can be done to that side.
void VXCompareDataWindow::setUpTakeButton(CompareSheet::Side side)
{
    const bool isLeft = side == CompareSheet::Left;
    QToolButton *button = isLeft ? m_ui->takeLeftButton : m_ui->takeRightButton;
    auto *menu = new QMenu(button);
    for (const CompareMenus::Command command :
         {isLeft ? CompareMenus::TakeLeft : CompareMenus::TakeRight,
          isLeft ? CompareMenus::TakeAllLeft : CompareMenus::TakeAllRight,
          isLeft ? CompareMenus::CopyLeft : CompareMenus::CopyRight})
        menu->addAction(m_menus->action(command));
    button->setDefaultAction(m_menus->action(isLeft ? CompareMenus::TakeLeft : CompareMenus::TakeRight));
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setAccessibleName(isLeft ? tr("Take to the Left") : tr("Take to the Right"));
}

// What is shown

void VXCompareDataWindow::showDefaults()
{
    const auto choosers = choosersOf(*m_ui);
    choosers[static_cast<std::size_t>(mode())].button->setChecked(true);
    m_ui->keyChooser->setCurrentIndex(static_cast<int>(key()));
    constexpr CompareMenus::Command kModes[] {CompareMenus::ShowOnlyRight, CompareMenus::ShowOnlyLeft,
                                              CompareMenus::ShowDifferent};
    m_menus->action(kModes[static_cast<int>(mode())])->setChecked(true);
    const bool isFolded = Settings::kComparesOnlyDifferences.value();
    m_menus->action(CompareMenus::OnlyDifferences)->setChecked(isFolded);
    m_ui->onlyDifferencesBox->setChecked(isFolded);
    m_sheet->setOnlyDifferent(isFolded);
    m_menus->action(CompareMenus::IgnoreCase)->setChecked(Settings::kComparesWithoutCase.value());
    m_menus->action(CompareMenus::IgnoreSpaces)->setChecked(Settings::kComparesWithoutSpaces.value());
    m_menus->action(CompareMenus::JsonReports)->setChecked(Settings::kReportsComparisonsAsJson.value());
    m_ui->overlookedLabel->setText(overlooked());
    m_ui->overlookedLabel->setVisible(!m_ui->overlookedLabel->text().isEmpty());
}

void VXCompareDataWindow::showCounts()
{
    const auto choosers = choosersOf(*m_ui);
    for (std::size_t i = 0; i < choosers.size(); ++i) {
        const bool isKnown = m_counts[i] >= 0;
        choosers[i].count->setText(isKnown ? numberText(m_counts[i]) : m_comparison ? u"…"_s : u"–"_s);
        const QString title = choosers[i].button->text();
        choosers[i].button->setAccessibleName(isKnown ? tr("%1: %2").arg(title, numberText(m_counts[i]))
                                                      : title);
    }
}

void VXCompareDataWindow::showState()
{
    const bool isWaiting = m_comparison && !m_isListed;
    m_ui->progressRow->setVisible(isWaiting);
    if (isWaiting)
        m_ui->progressBar->setValue(
            static_cast<int>(m_comparison->progress() * m_ui->progressBar->maximum()));
    m_ui->staleBar->setVisible(m_isStale);

    m_ui->positionLabel->setText(positionText());

    const bool showsRecords = !m_leftInfoList.infos().empty() || !m_rightInfoList.infos().empty();
    m_ui->pages->setCurrentWidget(showsRecords ? static_cast<QWidget *>(m_ui->detailArea) : m_ui->emptyPage);
    if (!showsRecords)
        m_ui->emptyLabel->setText(emptyText());
    const QString noteText = showsRecords ? note() : QString();
    m_ui->noteLabel->setText(noteText);
    m_ui->noteLabel->setVisible(!noteText.isEmpty());
    showActions();
}

QString VXCompareDataWindow::positionText() const
{
    const qsizetype count = m_filteredKeys.rowCount();
    const qsizetype selected = m_filteredKeys.selectedCount();
    if (selected == 0)
        return {};
    if (selected > 1) {
        QString text = tr("%1 of %2 selected").arg(numberText(selected), numberText(count));
        return m_content ? text + u'…' : text;
    }
    const qsizetype row = m_filteredKeys.selectionIndexes().front();
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

void VXCompareDataWindow::showActions()
{
    if (!m_menus)
        return;
    const auto enable = [this](CompareMenus::Command command, bool isEnabled) {
        m_menus->action(command)->setEnabled(isEnabled);
    };
    enable(CompareMenus::NextDifference, m_filteredKeys.rowCount() > 0);
    enable(CompareMenus::PreviousDifference, m_filteredKeys.rowCount() > 0);
    const auto *field = qobject_cast<QPlainTextEdit *>(focusWidget());
    enable(CompareMenus::CopyText, field && field->textCursor().hasSelection());
    VXDocument *left = document(CompareSheet::Left);
    VXDocument *right = document(CompareSheet::Right);
    const auto isUnsaved = [](const VXDocument *document) {
        return document && document->isDocumentEdited() && !isOnlyToCompare(document);
    };
    const bool isCompared = left && right && left != right;
    const bool hasRecords = !m_leftInfoList.infos().empty() || !m_rightInfoList.infos().empty();
    for (const CompareMenus::Command command : {CompareMenus::CopyReport, CompareMenus::SaveReport})
        enable(command, isCompared);
    for (const CompareMenus::Command command :
         {CompareMenus::CopyReportOfSelected, CompareMenus::SaveReportOfSelected})
        enable(command, isCompared && hasRecords);
    enable(CompareMenus::Save, isUnsaved(left) || isUnsaved(right));
    m_menus->showHistory(m_history.toUndo(left, right), m_history.toRedo(left, right));
    showTakeActions();
}

void VXCompareDataWindow::showTakeActions()
{
    const bool writesLeft = isWritable(CompareSheet::Left);
    const bool writesRight = isWritable(CompareSheet::Right);
    m_sheet->setWritable(writesLeft, writesRight);
    const bool isMode[] {mode() != CompareMode::OnlyLeft,
                         mode() != CompareMode::OnlyRight}; // into left, right
    const bool hasLeft = !m_leftInfoList.infos().empty();
    const bool hasRight = !m_rightInfoList.infos().empty();
    const auto show = [this](CompareMenus::Command command, bool isEnabled, const QString &text) {
        m_menus->action(command)->setEnabled(isEnabled);
        m_menus->action(command)->setText(text);
    };
    const bool hasList = m_filteredKeys.rowCount() > 0;
    const auto field = m_sheet->fieldToTake();
    const QString title = field ? menuText(fieldTitle(*field)) : tr("Field");
    show(CompareMenus::TakeFieldLeft, field && writesLeft, tr("Take %1 to the Left").arg(title));
    show(CompareMenus::TakeFieldRight, field && writesRight, tr("Take %1 to the Right").arg(title));
    m_menus->action(CompareMenus::TakeLeft)->setEnabled(hasRight && writesLeft);
    m_menus->action(CompareMenus::TakeRight)->setEnabled(hasLeft && writesRight);
    m_menus->action(CompareMenus::TakeAllLeft)->setEnabled(hasList && writesLeft && isMode[0]);
    m_menus->action(CompareMenus::TakeAllRight)->setEnabled(hasList && writesRight && isMode[1]);
    m_menus->action(CompareMenus::CopyLeft)->setEnabled(hasRight && writesLeft);
    m_menus->action(CompareMenus::CopyRight)->setEnabled(hasLeft && writesRight);
    const bool removesLeft = hasLeft && !hasRight;
    const bool removesRight = hasRight && !hasLeft;
    show(CompareMenus::Remove, removesLeft ? writesLeft : removesRight && writesRight,
         removesLeft        ? tr("Re&move from the Left")
             : removesRight ? tr("Re&move from the Right")
                            : tr("Re&move"));
}

/// What stands in place of the records when there are none: why, and what to do.
QString VXCompareDataWindow::emptyText() const
{
    const VXDocument *left = document(CompareSheet::Left);
    const VXDocument *right = document(CompareSheet::Right);
    if (m_comparison && !m_isListed)
        return tr("Comparing…");
    if (m_isCancelled)
        return tr("The comparison was cancelled.\n\nPress F5 to compare again.");
    if (m_leftDocList.rowCount() == 0)
        return tr("No document is open.\n\nOpen two documents, then show this window again to compare them.");
    if (m_leftDocList.rowCount() == 1)
        return tr(
            "Only one document is open.\n\nOpen another one, then show this window again to compare them.");
    if (!left || !right)
        return tr("A document was closed.\n\nChoose another one above.");
    if (left == right)
        return tr("Both sides show the same document.\n\nChoose another one on one side.");
    if (m_filteredKeys.rowCount() > 0)
        return tr("Choose a glyph in the list to see its records.");
    QString text;
    switch (mode()) {
    case CompareMode::OnlyRight:
        text = tr("Every glyph on the right is also on the left.");
        break;
    case CompareMode::OnlyLeft:
        text = tr("Every glyph on the left is also on the right.");
        break;
    case CompareMode::Different:
        text = tr("No glyph that both documents have differs.");
        break;
    }
    const bool hasOthers = std::any_of(m_counts.begin(), m_counts.end(), [](qsizetype n) { return n > 0; });
    return hasOthers ? text + u"\n\n"_s + tr("There are differences of another kind: choose above the list.")
                     : text;
}

/// A word on records that are listed although no field tells why.
QString VXCompareDataWindow::note() const
{
    const InfoList &left = m_leftInfoList.infos();
    const InfoList &right = m_rightInfoList.infos();
    if (mode() != CompareMode::Different || left.size() != 1 || right.size() != 1)
        return {};
    if (differingBits(*left.front(), *right.front(), options()) != 0)
        return {};
    if (countAsEqual(left.front(), right.front(), options()))
        return tr("These records are equal now.");
    return tr(
        "These records agree in every field. They are listed because records without a description always "
        "count as different.");
}

bool VXCompareDataWindow::event(QEvent *event)
{
    // What has the focus decides what the commands on a field mean.
    if (m_menus
        && (event->type() == QEvent::ShortcutOverride || event->type() == MainMenu::validationEvent()))
        showActions();
    return QMainWindow::event(event);
}

void VXCompareDataWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    // The captions carry colours of their own, which have to follow the appearance.
    if (event->type() == QEvent::PaletteChange && m_hasObservers)
        m_contentTimer.start(0);
}

// Commands of the view

void VXCompareDataWindow::showOnlyRight()
{
    Settings::kCompareMode.set(CompareMode::OnlyRight);
}

void VXCompareDataWindow::showOnlyLeft()
{
    Settings::kCompareMode.set(CompareMode::OnlyLeft);
}

void VXCompareDataWindow::showDifferent()
{
    Settings::kCompareMode.set(CompareMode::Different);
}

void VXCompareDataWindow::toggleOnlyDifferences()
{
    Settings::kComparesOnlyDifferences.set(!Settings::kComparesOnlyDifferences.value());
}

void VXCompareDataWindow::copyText()
{
    if (auto *field = qobject_cast<QPlainTextEdit *>(focusWidget()))
        field->copy();
}
