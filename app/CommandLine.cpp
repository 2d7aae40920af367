#include "app/CommandLine.h"

#include "editing/compare/CompareReport.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

CommandLine wrong(const QString &message)
{
    CommandLine line;
    line.mode = CommandLine::Mode::Wrong;
    line.message = message + u'\n' + Texts::tr("Try “runebook --help”.");
    return line;
}

} // namespace

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        || qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

CommandLine parseCommandLine(const QStringList &allArguments)
{
    // Behind "--" stands what is meant for the script; without one there are only more files.
    const auto isScript = [](const QString &argument) {
        return argument.startsWith("--run"_L1) || argument.startsWith("--eval"_L1);
    };
    const qsizetype end = allArguments.indexOf("--"_L1);
    const bool isForScript =
        end >= 0 && std::any_of(allArguments.begin(), allArguments.begin() + end, isScript);
    const QStringList arguments = isForScript ? allArguments.first(end) : allArguments;
    QCommandLineParser parser;
    parser.setApplicationDescription(Texts::tr("An editor for glyph data files."));
    parser.addPositionalArgument(u"file"_s, Texts::tr("Glyph data files (.xml) and tables (.txt) to open."),
                                 u"[file...]"_s);
    const QCommandLineOption help(u"help"_s, Texts::tr("Show this help."));
    const QCommandLineOption version(u"version"_s, Texts::tr("Show the version."));
    const QCommandLineOption compare(
        u"compare"_s,
        Texts::tr("Compare two files and print the differences: 0 equal, 1 different, 2 unreadable."));
    const QCommandLineOption key(
        u"key"_s, Texts::tr("With --compare: what tells glyphs apart, name, unicode or production."),
        u"key"_s, u"name"_s);
    const QCommandLineOption check(
        u"check"_s,
        Texts::tr(
            "Read the files (- is the standard input) and print every problem in them: 0 none, 1 some, 2 "
            "unreadable."));
    const QCommandLineOption json(u"json"_s, Texts::tr("With --compare and --check: print JSON."));
    const QCommandLineOption run(
        u"run"_s,
        Texts::tr("Run a Python script on the files, without windows: 0 done, 1 the script failed, 2 wrong "
                  "input, 3 no supported Python."),
        u"script"_s);
    const QCommandLineOption eval(u"eval"_s, Texts::tr("The same with code instead of a script file."),
                                  u"code"_s);
    const QCommandLineOption save(u"save"_s,
                                  Texts::tr("With --run and --eval: write the files that were changed."));
    const QCommandLineOption ignoreRescue(
        u"ignore-rescue"_s,
        Texts::tr("Without windows: go on although an interrupted save of a file has left a rescue file."));
    const QCommandLineOption answer(
        u"answer"_s,
        Texts::tr("With --run and --eval: what the script gets when it asks for KEY; may be repeated."),
        u"KEY=VALUE"_s);
    const QCommandLineOption lossy(
        u"lossy"_s,
        Texts::tr("With --save: write files even where they cannot hold all values; a copy of the file "
                  "as it was is kept."));
    const QCommandLineOption requirePython(
        u"require-python"_s,
        Texts::tr("With --run and --eval: the oldest Python that will do; else status 3."), u"version"_s);
    const QCommandLineOption stubs(u"python-stubs"_s,
                                   Texts::tr("Write typing stubs of what scripts can import into a folder."),
                                   u"folder"_s);
    const QCommandLineOption newInstance(
        u"new-instance"_s,
        Texts::tr("Start on its own, even when Runebook runs already; the files would go to it."));
    // Between the program and itself; see RunWatch.
    QCommandLineOption watchRun(u"watch-run"_s, {}, u"session"_s);
    QCommandLineOption reopen(u"reopen"_s, {}, u"session"_s);
    for (QCommandLineOption *option : {&watchRun, &reopen})
        option->setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({help, version, compare, key, check, json, run, eval, save, lossy, answer, ignoreRescue,
                       requirePython, stubs, newInstance, watchRun, reopen});

    CommandLine line;
    if (!parser.parse(arguments))
        return wrong(parser.errorText());
    line.files = parser.positionalArguments();
    line.compareKey = parser.value(key);
    line.asJson = parser.isSet(json);
    line.ignoresRescue = parser.isSet(ignoreRescue);
    line.losesValues = parser.isSet(lossy);
    line.startsNewInstance = parser.isSet(newInstance);
    line.sessionFile = parser.value(parser.isSet(watchRun) ? watchRun : reopen);
    if (parser.isSet(watchRun)) {
        line.mode = CommandLine::Mode::WatchRun;
        if (line.files.size() != 2)
            return wrong(Texts::tr("--watch-run takes a name and a time."));
    } else if (parser.isSet(help)) {
        line.mode = CommandLine::Mode::Help;
        line.message = parser.helpText();
    } else if (parser.isSet(version)) {
        line.mode = CommandLine::Mode::Version;
        line.message = "Runebook "_L1 + QStringLiteral(RUNEBOOK_VERSION);
    } else if (parser.isSet(check)) {
        line.mode = CommandLine::Mode::Check;
        if (line.files.isEmpty())
            return wrong(Texts::tr("--check takes files."));
    } else if (parser.isSet(run) || parser.isSet(eval)) {
        if (parser.isSet(run) && parser.isSet(eval))
            return wrong(Texts::tr("--run and --eval exclude each other."));
        line.mode = CommandLine::Mode::Script;
        line.script = parser.value(run);
        line.code = parser.value(eval);
        line.savesFiles = parser.isSet(save);
        for (const QString &each : parser.values(answer)) {
            const qsizetype equals = each.indexOf(u'=');
            if (equals < 1)
                return wrong(Texts::tr("--answer takes KEY=VALUE."));
            line.answers.insert(each.left(equals), each.mid(equals + 1));
        }
        if (isForScript)
            line.scriptArguments = allArguments.mid(end + 1);
        line.requiredPython = parser.value(requirePython);
        static const QRegularExpression wellFormed(u"^3(\\.\\d{1,2})?$"_s);
        if (parser.isSet(requirePython) && !wellFormed.match(line.requiredPython).hasMatch())
            return wrong(Texts::tr("--require-python takes a version such as 3.10."));
    } else if (parser.isSet(stubs)) {
        line.mode = CommandLine::Mode::Script;
        line.stubsFolder = parser.value(stubs);
    } else if (parser.isSet(compare)) {
        line.mode = CommandLine::Mode::Compare;
        if (line.files.size() != 2)
            return wrong(Texts::tr("--compare takes two files."));
        if (!compareKeyFromWord(line.compareKey))
            return wrong(Texts::tr("--key takes name, unicode or production."));
    }
    return line;
}

} // namespace runebook
