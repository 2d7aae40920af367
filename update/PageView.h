#pragma once

#include <QTextBrowser>

namespace runebook {

/// Shows a page from elsewhere: text and links, nothing that would have to be loaded. Links open outside.
class PageView : public QTextBrowser
{
    Q_OBJECT
public:
    explicit PageView(QWidget *parent = nullptr);

    /// Shows HTML that nobody has checked.
    void setPage(const QString &html);
    /// What is shown, as it was given.
    QString page() const { return m_page; }
    /// Rules added to the plain look of the page, such as those for dark windows; the program's own, not the
    /// page's.
    void setUserStyleSheet(const QString &rules);
    /// Whether they are in use; they are not before they are enabled.
    void setUserStyleSheetEnabled(bool isEnabled);
    bool isUserStyleSheetEnabled() const { return m_isStyleEnabled; }

Q_SIGNALS:
    /// A link was followed to the user's browser or mail program.
    void linkOpened(const QUrl &url);

protected:
    QVariant loadResource(int type, const QUrl &name) override;

private:
    void followLink(const QUrl &url);
    void render();

    QString m_page;
    QString m_userStyle;
    bool m_isStyleEnabled = false;
};

} // namespace runebook
