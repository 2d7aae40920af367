#include "editing/window/VXSplitViewWindowController.h"

#include "editing/window/VXSimpleSplitView.h"
#include "platform/defaults/UserDefaults.h"

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QString kDivider = u"MainSplitView"_s;
const QString kSidebarHidden = u"MainSplitViewSidebarHidden"_s;
constexpr int kSidebarWidth = 320;

} // namespace

VXSplitViewWindowController::VXSplitViewWindowController(QWidget *parent)
    : QMainWindow(parent), m_splitView(new VXSimpleSplitView(Qt::Horizontal, this))
{
    m_splitView->setObjectName(kDivider);
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
    const int stored = UserDefaults::standard().integerForKey(kDivider);
    m_splitView->setSizes({stored > 0 ? stored : kSidebarWidth, 4 * kSidebarWidth});
    sidebarView->setVisible(!UserDefaults::standard().boolForKey(kSidebarHidden));
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
    UserDefaults::standard().setObjectForKey(!isShown, kSidebarHidden);
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
        UserDefaults::standard().setObjectForKey(m_splitView->sizes().value(0), kDivider);
}
