#include "update/PageView.h"

#include "update/PageFetcher.h"
#include "update/SafeHtml.h"

#include <QDesktopServices>
#include <QScrollBar>

namespace runebook {

using namespace Qt::StringLiterals;

PageView::PageView(QWidget *parent) : QTextBrowser(parent)
{
    setOpenLinks(false);
    setUndoRedoEnabled(false);
    document()->setDocumentMargin(12);
    connect(this, &QTextBrowser::anchorClicked, this, &PageView::followLink);
}

void PageView::setPage(const QString &html)
{
    m_page = html;
    render();
}

void PageView::setUserStyleSheet(const QString &rules)
{
    m_userStyle = rules;
    render();
}

void PageView::setUserStyleSheetEnabled(bool isEnabled)
{
    if (std::exchange(m_isStyleEnabled, isEnabled) != isEnabled)
        render();
}

void PageView::render()
{
    const int position = verticalScrollBar()->value();
    document()->setDefaultStyleSheet(m_isStyleEnabled ? m_userStyle : QString());
    setHtml(safeHtml(m_page));
    verticalScrollBar()->setValue(position);
}

QVariant PageView::loadResource(int type, const QUrl &name)
{
    Q_UNUSED(type)
    Q_UNUSED(name)
    return {};
}

void PageView::followLink(const QUrl &url)
{
    if (url.isRelative() && url.hasFragment()) {
        scrollToAnchor(url.fragment());
        return;
    }
    if (!PageFetcher::mayBeOpened(url))
        return;
    Q_EMIT linkOpened(url);
    QDesktopServices::openUrl(url);
}

} // namespace runebook
