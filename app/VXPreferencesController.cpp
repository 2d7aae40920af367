#include "app/VXPreferencesController.h"

#include "platform/WindowPlacement.h"
#include "ui_VXPreferencesController.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QShortcut>
#include <QTabBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

/// Gives the keyboard to the first control of \a pane that takes it.
void focusFirstControl(QWidget &pane)
{
    for (QWidget *next = pane.nextInFocusChain(); next != &pane; next = next->nextInFocusChain()) {
        const bool takesKeys = next->isEnabled() && (next->focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
        if (takesKeys && pane.isAncestorOf(next) && next->isVisibleTo(&pane)) {
            next->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

} // namespace

VXPreferencesController::VXPreferencesController(QWidget *parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::VXPreferencesController>())
{
    registerDefaults();
    m_ui->setupUi(this);
    setAttribute(Qt::WA_QuitOnClose, false);
    setContextMenuPolicy(Qt::NoContextMenu); // there is nothing in it but hiding the toolbar
    m_ui->tabView->tabBar()->hide();
    fillToolbar();
    addShortcuts();
    connect(m_ui->tabView, &QTabWidget::currentChanged, this,
            [this] { tabViewDidSelectTabViewItem(m_ui->tabView, m_ui->tabView->currentWidget()); });
    m_ui->tabView->setCurrentIndex(0);
    tabViewDidSelectTabViewItem(m_ui->tabView, m_ui->tabView->currentWidget());
    fitScreen();
}

VXPreferencesController::~VXPreferencesController() = default;

void VXPreferencesController::registerDefaults() { }

/// As large as the panes like to be where the screen has room for that; elsewhere they scroll.
void VXPreferencesController::fitScreen()
{
    const QSize around = sizeHint() - m_ui->scroll->sizeHint();
    const QSize least(fontMetrics().averageCharWidth() * 82, fontMetrics().height() * 26);
    resize((around + m_ui->tabView->sizeHint()).expandedTo(least));
    runebook::WindowPlacement::fitIntoScreen(*this);
}

QTabWidget *VXPreferencesController::tabView() const
{
    return m_ui->tabView;
}

void VXPreferencesController::fillToolbar()
{
    auto *group = new QActionGroup(this);
    const int side = fontMetrics().height() * 3 / 2;
    m_ui->toolbar->setIconSize({side, side});
    for (const QString &identifier : toolbarDefaultItemIdentifiers()) {
        const QString label = m_ui->tabView->tabText(m_items.size());
        QAction *item = m_ui->toolbar->addAction(QIcon(":/icons/"_L1 + identifier + ".svg"_L1), label);
        item->setObjectName(identifier);
        item->setCheckable(true);
        item->setActionGroup(group);
        connect(item, &QAction::triggered, this, [this, item] { toolbarSelection(item); });
        m_items.insert(identifier, item);
        if (auto *button = qobject_cast<QToolButton *>(m_ui->toolbar->widgetForAction(item)))
            button->setFocusPolicy(Qt::TabFocus);
    }
}

void VXPreferencesController::addShortcuts()
{
    for (int pane = 0; pane < m_ui->tabView->count(); ++pane) {
        auto *shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + pane)), this);
        connect(shortcut, &QShortcut::activated, this,
                [this, pane] { m_ui->tabView->setCurrentIndex(pane); });
    }
    for (const QKeySequence &keys : {QKeySequence(QKeySequence::Close), QKeySequence(Qt::Key_Escape)})
        connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);
}

QStringList VXPreferencesController::toolbarSelectableItemIdentifiers() const
{
    QStringList identifiers;
    for (int pane = 0; pane < m_ui->tabView->count(); ++pane)
        identifiers << m_ui->tabView->widget(pane)->objectName();
    return identifiers;
}

QStringList VXPreferencesController::toolbarAllowedItemIdentifiers() const
{
    return toolbarSelectableItemIdentifiers();
}

QStringList VXPreferencesController::toolbarDefaultItemIdentifiers() const
{
    return toolbarSelectableItemIdentifiers();
}

QAction *VXPreferencesController::toolbarItemForItemIdentifier(const QString &identifier) const
{
    return m_items.value(identifier);
}

QString VXPreferencesController::selectedItemIdentifier() const
{
    for (const QAction *item : m_items) {
        if (item->isChecked())
            return item->objectName();
    }
    return {};
}

void VXPreferencesController::toolbarSelection(QAction *item)
{
    if (item)
        showPrefpaneWithIdentifier(item->objectName());
}

void VXPreferencesController::tabViewDidSelectTabViewItem(QTabWidget *tabView, QWidget *item)
{
    Q_UNUSED(tabView)
    if (QAction *action = item ? m_items.value(item->objectName()) : nullptr)
        action->setChecked(true);
    m_ui->scroll->ensureVisible(0, 0);
    // Not from the toolbar, where the next button may be wanted.
    if (item && !m_ui->toolbar->isAncestorOf(focusWidget()))
        focusFirstControl(*item);
}

void VXPreferencesController::showPrefpaneWithIdentifier(const QString &identifier)
{
    const qsizetype pane = toolbarSelectableItemIdentifiers().indexOf(identifier);
    if (pane >= 0)
        m_ui->tabView->setCurrentIndex(static_cast<int>(pane));
}

void VXPreferencesController::showWindow()
{
    show();
    raise();
    activateWindow();
}

bool VXPreferencesController::windowShouldClose()
{
    if (QWidget *field = focusWidget())
        field->clearFocus();
    return true;
}

void VXPreferencesController::closeEvent(QCloseEvent *event)
{
    event->setAccepted(windowShouldClose());
}
