#include "editing/compare/CompareDocuments.h"

#include "editing/compare/VXCompareDataWindow.h"

#include <QEvent>
#include <QPointer>

namespace runebook {

namespace {

std::function<VXCompareDataWindow *()> &windowProvider()
{
    static std::function<VXCompareDataWindow *()> provider;
    return provider;
}

VXCompareDataWindow *compareWindow()
{
    if (windowProvider())
        return windowProvider()();
    static QPointer<VXCompareDataWindow> own;
    if (!own) {
        own = new VXCompareDataWindow;
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, own, [] { delete own; });
    }
    return own;
}

/// Closes documents when the window that shows them is closed.
class TemporaryDocuments : public QObject
{
public:
    TemporaryDocuments(QWidget *window, const QList<VXDocument *> &documents) : QObject(window)
    {
        for (VXDocument *document : documents)
            m_documents << document;
        window->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Close) {
            for (const QPointer<VXDocument> &document : std::exchange(m_documents, {})) {
                if (document && !document->isDocumentEdited())
                    document->close();
            }
            deleteLater();
        }
        return false;
    }

private:
    QList<QPointer<VXDocument>> m_documents;
};

} // namespace

void setCompareWindowProvider(std::function<VXCompareDataWindow *()> provider)
{
    windowProvider() = std::move(provider);
}

void compareDocuments(VXDocument &left, VXDocument &right, const QList<VXDocument *> &temporary)
{
    for (VXDocument *document : temporary)
        setOnlyToCompare(*document);
    VXCompareDataWindow *window = compareWindow();
    window->showDocuments(&left, &right);
    new TemporaryDocuments(window, temporary);
}

} // namespace runebook
