#include "app/CommandLine.h"
#include "app/VXAppDelegate.h"
#include "editing/CompareReport.h"
#include "scripting/HeadlessRun.h"

#include <QApplication>
#include <QIcon>
#include <QTextStream>
#include <cstdio>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kWrongUse = 2;

int compare(const CommandLine &line)
{
    QTextStream output(stdout);
    Error error;
    const int status = compareFiles(line.files.at(0), line.files.at(1), *compareKeyFromWord(line.compareKey),
                                    line.asJson ? ReportFormat::Json : ReportFormat::Text, output, &error);
    if (!error.domain.isEmpty())
        QTextStream(stderr) << error.text() << '\n';
    return status;
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
    default:
        QTextStream(stderr) << line.message << '\n';
        return kWrongUse;
    }
}

int runScript(QApplication &app, const CommandLine &line)
{
    Q_UNUSED(app)
    VXAppDelegate delegate;
    HeadlessOptions options;
    options.script = line.script;
    options.code = line.code;
    options.savesFiles = line.savesFiles;
    options.files = line.files;
    return runHeadless(options);
}

int showWindows(QApplication &app, const CommandLine &line)
{
    QApplication::setWindowIcon(QIcon(u":/icons/runebook.svg"_s));
    QApplication::setQuitOnLastWindowClosed(true);
    VXAppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    delegate.openAtStart(line.files);
    return app.exec();
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
        arguments << QString::fromLocal8Bit(argv[i]);
    const CommandLine line = parseCommandLine(arguments);
    if (line.mode == CommandLine::Mode::Script) {
        useHeadlessPlatform();
        QApplication app(argc, argv);
        return runScript(app, line);
    }
    if (line.mode != CommandLine::Mode::Windows) {
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
        QApplication app(argc, argv);
        return showWindows(app, line);
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "exception %s\n", exception.what());
        return 0;
    }
}
