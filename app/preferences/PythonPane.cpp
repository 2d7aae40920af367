#include "app/preferences/PythonPane.h"

#include "app/AboutBox.h"
#include "app/preferences/SettingBinding.h"
#include "platform/Background.h"
#include "platform/PlainText.h"
#include "scripting/menu/MenuSettings.h"
#include "scripting/menu/SitePackages.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/python/PythonDiscovery.h"
#include "scripting/python/PythonPlaces.h"
#include "scripting/python/PythonProbe.h"
#include "scripting/python/ScriptConsole.h"
#include "ui_PythonPane.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QSignalBlocker>
#include <QUrl>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

void addRow(QListWidget &list, const QString &name, const QString &path)
{
    auto *item = new QListWidgetItem(path.isEmpty() ? name : name + u" — "_s + path, &list);
    item->setData(Qt::UserRole, path);
    item->setToolTip(escapedToolTip(path));
}

} // namespace

PythonPane::PythonPane(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::PythonPane>()), m_packages(new SitePackages(this))
{
    m_ui->setupUi(this);
    const VXScriptingHandler *handler = VXScriptingHandler::sharedHandler();
    const QString problem = handler->startError().text();
    if (VXScriptingHandler::isPythonRunning())
        m_ui->inUse->setText(
            tr("In use: Python %1, %2").arg(AboutBox::pythonVersion(), handler->currentPythonPath()));
    else
        m_ui->inUse->setText(problem.isEmpty()
                                 ? tr("No suitable Python is installed: versions 3.9 to 3.11 are supported.")
                                 : problem);
    fillList();
    connect(m_ui->installations, &QListWidget::currentRowChanged, this, &PythonPane::choose);
    connect(m_ui->add, &QPushButton::clicked, this, &PythonPane::askForLibrary);
    connect(m_ui->remove, &QPushButton::clicked, this, [this] { m_ui->installations->setCurrentRow(0); });
    showStatus({});
    SettingBinding::bind(m_ui->afterFailedRun, Settings::kAfterFailedRun);
    setUpPackages();
}

PythonPane::~PythonPane() = default;

void PythonPane::fillList()
{
    const QSignalBlocker quiet(m_ui->installations);
    m_ui->installations->clear();
    const QList<QVariantMap> found = VXScriptingHandler::sharedHandler()->pythonFrameworks();
    addRow(*m_ui->installations, tr("The newest that is supported"), {});
    const QString chosen = Settings::kPythonLibrary.value();
    int chosenRow = 0;
    // The newest stands last in the list that was found, and first for a reader.
    for (auto entry = found.crbegin(); entry != found.crend(); ++entry) {
        const QString path = entry->value(u"fullPath"_s).toString();
        if (path == chosen)
            chosenRow = m_ui->installations->count();
        addRow(*m_ui->installations, entry->value(u"name"_s).toString(), path);
    }
    if (!chosen.isEmpty() && chosenRow == 0) {
        chosenRow = m_ui->installations->count();
        addRow(*m_ui->installations, tr("%1 (manually)").arg(installedVersion(chosen)), chosen);
    }
    m_ui->installations->setCurrentRow(chosenRow);
}

void PythonPane::choose(int row)
{
    const QListWidgetItem *item = m_ui->installations->item(row);
    const QString path = item ? item->data(Qt::UserRole).toString() : QString();
    Settings::kPythonLibrary.setOrReset(path);
    showStatus({});
}

void PythonPane::askForLibrary()
{
    auto *panel = new QFileDialog(this, tr("Choose a Shared Library of Python"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setNameFilters(
        {tr("Shared libraries of Python") + " (libpython3*.so*)"_L1, tr("All files") + " (*)"_L1});
    panel->setDirectory(QFileInfo(Settings::kPythonLibrary.value()).absolutePath());
    connect(panel, &QFileDialog::fileSelected, this, &PythonPane::addInstallation);
    panel->open();
}

void PythonPane::addInstallation(const QString &path)
{
    const QString library = QFileInfo(path).canonicalFilePath();
    if (!isPythonLibraryName(library)) {
        take(path,
             {u"PythonError"_s,
              3,
              tr("“%1” is no shared library of Python 3.").arg(path),
              tr("Its name begins with “libpython3.”."),
              {}});
        return;
    }
    m_ui->add->setEnabled(false);
    m_ui->status->setText(tr("Trying “%1”…").arg(library));
    // An interpreter that does not come up is waited for; the window is not.
    const QPointer<PythonPane> pane(this);
    runApart([pane, library] {
        Error problem;
        if (PythonProbe::comesUp(library, pythonPrefix(library), &problem))
            problem = {};
        runOnMainThread([pane, library, problem] {
            if (pane)
                pane->take(library, problem);
        });
    });
}

void PythonPane::take(const QString &path, const Error &problem)
{
    m_ui->add->setEnabled(true);
    const bool isUsable = problem.domain.isEmpty();
    if (isUsable) {
        Settings::kPythonLibrary.set(path);
        fillList();
    }
    showStatus(problem.text());
    Q_EMIT tried(isUsable);
}

// Packages

void PythonPane::setUpPackages()
{
    m_ui->packagesStatus->setText(SitePackages::folder());
    connect(m_ui->install, &QPushButton::clicked, this, &PythonPane::installPackage);
    connect(m_ui->package, &QLineEdit::returnPressed, this, &PythonPane::installPackage);
    connect(m_ui->openFolder, &QPushButton::clicked, this, &PythonPane::openFolder);
    connect(m_packages, &SitePackages::printed, this, [](const QString &text) {
        if (auto *console = dynamic_cast<ScriptConsole *>(VXScriptingHandler::globalMacroPanelController()))
            console->setWrite(text);
    });
    connect(m_packages, &SitePackages::finished, this, [this](bool isInstalled, const QString &message) {
        m_ui->install->setEnabled(true);
        m_ui->packagesStatus->setText(message);
        if (isInstalled)
            m_ui->package->clear();
    });
}

void PythonPane::installPackage()
{
    const QString package = m_ui->package->text();
    if (package.trimmed().isEmpty() || m_packages->isInstalling())
        return;
    m_ui->install->setEnabled(false);
    m_ui->packagesStatus->setText(
        tr("Installing “%1”; the console shows how it goes.").arg(package.trimmed()));
    m_packages->install(package, VXScriptingHandler::sharedHandler()->currentPythonPath());
}

void PythonPane::openFolder()
{
    if (SitePackages::makeUsable())
        QDesktopServices::openUrl(QUrl::fromLocalFile(SitePackages::folder()));
    else
        m_ui->packagesStatus->setText(tr("The folder “%1” cannot be made.").arg(SitePackages::folder()));
}

void PythonPane::showStatus(const QString &text)
{
    const QString chosen = Settings::kPythonLibrary.value();
    const QList<QVariantMap> found = VXScriptingHandler::sharedHandler()->pythonFrameworks();
    const bool isFound = std::any_of(found.begin(), found.end(), [&chosen](const QVariantMap &entry) {
        return entry.value(u"fullPath"_s) == chosen;
    });
    m_ui->remove->setEnabled(!chosen.isEmpty() && !isFound);
    QStringList lines {text};
    const QString version = installedVersion(chosen);
    if (!version.isEmpty() && !PythonDiscovery::isSupportedVersion(version))
        lines << tr("Python %1 is not supported; versions 3.9 to 3.11 are.").arg(version);
    lines << tr("A new choice takes effect at the next start.");
    lines.removeAll(QString());
    m_ui->status->setText(lines.join(u'\n'));
}

} // namespace runebook
