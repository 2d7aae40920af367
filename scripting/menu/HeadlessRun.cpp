#include "scripting/menu/HeadlessRun.h"

#include "document/VXDocument.h"
#include "platform/FilePath.h"
#include "platform/documents/DocumentController.h"
#include "scripting/classes/ScriptHelpers.h"
#include "scripting/menu/HeadlessConsole.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/OutputModules.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonValue.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <cstring>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr auto kPlatform = "QT_QPA_PLATFORM";

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(HeadlessRun)
};

/// Saves of the script that were refused, and of which it did not ask why.
int refusedSaves = 0;

/// One line of a person's language on stderr.
void complain(HeadlessConsole &console, const QString &text)
{
    console.setWriteError("runebook: "_L1 + text.simplified() + u'\n');
}

/// Opens a file as one of the open documents, unseen. Not through the controller's own opening: a run in a
/// Makefile does not belong among the user's recent files.
Document *open(const QString &path, Error *error)
{
    DocumentController &controller = DocumentController::shared();
    if (fileKind(path) != FileKind::Regular) {
        fail(error, {u"OpenError"_s, 1, Texts::tr("The file “%1” cannot be read.").arg(path), {}, {}});
        return nullptr;
    }
    const QString type = controller.typeForURL(path);
    if (type.isEmpty()) {
        fail(error,
             {u"OpenError"_s, 3, Texts::tr("“%1” is of no kind that can be opened.").arg(path), {}, {}});
        return nullptr;
    }
    auto document = std::make_unique<VXDocument>();
    if (!document->readFromURLOfType(path, type, error) || !document->readError().domain.isEmpty()) {
        if (error && !document->readError().domain.isEmpty())
            *error = document->readError();
        return nullptr;
    }
    if (const qsizetype conflicts = document->readNotes().count(ReadNotes::Conflict); conflicts > 0) {
        fail(error,
             {u"OpenError"_s, 4, Texts::tr("It has unresolved conflicts: %1.").arg(conflicts), {}, {}});
        return nullptr;
    }
    document->setFileType(type);
    document->setFileURL(path);
    document->noteFileRead(document->readState());
    controller.addDocument(document.get());
    return document.release();
}

/// The documents of the files in their order, or nothing when one cannot be read.
std::optional<QList<QPointer<Document>>> openAll(const QStringList &files, HeadlessConsole &console)
{
    QList<QPointer<Document>> documents;
    // Backwards: each one that is opened comes in front of the others.
    for (auto file = files.crbegin(); file != files.crend(); ++file) {
        Error error;
        Document *document = open(QFileInfo(pathFromURL(*file)).absoluteFilePath(), &error);
        if (!document) {
            complain(console, Texts::tr("%1: %2").arg(shownPath(*file), error.text()));
            return {};
        }
        documents.prepend(document);
    }
    return documents;
}

/// Tells what saving would not keep; whether it may be done. Asked for all documents before the first of them
/// is written.
bool mayBeSaved(const QPointer<Document> &document, HeadlessConsole &console)
{
    constexpr qsizetype kTold = 20;
    if (!document || !document->isDocumentEdited())
        return true;
    const SavingLosses losses = document->savingLosses(document->fileType());
    if (losses.isEmpty())
        return true;
    for (const QString &line : losses.lines(kTold))
        complain(console, document->displayName() + ": "_L1 + line);
    if (losses.takingOthers > 0) {
        complain(console, Texts::tr("Nothing was saved: these values would take other records with them."));
        return false;
    }
    if (!Document::losesSilently())
        complain(console,
                 Texts::tr("Nothing was saved: these values would be lost. “--lossy” saves all the same."));
    return Document::losesSilently();
}

bool saveAll(const QList<QPointer<Document>> &documents, HeadlessConsole &console)
{
    bool isSaved = true;
    for (const QPointer<Document> &document : documents)
        isSaved &= mayBeSaved(document, console);
    if (!isSaved)
        return false;
    for (const QPointer<Document> &document : documents) {
        Error error;
        if (document && document->isDocumentEdited() && !document->saveDocument(&error)) {
            complain(console, error.text());
            isSaved = false;
        }
    }
    return isSaved;
}

/// Other programs write to the same output: what is held back goes first.
int flushBeforePrograms(const char *event, PyObject *, void *data)
{
    for (const char *starting : {"os.system", "subprocess.Popen", "os.fork", "os.forkpty", "os.exec",
                                 "os.posix_spawn", "os.spawn", "pty.spawn"}) {
        if (std::strcmp(event, starting) == 0)
            static_cast<HeadlessConsole *>(data)->flush();
    }
    return 0;
}

bool hasPython(HeadlessConsole &console)
{
    const VXScriptingHandler *handler = VXScriptingHandler::sharedHandler();
    if (!VXScriptingHandler::isPythonRunning()) {
        const Error &error = handler->startError();
        complain(console,
                 error.domain.isEmpty()
                     ? Texts::tr("No suitable Python installed: versions 3.9 to 3.11 are supported.")
                     : error.text());
        return false;
    }
    const QString version =
        u"%1.%2"_s.arg(VXScriptingHandler::PythonMajorVersion).arg(VXScriptingHandler::PythonMinorVersion);
    if (!handler->isSupportedPythonVersion(version))
        complain(console, Texts::tr("Python %1 is not supported; versions 3.9 to 3.11 are.").arg(version));
    return true;
}

/// Whether the interpreter is as new as the command line wants.
bool isNewEnough(const QString &required, HeadlessConsole &console)
{
    const int major = required.section(u'.', 0, 0).toInt(), minor = required.section(u'.', 1, 1).toInt();
    const std::pair running(VXScriptingHandler::PythonMajorVersion, VXScriptingHandler::PythonMinorVersion);
    if (running >= std::pair(major, minor))
        return true;
    complain(console,
             Texts::tr("Python %1 or newer is needed; %2.%3 is what runs.")
                 .arg(required)
                 .arg(running.first)
                 .arg(running.second));
    return false;
}

/// What a script finds in sys.argv: its name, as it was given, and the arguments behind it.
void setArguments(const HeadlessOptions &options)
{
    const PythonLock lock;
    const auto text = [](const QString &argument) { return bridge::pythonText(argument); };
    const bridge::PythonRef list(py.PyList_New(0));
    const QString name = options.script.isEmpty() ? u"-c"_s : options.script;
    for (const QString &argument : QStringList(name) + options.arguments) {
        const bridge::PythonRef item(text(argument));
        if (list && item)
            vxPyList_Append(list.get(), item.get());
    }
    if (list)
        vxPySys_SetObject("argv", list.get());
    vxPyErr_Clear();
}

/// Nobody is there to close what opens and waits: a menu or a dialog is closed, with a line that says so, as
/// soon as the event loop has nothing left to do but to wait for an answer.
void closeWhatWaits()
{
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, qApp, [] {
        QWidget *waiting = QApplication::activePopupWidget();
        if (!waiting)
            waiting = QApplication::activeModalWidget();
        if (!waiting)
            return;
        const QString name =
            waiting->windowTitle().isEmpty() ? waiting->objectName() : waiting->windowTitle();
        ErrorPresenter::shared().present(
            {u"VXTesselDomain"_s,
             2,
             Texts::tr("“%1” would wait for an answer: it was closed.").arg(name),
             {},
             {}});
        if (auto *dialog = qobject_cast<QDialog *>(waiting))
            dialog->reject();
        else if (!waiting->close())
            waiting->hide();
    });
}

int run(const HeadlessOptions &options, HeadlessConsole &console)
{
    const bool readsInput = options.script == "-"_L1;
    const QString script =
        options.script.isEmpty() || readsInput ? QString() : QFileInfo(options.script).absoluteFilePath();
    QString code = options.code;
    if (readsInput) {
        QFile input;
        if (input.open(stdin, QIODevice::ReadOnly))
            code = QString::fromUtf8(input.readAll());
    }
    if (!script.isEmpty() && (!QFileInfo(script).isFile() || !QFileInfo(script).isReadable())) {
        complain(console, Texts::tr("The script “%1” cannot be read.").arg(options.script));
        return HeadlessStatus::kWrongInput;
    }
    const auto documents = openAll(options.files, console);
    if (!documents)
        return HeadlessStatus::kWrongInput;
    if (!hasPython(console) || !isNewEnough(options.requiredPython, console))
        return HeadlessStatus::kNoPython;
    if (options.prepare)
        options.prepare();
    {
        const PythonLock lock;
        if (py.PySys_AddAuditHook)
            py.PySys_AddAuditHook(flushBeforePrograms, &console);
    }
    setArguments(options);
    closeWhatWaits();
    if (readsInput)
        runStandardInput(code);
    else if (script.isEmpty())
        VXScriptingHandler::sharedHandler()->runMacroString(code);
    else
        VXScriptingHandler::sharedHandler()->runMacroFile(script);
    int status = ScriptRun::outcome().processStatus();
    finishScripts();
    console.flush();
    if (status == HeadlessStatus::kSuccess && refusedSaves > 0)
        status = HeadlessStatus::kScriptFailed;
    if (status == HeadlessStatus::kSuccess && options.savesFiles && !saveAll(*documents, console))
        status = HeadlessStatus::kScriptFailed;
    if (console.failure()) {
        complain(console,
                 Texts::tr("The output could not be written: %1").arg(qt_error_string(console.failure())));
        status = status == HeadlessStatus::kSuccess ? HeadlessStatus::kScriptFailed : status;
    }
    return status;
}

} // namespace

HeadlessPlatform::HeadlessPlatform()
{
    if (qEnvironmentVariableIsSet(kPlatform))
        m_chosen = qgetenv(kPlatform);
    qputenv(kPlatform, "offscreen");
}

HeadlessPlatform::~HeadlessPlatform()
{
    if (m_chosen)
        qputenv(kPlatform, *m_chosen);
    else
        qunsetenv(kPlatform);
}

int runHeadless(const HeadlessOptions &options)
{
    // Never destroyed: threads of scripts may print to the very end of the process.
    static HeadlessConsole &console = *new HeadlessConsole;
    setScriptConsole(&console);
    ScriptHelpers::shared().setCanAsk(false);
    ScriptHelpers::shared().setAnswers(options.answers);
    const auto connection = QObject::connect(&ErrorPresenter::shared(), &ErrorPresenter::presented,
                                             &ErrorPresenter::shared(), [](const Error &error) {
                                                 complain(console, error.text());
                                                 refusedSaves += error.domain == "SavingLossesError"_L1;
                                             });
    Document::setLosesSilently(options.losesValues);
    const int status = run(options, console);
    QObject::disconnect(connection);
    return status;
}

} // namespace runebook
