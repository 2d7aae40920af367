// What the compare window looks like: its controls, its texts, what is enabled and when.
#include "editing/compare/CompareSettings.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "platform/PlainText.h"
#include "ui_VXCompareDataWindow.h"

#include <QEvent>
#include <QLocale>
#include <QMenu>
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

    for (QLabel *label : {m_ui->onlyRightCount, m_ui->onlyLeftCount, m_ui->differentCount,
                          m_ui->positionLabel, m_ui->staleLabel, m_ui->emptyLabel, m_ui->noteLabel})
        label->setTextFormat(Qt::PlainText);
    m_ui->splitter->setStretchFactor(0, 0);
    m_ui->splitter->setStretchFactor(1, 1);
    m_ui->splitter->setSizes({260, 920});
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
    connect(m_ui->refreshButton, &QPushButton::clicked, this, &VXCompareDataWindow::updateFilters);
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &VXCompareDataWindow::cancelComparison);
}

void VXCompareDataWindow::setUpActions()
{
    struct Command {
        QString title;
        QString icon;
        QList<QKeySequence> keys;
        void (VXCompareDataWindow::*perform)();
    };
    const auto add = [this](const Command &command) {
        auto *action = new QAction(QIcon(command.icon), command.title, this);
        action->setShortcuts(command.keys);
        connect(action, &QAction::triggered, this, command.perform);
        addAction(action);
        const QString keys = command.keys.isEmpty()
            ? QString()
            : u" ("_s + command.keys.first().toString(QKeySequence::NativeText) + u')';
        action->setToolTip(escapedToolTip(command.title + keys));
        return action;
    };
    using Window = VXCompareDataWindow;
    m_previousAction = add({tr("Previous Difference"),
                            u":/icons/previous.svg"_s,
                            {QKeySequence(Qt::SHIFT | Qt::Key_F8), QKeySequence(Qt::ALT | Qt::Key_Up)},
                            &Window::selectPreviousDifference});
    m_nextAction = add({tr("Next Difference"),
                        u":/icons/next.svg"_s,
                        {QKeySequence(Qt::Key_F8), QKeySequence(Qt::ALT | Qt::Key_Down)},
                        &Window::selectNextDifference});
    m_copyActions = {
        add({tr("Copy to the Left"),
             u":/icons/copy-left.svg"_s,
             {QKeySequence(Qt::ALT | Qt::Key_Left)},
             &Window::copyLeft}),
        add({tr("Copy to the Right"),
             u":/icons/copy-right.svg"_s,
             {QKeySequence(Qt::ALT | Qt::Key_Right)},
             &Window::copyRight}),
        add({tr("Copy All Shown to the Left"),
             {},
             {QKeySequence(Qt::ALT | Qt::SHIFT | Qt::Key_Left)},
             &Window::copyAllLeft}),
        add({tr("Copy All Shown to the Right"),
             {},
             {QKeySequence(Qt::ALT | Qt::SHIFT | Qt::Key_Right)},
             &Window::copyAllRight}),
    };
    add({tr("Compare Again"), {}, {QKeySequence(QKeySequence::Refresh)}, &Window::updateFilters});
    auto *close = new QAction(tr("Close"), this);
    close->setShortcut(QKeySequence::Close);
    connect(close, &QAction::triggered, this, &QWidget::close);
    addAction(close);

    m_ui->previousButton->setDefaultAction(m_previousAction);
    m_ui->nextButton->setDefaultAction(m_nextAction);
    setUpCopyButton(m_copyActions.at(0), m_copyActions.at(2), m_ui->copyLeftButton);
    setUpCopyButton(m_copyActions.at(1), m_copyActions.at(3), m_ui->copyRightButton);
}

/// A button that copies the first record, with a menu to copy all.
void VXCompareDataWindow::setUpCopyButton(QAction *first, QAction *all, QToolButton *button)
{
    first->setToolTip(
        first->toolTip()
        + escapedToolTip(tr(". Appends a copy of the first record shown, without its description.")));
    auto *menu = new QMenu(button);
    menu->addAction(first);
    menu->addAction(all);
    button->setDefaultAction(first);
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setAccessibleName(first->text());
}

// What is shown

void VXCompareDataWindow::showDefaults()
{
    const auto choosers = choosersOf(*m_ui);
    choosers[static_cast<std::size_t>(mode())].button->setChecked(true);
    m_ui->keyChooser->setCurrentIndex(static_cast<int>(key()));
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
    const qsizetype count = m_filteredKeys.rowCount();
    const qsizetype selected = m_filteredKeys.selectedCount();
    const bool isWaiting = m_comparison && !m_isListed;
    m_ui->progressRow->setVisible(isWaiting);
    if (isWaiting)
        m_ui->progressBar->setValue(
            static_cast<int>(m_comparison->progress() * m_ui->progressBar->maximum()));
    m_ui->staleBar->setVisible(m_isStale);

    if (selected == 1) {
        const qsizetype row = m_filteredKeys.selectionIndexes().front();
        m_ui->positionLabel->setText(tr("%1 of %2").arg(numberText(row + 1), numberText(count)));
    } else if (selected > 1) {
        const QString text = tr("%1 of %2 selected").arg(numberText(selected), numberText(count));
        m_ui->positionLabel->setText(m_content ? text + u'…' : text);
    } else {
        m_ui->positionLabel->clear();
    }

    const bool showsRecords = !m_leftInfoList.infos().empty() || !m_rightInfoList.infos().empty();
    m_ui->pages->setCurrentWidget(showsRecords ? static_cast<QWidget *>(m_ui->detailArea) : m_ui->emptyPage);
    if (!showsRecords)
        m_ui->emptyLabel->setText(emptyText());
    const QString noteText = showsRecords ? note() : QString();
    m_ui->noteLabel->setText(noteText);
    m_ui->noteLabel->setVisible(!noteText.isEmpty());
    showActions();
}

void VXCompareDataWindow::showActions()
{
    const qsizetype count = m_filteredKeys.rowCount();
    m_nextAction->setEnabled(count > 0);
    m_previousAction->setEnabled(count > 0);
    const auto left = m_leftInfoList.infos().size();
    const auto right = m_rightInfoList.infos().size();
    m_copyActions.at(0)->setEnabled(right > 0 && document(CompareSheet::Left));
    m_copyActions.at(1)->setEnabled(left > 0 && document(CompareSheet::Right));
    m_copyActions.at(2)->setEnabled(right > 1 && document(CompareSheet::Left));
    m_copyActions.at(3)->setEnabled(left > 1 && document(CompareSheet::Right));
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
    if (!differingFields(*left.front(), *right.front()).empty())
        return {};
    if (countAsEqual(left.front(), right.front()))
        return tr("These records are equal now.");
    return tr(
        "These records agree in every field. They are listed because records without a description always "
        "count as different.");
}

void VXCompareDataWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    // The captions carry colours of their own, which have to follow the appearance.
    if (event->type() == QEvent::PaletteChange && m_hasObservers)
        m_contentTimer.start(0);
}
