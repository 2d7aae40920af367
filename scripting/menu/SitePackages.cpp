#include "scripting/menu/SitePackages.h"

#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonPlaces.h"
#include "scripting/python/ScriptRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

namespace runebook {

using namespace Qt::StringLiterals;

SitePackages::SitePackages(QObject *parent) : QObject(parent) { }

SitePackages::~SitePackages() = default;

QString SitePackages::folder()
{
    return VXScriptingHandler::applicationSupportFolder() + "/Scripts/site-packages"_L1;
}

bool SitePackages::makeUsable()
{
    if (!QDir().mkpath(folder()))
        return false;
    if (!VXScriptingHandler::isPythonRunning())
        return true;
    const PythonLock lock;
    PyObject *path = vxPySys_GetObject("path");
    PyObject *text = vxPyString_FromString(folder().toUtf8().constData());
    if (path && text && vxPySequence_Contains(path, text) == 0)
        vxPyList_Append(path, text);
    if (text)
        vxPy_DecRef(text);
    vxPyErr_Clear();
    // A module that was looked for in vain is looked for again.
    vxRun_SimpleString("import importlib as _i\n_i.invalidate_caches()\ndel _i\n", "<internal>");
    return true;
}

QString SitePackages::pythonProgram(const QString &libraryPath)
{
    const QString version = installedVersion(libraryPath).section(u'.', 0, 1);
    const QString program = pythonPrefix(libraryPath) + "/bin/python"_L1 + version;
    return QFileInfo(program).isExecutable() ? program : QString();
}

void SitePackages::install(const QString &requirement, const QString &libraryPath)
{
    if (m_process || requirement.trimmed().isEmpty())
        return;
    const QString program = pythonProgram(libraryPath);
    if (program.isEmpty()) {
        end(false,
            tr("This Python has no program beside its library that could run pip; on Debian the package "
               "“python3” brings it."));
        return;
    }
    if (!makeUsable()) {
        end(false, tr("The folder “%1” cannot be made.").arg(folder()));
        return;
    }
    m_output.clear();
    m_process = new QProcess(this);
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->setStandardInputFile(QProcess::nullDevice());
    connect(m_process, &QProcess::readyRead, this, [this] {
        const QString text = QString::fromLocal8Bit(m_process->readAll());
        m_output += text;
        Q_EMIT printed(text);
    });
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            end(false, tr("“%1” cannot be started.").arg(m_process->program()));
    });
    connect(m_process, &QProcess::finished, this, [this, requirement](int status, QProcess::ExitStatus how) {
        makeUsable(); // what was installed may be a module that was looked for before
        if (how == QProcess::NormalExit && status == 0)
            end(true, tr("“%1” is installed; scripts can import it.").arg(requirement.trimmed()));
        else if (m_output.contains("No module named pip"_L1))
            end(false,
                tr("This Python has no pip. On Debian the package “python3-pip” brings it; with pyenv and "
                   "uv it comes with Python, or by “python -m ensurepip”."));
        else
            end(false, tr("“%1” was not installed; the console shows why.").arg(requirement.trimmed()));
    });
    m_process->start(program,
                     {u"-m"_s, u"pip"_s, u"install"_s, u"--disable-pip-version-check"_s, u"--upgrade"_s,
                      u"--target"_s, folder(), u"--"_s, requirement.trimmed()});
}

void SitePackages::end(bool isInstalled, const QString &message)
{
    if (m_process)
        m_process->deleteLater();
    m_process = nullptr;
    Q_EMIT finished(isInstalled, message);
}

} // namespace runebook
