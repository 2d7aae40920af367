#include "scripting/panel/ScriptFiles.h"

#include "codeeditor/JSTTextView.h"
#include "platform/MessageBar.h"
#include "platform/documents/DocumentController.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/MacroTabs.h"
#include "scripting/panel/ScriptText.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "tabbar/VXTabBarControl.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// The paths of files that are dragged; nothing when something else is among it.
QStringList filesIn(const QMimeData &data)
{
    QStringList paths;
    for (const QUrl &url : data.urls()) {
        if (!url.isLocalFile())
            return {};
        paths << url.toLocalFile();
    }
    return paths;
}

/// Replaces the text as one step that can be undone; caret and scroll position stay on their line.
void replaceText(JSTTextView &view, const QString &text)
{
    const int line = view.textCursor().blockNumber();
    const int column = view.textCursor().positionInBlock();
    const int scrolled = view.verticalScrollBar()->value();
    QTextCursor cursor(view.document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    const QTextBlock block =
        view.document()->findBlockByNumber(qMin(line, view.document()->blockCount() - 1));
    cursor.setPosition(block.position() + qMin(column, block.length() - 1));
    view.setTextCursor(cursor);
    view.verticalScrollBar()->setValue(scrolled);
}

} // namespace

ScriptFiles::ScriptFiles(MacroTabs &tabs, QMenu &menu, QObject *parent) : QObject(parent), m_panel(tabs)
{
    QAction *before = menu.actions().value(0);
    addCommand(menu, before, tr("&Open Script…"), QKeySequence::Open, &ScriptFiles::askToOpen);
    addCommand(menu, before, tr("Save as &Script…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
               &ScriptFiles::askWhereToSave);
    menu.insertSeparator(before);
    m_panel.window()->setSaveHandler([this] { return save(); });
    m_panel.window()->setAcceptDrops(true);
    // The editor and the console would take a file for text.
    qApp->installEventFilter(this);
    connect(m_panel.window(), &VXMacroWindow::becameKey, this, &ScriptFiles::lookForChanges);
}

QAction *ScriptFiles::addCommand(QMenu &menu, QAction *before, const QString &text, const QKeySequence &key,
                                 void (ScriptFiles::*command)())
{
    auto *action = new QAction(text, m_panel.window());
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, command);
    menu.insertAction(before, action);
    return action;
}

QList<VXMacroViewController *> ScriptFiles::tabs() const
{
    QList<VXMacroViewController *> found;
    for (QObject *item : m_panel.tabBarControl()->tabItems()) {
        if (auto *tab = qobject_cast<VXMacroViewController *>(item))
            found << tab;
    }
    return found;
}

void ScriptFiles::present(const Error &error)
{
    m_panel.window()->messageBar()->showMessage(error.text(), MessageBar::Stay::UntilClosed);
}

// Opening

bool ScriptFiles::open(const QString &path, int line)
{
    const QString file = QFileInfo(path).absoluteFilePath();
    VXMacroViewController *tab = nullptr;
    for (VXMacroViewController *each : tabs()) {
        if (each->filePath() == file)
            tab = each;
    }
    if (!tab) {
        Error error;
        const std::optional<QString> text = ScriptText::read(file, &error);
        if (!text) {
            present(error);
            return false;
        }
        tab = m_panel.addMacroTitle(*text, QFileInfo(file).fileName());
        tab->setFile(file, *text);
    }
    m_panel.tabBarControl()->selectTabItem(tab);
    if (line > 0)
        tab->selectTextForLine(line);
    tab->macroText()->setFocus(Qt::OtherFocusReason);
    m_panel.saveMacroTabs();
    return true;
}

void ScriptFiles::askToOpen()
{
    auto *dialog = new QFileDialog(m_panel.window(), tr("Open Script"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setNameFilters({tr("Python scripts") + " (*.py)"_L1, tr("All files") + " (*)"_L1});
    dialog->setDirectory(VXScriptingHandler::applicationSupportFolder() + "/Scripts"_L1);
    connect(dialog, &QFileDialog::filesSelected, this, [this](const QStringList &paths) {
        for (const QString &path : paths)
            open(path);
    });
    dialog->open();
}

// Saving

bool ScriptFiles::save()
{
    VXMacroViewController *tab = m_panel.activeMacroController();
    if (!tab || tab->filePath().isEmpty())
        return false;
    if (ScriptText::read(tab->filePath()) != tab->savedText()) {
        askAboutChange(*tab);
        return true;
    }
    saveAs(*tab, tab->filePath());
    return true;
}

void ScriptFiles::askWhereToSave()
{
    VXMacroViewController *tab = m_panel.activeMacroController();
    if (!tab)
        return;
    const QString folder = VXScriptingHandler::applicationSupportFolder() + "/Scripts"_L1;
    QDir().mkpath(folder);
    auto *dialog = new QFileDialog(m_panel.window(), tr("Save as Script"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(tr("Python scripts") + " (*.py)"_L1);
    dialog->setDefaultSuffix(u"py"_s);
    dialog->setDirectory(folder);
    dialog->selectFile(tab->filePath().isEmpty() ? ScriptText::fileNameFor(tab->title())
                                                 : QFileInfo(tab->filePath()).fileName());
    connect(dialog, &QFileDialog::fileSelected, tab, [this, tab](const QString &path) {
        if (tab->filePath().isEmpty()) {
            const QString titled = ScriptText::withMenuTitle(tab->code(), tab->title());
            if (titled != tab->code())
                replaceText(*tab->macroText(), titled);
        }
        if (saveAs(*tab, path))
            tab->setTitle(QFileInfo(path).fileName());
    });
    dialog->open();
}

bool ScriptFiles::saveAs(VXMacroViewController &tab, const QString &path)
{
    Error error;
    const QString text = tab.code();
    if (!ScriptText::write(path, text, &error)) {
        present(error);
        return false;
    }
    tab.setFile(QFileInfo(path).absoluteFilePath(), text);
    m_panel.saveMacroTabs();
    m_panel.window()->messageBar()->showMessage(tr("Saved “%1”.").arg(QDir::toNativeSeparators(path)),
                                                MessageBar::Stay::ShortTime);
    return true;
}

// What other programs do

void ScriptFiles::lookForChanges()
{
    for (VXMacroViewController *tab : tabs()) {
        if (tab->filePath().isEmpty() || !tab->takeFileChange())
            continue;
        const std::optional<QString> now = ScriptText::read(tab->filePath());
        if (!now || *now == tab->savedText())
            continue; // gone, or only touched: what the tab has is kept
        if (tab->code() == tab->savedText())
            reload(*tab);
        else if (tab->code() == *now)
            tab->setFile(tab->filePath(), *now);
        else
            askAboutChange(*tab);
    }
}

void ScriptFiles::reload(VXMacroViewController &tab)
{
    Error error;
    const std::optional<QString> text = ScriptText::read(tab.filePath(), &error);
    if (!text) {
        present(error);
        return;
    }
    replaceText(*tab.macroText(), *text);
    tab.setFile(tab.filePath(), *text);
    m_panel.saveMacroTabs();
    m_panel.window()->messageBar()->showMessage(
        tr("Another program has changed “%1”; it was read again.").arg(tab.title()),
        MessageBar::Stay::ShortTime);
}

void ScriptFiles::askAboutChange(VXMacroViewController &tab)
{
    const QPointer<VXMacroViewController> safe(&tab);
    const auto onTab = [safe](const std::function<void(VXMacroViewController &)> &act) {
        return [safe, act] {
            if (safe)
                act(*safe);
        };
    };
    m_panel.window()->messageBar()->ask(
        tr("Another program has changed “%1”. Reading it again gives up what you have changed here.")
            .arg(tab.title()),
        {{tr("&Read Again"), onTab([this](VXMacroViewController &each) { reload(each); })},
         {tr("&Save Mine"), onTab([this](VXMacroViewController &each) { saveAs(each, each.filePath()); })}});
}

// Dropping

bool ScriptFiles::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::DragEnter && type != QEvent::DragMove && type != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    const auto *widget = qobject_cast<QWidget *>(watched);
    if (!widget || widget->window() != m_panel.window())
        return false;
    auto *drop = static_cast<QDropEvent *>(event);
    const QStringList paths = filesIn(*drop->mimeData());
    if (paths.isEmpty())
        return false;
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (type == QEvent::Drop) {
        for (const QString &path : paths) {
            // Glyph data has windows of its own.
            if (DocumentController::shared().typeForURL(path).isEmpty())
                open(path);
            else
                DocumentController::shared().openDocumentWithContentsOfURLDisplay(path, true);
        }
    }
    return true;
}

} // namespace runebook
