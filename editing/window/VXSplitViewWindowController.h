#pragma once

#include <QMainWindow>

class VXSimpleSplitView;
Q_MOC_INCLUDE("editing/window/VXSimpleSplitView.h")

/// A window of two panes, the first of which is a sidebar that can be folded away. Where the divider stands
/// is remembered.
class VXSplitViewWindowController : public QMainWindow
{
    Q_OBJECT
public:
    explicit VXSplitViewWindowController(QWidget *parent = nullptr);
    ~VXSplitViewWindowController() override;

    Q_INVOKABLE QWidget *sidebarView() const { return m_sidebarView; }
    Q_INVOKABLE QWidget *contentView() const { return m_contentView; }
    Q_INVOKABLE VXSimpleSplitView *splitView() const { return m_splitView; }
    Q_INVOKABLE bool isSidebarShown() const;
    Q_INVOKABLE void setSidebarShown(bool isShown);
    /// Where the divider stands, to be given to restoreDivider() in another run.
    QByteArray dividerState() const;
    void restoreDivider(const QByteArray &state);

Q_SIGNALS:
    void sidebarShownChanged(bool isShown);

protected:
    /// Takes the two panes into the window. To be called once.
    void setPanes(QWidget *sidebarView, QWidget *contentView);

private:
    void storeDivider();

    VXSimpleSplitView *m_splitView;
    QWidget *m_sidebarView = nullptr;
    QWidget *m_contentView = nullptr;
};
