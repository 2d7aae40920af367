#include "editing/window/VXSplitViewWindowController.h"

#include "editing/window/VXSimpleSplitView.h"
#include "editing/window/WindowSettings.h"

using namespace runebook;

VXSplitViewWindowController::VXSplitViewWindowController(QWidget *parent)
    : QMainWindow(parent), m_splitView(new VXSimpleSplitView(Qt::Horizontal, this))
{
    m_splitView->setObjectName(Settings::kSidebarWidth.key());
    m_splitView->setHandleWidth(1);
    setCentralWidget(m_splitView);
}

VXSplitViewWindowController::~VXSplitViewWindowController() = default;

void VXSplitViewWindowController::setPanes(QWidget *sidebarView, QWidget *contentView)
{
    m_sidebarView = sidebarView;
    m_contentView = contentView;
    m_splitView->addWidget(sidebarView);
    m_splitView->addWidget(contentView);
    m_splitView->setCollapsible(0, false);
    m_splitView->setCollapsible(1, false);
    m_splitView->setStretchFactor(0, 0);
    m_splitView->setStretchFactor(1, 1);
    m_splitView->setSizes({Settings::kSidebarWidth.value(), 4 * Settings::kSidebarWidth.fallback()});
    sidebarView->setVisible(!Settings::kSidebarHidden.value());
    connect(m_splitView, &QSplitter::splitterMoved, this, &VXSplitViewWindowController::storeDivider);
}

bool VXSplitViewWindowController::isSidebarShown() const
{
    return m_sidebarView && !m_sidebarView->isHidden();
}

void VXSplitViewWindowController::setSidebarShown(bool isShown)
{
    if (isShown == isSidebarShown())
        return;
    m_sidebarView->setVisible(isShown);
    Settings::kSidebarHidden.set(!isShown);
    Q_EMIT sidebarShownChanged(isShown);
}

QByteArray VXSplitViewWindowController::dividerState() const
{
    return m_splitView->saveState();
}

void VXSplitViewWindowController::restoreDivider(const QByteArray &state)
{
    m_splitView->restoreState(state);
    m_splitView->setHandleWidth(1);
}

void VXSplitViewWindowController::storeDivider()
{
    if (isSidebarShown())
        Settings::kSidebarWidth.set(m_splitView->sizes().value(0));
}
