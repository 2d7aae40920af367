#include "app/CommandLine.h"
#include "app/LastWindow.h"
#include "app/LeaveOnSignal.h"
#include "app/RunWatch.h"
#include "app/RunWatchWindow.h"
#include "app/Session.h"
#include "app/SingleInstance.h"
#include "app/VXAppDelegate.h"
#include "app/VXApplication.h"
#include "editing/compare/CompareReport.h"
#include "editing/merge/MergeOpening.h"
#include "editing/problems/CheckReport.h"
#include "editing/search/OnlyRecords.h"
#include "editing/search/SearchColumns.h"
#include "editing/window/WindowSettings.h"
#include "merge/GitSetup.h"
#include "merge/TextConversion.h"
#include "platform/FilePath.h"
#include "platform/PlainText.h"
#include "platform/TurningWindows.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/RescueFiles.h"
#include "scripting/menu/HeadlessRun.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptRun.h"

#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QTextStream>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <optional>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kWrongUse = 2;

/// Whether the files may be read as they are: beside none of them lies what a save that did not end has left,
/// unless the user says that this does not matter. To be asked by every mode without windows, before anything
/// is read.
bool areWhole(const CommandLine &line)
{
    Error error;
    QStringList files = line.files;
    files.removeAll(u"-"_s); // the standard input
    if (line.ignoresRescue || !RescueFiles::areMet(files, &error))
        return true;
    QTextStream(stderr) << "runebook: " << error.text() << '\n';
    return false;
}

int compare(const CommandLine &line)
{
    if (!areWhole(line))
        return kWrongUse;
    QTextStream output(stdout);
    Error error;
    const int status = compareFiles(line.files.at(0), line.files.at(1), *compareKeyFromWord(line.compareKey),
                                    line.asJson ? ReportFormat::Json : ReportFormat::Text, output, &error);
    if (!error.domain.isEmpty())
        QTextStream(stderr) << error.text() << '\n';
    return status;
}

int check(const CommandLine &line)
{
    if (!areWhole(line))
        return kWrongUse;
    QTextStream output(stdout);
    QTextStream errors(stderr);
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return kWrongUse;
    Error error;
    const std::optional<OnlyRecords> only = OnlyRecords::of(line.only, &error);
    if (!only) {
        errors << "runebook: " << terminalText(error.text().replace(u'\n', u' ')) << '\n';
        return kWrongUse;
    }
    RecordChoice choice;
    if (only->predicate)
        choice = [&only](const VXDocument &document, Error *reason) {
            return SearchColumns(document).evaluate(*only->predicate, reason);
        };
    CheckOptions options {line.asJson ? ReportFormat::Json : ReportFormat::Text, line.isStrict, 0};
    for (const QString &id : line.leftOutKinds)
        options.leftOut |= setOf(*problemKindOfId(id));
    return static_cast<int>(checkFiles(line.files, options, output, errors, input, choice));
}

int merge(const CommandLine &line)
{
    if (!areWhole(line))
        return kWrongUse;
    QTextStream output(stdout);
    QTextStream errors(stderr);
    return static_cast<int>(mergeFiles(line.merge, output, errors));
}

int convert(const CommandLine &line)
{
    if (!areWhole(line))
        return kWrongUse;
    QFile output;
    QTextStream errors(stderr);
    if (!output.open(stdout, QIODevice::WriteOnly))
        return kWrongUse;
    const FileConversion::Outcome outcome = line.conversion.run(output, errors);
    return output.flush() ? static_cast<int>(outcome) : kWrongUse;
}

int convertToText(const CommandLine &line)
{
    QFile output;
    Error error;
    if (output.open(stdout, QIODevice::WriteOnly) && convertFileToText(line.files.at(0), output, &error)
        && output.flush())
        return 0;
    QTextStream(stderr) << "runebook: " << error.text() << '\n';
    return kWrongUse;
}

int setUpGit(const CommandLine &line)
{
    Error error;
    const GitScope scope = line.isForUser ? GitScope::User : GitScope::Repository;
    if (!setUpGit(QCoreApplication::applicationFilePath(), scope, &error)) {
        QTextStream(stderr) << "runebook: " << error.text() << '\n';
        return kWrongUse;
    }
    QTextStream(stdout) << gitAttributeLines();
    return 0;
}

int withoutWindows(const CommandLine &line)
{
    switch (line.mode) {
    case CommandLine::Mode::Help:
    case CommandLine::Mode::Version:
        QTextStream(stdout) << line.message << '\n';
        return 0;
    case CommandLine::Mode::Compare:
        return compare(line);
    case CommandLine::Mode::Check:
        return check(line);
    case CommandLine::Mode::Merge:
        return merge(line);
    case CommandLine::Mode::Conversion:
        return convert(line);
    case CommandLine::Mode::TextConversion:
        return convertToText(line);
    case CommandLine::Mode::GitSetup:
        return setUpGit(line);
    default:
        QTextStream(stderr) << line.message << '\n';
        return kWrongUse;
    }
}

int runScript(const CommandLine &line)
{
    if (!areWhole(line))
        return kWrongUse;
    UserDefaults::standard().keepForThisRun(windowSettingKeys());
    VXAppDelegate delegate;
    HeadlessOptions options;
    options.script = line.script;
    options.code = line.code;
    options.arguments = line.scriptArguments;
    options.requiredPython = line.requiredPython;
    if (!line.stubsFolder.isEmpty()) {
        options.code = u"import runebook_stubs\nrunebook_stubs.write(sys.argv[1])\n"_s;
        options.arguments = QStringList(line.stubsFolder);
    }
    options.savesFiles = line.savesFiles;
    options.answers = line.answers;
    options.losesValues = line.losesValues;
    options.files = line.files;
    options.prepare = [&delegate] { delegate.startScripting(); };
    return runHeadless(options);
}

/// Whether the program only shows how long a start takes.
bool isMeasured()
{
    return qEnvironmentVariableIsSet("RUNEBOOK_QUIT_AFTER_START");
}

/// Tells when the first window is painted, or soon after it should have been.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(std::function<void()> then) : m_then(std::move(then))
    {
        constexpr int kLatestMs = 1'000;
        qApp->installEventFilter(this);
        QTimer::singleShot(kLatestMs, this, [this] { tell(); });
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        const auto *widget = event->type() == QEvent::Paint ? qobject_cast<QWidget *>(object) : nullptr;
        if (widget && widget->isWindow()) {
            qApp->removeEventFilter(this);
            // The window's parts are painted in the same turn. Posted, not timed: idle work comes later.
            QMetaObject::invokeMethod(
                this, [this] { tell(); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    void tell()
    {
        if (const auto then = std::exchange(m_then, {}))
            then();
    }

    std::function<void()> m_then;
};

int showWindows(const CommandLine &line)
{
    QApplication::setWindowIcon(QIcon(u":/icons/runebook.svg"_s));
    SingleInstance instance(line.startsNewInstance ? QString() : SingleInstance::standardSocketPath());
    QStringList files;
    for (const QString &file : line.files)
        files << QFileInfo(pathFromURL(file)).absoluteFilePath();
    if (instance.claim(files) == SingleInstance::Role::Second)
        return 0;
    VXAppDelegate delegate;
    const LastWindow lastWindow;
    LeaveOnSignal leaving([&delegate] {
        TurningWindows::waitForWork(); // a save that is being done comes to its end
        std::optional<TurningWindows> turning;
        if (!ScriptRun::isRunning()) // which waits in the middle of something
            turning.emplace(QCoreApplication::translate("main", "Keeping unsaved changes…"));
        delegate.keepForNextStart();
    });
    QObject::connect(&RunPump::shared(), &RunPump::pumped, &leaving, &LeaveOnSignal::look);
    QObject::connect(&instance, &SingleInstance::filesReceived, &delegate, &VXAppDelegate::openFromElsewhere);
    const RunWatch runWatch(&Session::capture);
    const FirstPaint starting([&delegate] {
        delegate.applicationDidFinishLaunching();
        if (isMeasured())
            QMetaObject::invokeMethod(
                qApp, [] { QApplication::quit(); }, Qt::QueuedConnection);
    });
    const std::optional<ReopenedSession> session = ReopenedSession::take(line.sessionFile);
    if (session)
        delegate.reopen(session->windows, session->process);
    else
        delegate.openAtStart(files);
    const int status = QApplication::exec();
    finishScripts();
    return status;
}

/// A window for one merge, on its own: neither session nor running program have to do with it.
int resolveInWindow(const CommandLine &line)
{
    if (!areWhole(line))
        return kWrongUse;
    QApplication::setWindowIcon(QIcon(u":/icons/runebook.svg"_s));
    VXAppDelegate delegate;
    delegate.leaveSessionAlone();
    const LastWindow lastWindow;
    const MergeRequest &request = line.merge;
    // Of what both sides added version control has no base.
    const bool hasBase = QFileInfo::exists(request.base);
    const MergeSources sources {MergeSource {{}, hasBase ? request.base : QString()},
                                MergeSource {{}, request.ours}, MergeSource {{}, request.theirs}};
    MergeTitles titles;
    for (std::size_t side = 0; side < titles.size(); ++side)
        titles[side] = QFileInfo(line.files.at(qsizetype(side))).fileName();
    Error error;
    PreparedMerge prepared = prepareMerge(sources, request.key);
    MergeWindow *window = showMergeInto(std::move(prepared), titles, request.output, &error);
    if (!window) {
        QTextStream(stderr) << "runebook: " << terminalText(error.text()) << '\n';
        return 1;
    }
    int status = 1;
    QObject::connect(window->resolution().document(), &Document::saved, window,
                     [&status, window] { status = window->resolution().openCount() > 0; });
    std::optional<FirstPaint> measured;
    if (isMeasured())
        measured.emplace([&status] {
            status = 0;
            QCoreApplication::exit();
        });
    QApplication::exec();
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setApplicationName(u"runebook"_s);
    QApplication::setApplicationDisplayName(VXAppDelegate::applicationName());
    QCoreApplication::setApplicationVersion(QStringLiteral(RUNEBOOK_VERSION));
    QGuiApplication::setDesktopFileName(u"org.runebook.Runebook"_s);

    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << pathFromNative(argv[i]);
    const CommandLine line = parseCommandLine(arguments);
    if (line.mode == CommandLine::Mode::Script) {
        const auto app = makeHeadless<VXApplication>(argc, argv);
        return runScript(line);
    }
    if (line.mode == CommandLine::Mode::WatchRun) {
        const QApplication app(argc, argv);
        return showRunWatchWindow(line.sessionFile, line.files.at(0), line.files.at(1));
    }
    if (line.mode != CommandLine::Mode::Windows && line.mode != CommandLine::Mode::MergeTool) {
        const QCoreApplication app(argc, argv);
        return withoutWindows(line);
    }
    if (!hasDisplay()) {
        QTextStream(stderr) << QCoreApplication::translate(
            "main",
            "No display: Runebook cannot show a window here. “runebook --help” lists what works without "
            "one.\n");
        return 1;
    }
    try {
        const VXApplication app(argc, argv);
        return line.mode == CommandLine::Mode::MergeTool ? resolveInWindow(line) : showWindows(line);
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "exception %s\n", exception.what());
        return 0;
    }
}
