#include "app/VXChangeLogWindowController.h"

#include "platform/Appearance.h"
#include "platform/StandardFolders.h"
#include "ui_VXChangeLogWindowController.h"
#include "update/PageFetcher.h"

#include <QEvent>
#include <QFile>
#include <QShortcut>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QString kDarkRules = u"a { color: #7fb0ff; } h1, h2, h3 { color: #ffffff; } "
                           "code, pre { color: #ffc58f; background-color: #323237; }"_s;
constexpr qint64 kMaxPage = 1024 * 1024;

QString shippedPage(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(kMaxPage)) : QString();
}

} // namespace

VXChangeLogWindowController::VXChangeLogWindowController(QWidget *parent)
    : QMainWindow(parent),
      m_ui(std::make_unique<Ui::VXChangeLogWindowController>()),
      m_fetcher(new PageFetcher(this))
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_QuitOnClose, false);
    auto *closing = new QShortcut(QKeySequence::Close, this);
    connect(closing, &QShortcut::activated, this, &QWidget::close);
    auto *escape = new QShortcut(Qt::Key_Escape, this);
    connect(escape, &QShortcut::activated, this, &QWidget::close);
    awakeFromNib();
}

VXChangeLogWindowController::~VXChangeLogWindowController() = default;

void VXChangeLogWindowController::awakeFromNib()
{
    m_ui->changeLogWebView->setUserStyleSheet(kDarkRules);
    adaptChangeLogWebViewAppearance();
}

QString VXChangeLogWindowController::urlForServer(const QString &server, const QString &version,
                                                  const QString &build)
{
    if (server.isEmpty())
        return QUrl::fromLocalFile(StandardFolders::resource(u"doc/changelog.html"_s)).toString();
    QString base = server;
    while (base.endsWith(u'/'))
        base.chop(1);
    return base + u"/Runebook/Runebook%1-%2.html"_s.arg(version, build);
}

PageView *VXChangeLogWindowController::changeLogWebView() const
{
    return m_ui->changeLogWebView;
}

void VXChangeLogWindowController::setChangeLogURL(const QString &url)
{
    m_changeLogURL = url;
    const QUrl address(url);
    m_fetcher->cancel();
    m_ui->changeLogWebView->setPage({});
    // Only the program's own page may be a file.
    if (url == urlForServer({}, {}, {}))
        m_ui->changeLogWebView->setPage(shippedPage(address.toLocalFile()));
    else
        m_fetcher->fetch(address, [this](const QByteArray &page, const Error &) {
            m_ui->changeLogWebView->setPage(QString::fromUtf8(page));
        });
    adaptChangeLogWebViewAppearance();
}

void VXChangeLogWindowController::adaptChangeLogWebViewAppearance()
{
    m_ui->changeLogWebView->setUserStyleSheetEnabled(isDarkMode(palette()));
}

void VXChangeLogWindowController::showWindow()
{
    show();
    raise();
    activateWindow();
}

void VXChangeLogWindowController::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_ui->changeLogWebView)
        adaptChangeLogWebViewAppearance();
}
