#include "app/VXAppDelegate.h"

#include "document/VXDocument.h"
#include "editing/VXCompareDataWindow.h"
#include "editing/VXFindReplaceWindowController.h"
#include "editing/VXSearchField.h"
#include "editing/VXWindowController.h"
#include "model/VXArrayToStringTransformator.h"
#include "model/VXDirectionToIndexValueTransformer.h"
#include "platform/Appearance.h"
#include "platform/DocumentController.h"
#include "platform/DocumentPanels.h"
#include "platform/Error.h"
#include "platform/MainMenu.h"
#include "platform/PlainText.h"
#include "scripting/bridge/BridgedClass.h"
#include "scripting/bridge/ScriptApplication.h"

#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QStyle>

using namespace runebook;
using namespace Qt::StringLiterals;

VXAppDelegate::VXAppDelegate(QObject *parent) : QObject(parent)
{
    initialize();
    registerDocuments();
    contributeToMenus();
    presentErrors();
    introduceToScripts();
}

VXAppDelegate::~VXAppDelegate()
{
    delete m_compareWindow;
    DocumentController::shared().releaseAll();
}

void VXAppDelegate::initialize()
{
    static const bool once = [] {
        ValueTransformer::setForName(u"arrayToStringTransformator"_s,
                                     std::make_unique<VXArrayToStringTransformator>());
        ValueTransformer::setForName(u"directionToIndexTransformer"_s,
                                     std::make_unique<VXDirectionToIndexValueTransformer>());
        return true;
    }();
    Q_UNUSED(once)
}

QString VXAppDelegate::applicationName()
{
    return u"Runebook"_s;
}

void VXAppDelegate::registerDocuments()
{
    DocumentController &controller = DocumentController::shared();
    controller.addType({u"public.xml"_s, {u"xml"_s}, tr("Glyph data files")});
    controller.addType({u"public.plain-text"_s, {u"txt"_s}, tr("Tab-separated tables")});
    controller.setDocumentFactory([] { return new VXDocument; });
    controller.setWindowMaker([](Document &document) -> QWidget * {
        auto *window = new VXWindowController(static_cast<VXDocument &>(document));
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->show();
        return window;
    });
}

void VXAppDelegate::introduceToScripts()
{
    ScriptApplication::shared().setDelegate(this);
    // Known by name before a script has met the first one.
    bridge::BridgedClass::registerClass(VXWindowController::staticMetaObject);
    bridge::BridgedClass::registerClass(RSRTVArrayController::staticMetaObject);
    bridge::BridgedClass::registerClass(VXSearchField::staticMetaObject);
    bridge::BridgedClass::registerClass(VXCompareDataWindow::staticMetaObject);
    bridge::BridgedClass::registerClass(VXFindReplaceWindowController::staticMetaObject);
}

void VXAppDelegate::contributeToMenus()
{
    MainMenu::addContribution(MainMenu::File, [this](QMenu &menu, QWidget &) {
        QAction *quit = menu.addAction(tr("&Quit"), this, &VXAppDelegate::terminate);
        quit->setShortcut(QKeySequence::Quit);
        quit->setMenuRole(QAction::QuitRole);
    });
    MainMenu::addContribution(MainMenu::Window, [this](QMenu &menu, QWidget &) {
        QAction *compare = menu.addAction(tr("&Compare Data"), this, &VXAppDelegate::showCompareWindow);
        compare->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    });
    MainMenu::addContribution(MainMenu::Help, [this](QMenu &menu, QWidget &window) {
        QAction *about = menu.addAction(tr("&About Runebook"), this, [this, &window] { showAbout(&window); });
        about->setMenuRole(QAction::AboutRole);
    });
}

void VXAppDelegate::presentErrors()
{
    // Reports of a reading come in a row: they are gathered and shown in the front window's message bar.
    auto *pending = new QStringList;
    connect(this, &QObject::destroyed, [pending] { delete pending; });
    connect(&ErrorPresenter::shared(), &ErrorPresenter::presented, this, [pending, this](const Error &error) {
        constexpr qsizetype kShown = 20;
        if (pending->isEmpty()) {
            QTimer::singleShot(0, this, [pending] {
                const QStringList texts = std::exchange(*pending, {});
                QObject *document = DocumentController::shared().currentDocument();
                auto *current = qobject_cast<VXDocument *>(document);
                if (current && current->windowController())
                    QMetaObject::invokeMethod(current->windowController(), "showMessage",
                                              Q_ARG(QString, texts.join(u'\n')));
            });
        }
        if (pending->size() < kShown)
            *pending << error.text();
    });
}

void VXAppDelegate::applicationDidFinishLaunching()
{
    Appearance::shared().apply();
}

void VXAppDelegate::openAtStart(const QStringList &paths)
{
    DocumentPanels::openFiles(paths, nullptr);
    if (DocumentController::shared().documentList().isEmpty())
        DocumentController::shared().openUntitledDocumentAndDisplay(true);
}

QObject *VXAppDelegate::compareWindow()
{
    if (!m_compareWindow)
        m_compareWindow = new VXCompareDataWindow;
    return m_compareWindow;
}

void VXAppDelegate::showCompareWindow()
{
    compareWindow();
    m_compareWindow->showWindow();
}

void VXAppDelegate::showAbout(QWidget *window)
{
    auto *box = new QMessageBox(window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setWindowTitle(tr("About Runebook"));
    box->setIconPixmap(QIcon(u":/icons/runebook.svg"_s).pixmap(96));
    setPlainTexts(*box, tr("Runebook %1").arg(QStringLiteral(RUNEBOOK_VERSION)),
                  tr("An editor for glyph data files.\nQt %1").arg(QString::fromLatin1(qVersion())));
    box->open();
}

void VXAppDelegate::terminate()
{
    if (std::exchange(m_isTerminating, true))
        return;
    DocumentPanels::closeAll([this](bool closed) {
        m_isTerminating = false;
        if (closed)
            QApplication::quit();
    });
}
