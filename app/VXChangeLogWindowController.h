#pragma once

#include <QMainWindow>
#include <memory>

namespace Ui {
class VXChangeLogWindowController;
}

namespace runebook {
class PageFetcher;
class PageView;
} // namespace runebook

/// The window with the change log: a page of the update server, or the one that ships with the program.
class VXChangeLogWindowController : public QMainWindow
{
    Q_OBJECT
    Q_PROPERTY(QString changeLogURL READ changeLogURL WRITE setChangeLogURL)
public:
    explicit VXChangeLogWindowController(QWidget *parent = nullptr);
    ~VXChangeLogWindowController() override;

    /// The address of the page for a version and build on \a server ("https://example.org"); that of the
    /// shipped page when \a server is empty.
    static QString urlForServer(const QString &server, const QString &version, const QString &build);

    Q_INVOKABLE QString changeLogURL() const { return m_changeLogURL; }
    /// Loads the page; one that cannot be loaded is shown as an empty one.
    Q_INVOKABLE void setChangeLogURL(const QString &url);
    Q_INVOKABLE runebook::PageView *changeLogWebView() const;
    /// Uses the rules for dark windows exactly when the window is dark.
    Q_INVOKABLE void adaptChangeLogWebViewAppearance();
    Q_INVOKABLE void showWindow();

protected:
    void changeEvent(QEvent *event) override;

private:
    void awakeFromNib();

    std::unique_ptr<Ui::VXChangeLogWindowController> m_ui;
    runebook::PageFetcher *m_fetcher;
    QString m_changeLogURL;
};
