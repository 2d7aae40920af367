#include "app/CommandLine.h"

#include "editing/problems/ProblemKinds.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

enum class Shown : quint8 { InHelp, No };

struct Option {
    const char *name;
    const char *description;
    const char *valueName = nullptr; ///< null for one without a value
    const char *fallback = nullptr;
    Shown shown = Shown::InHelp;
};

constexpr Option kOptions[] {
    {"help", QT_TRANSLATE_NOOP("CommandLine", "Show this help.")},
    {"version", QT_TRANSLATE_NOOP("CommandLine", "Show the version.")},
    {"compare",
     QT_TRANSLATE_NOOP("CommandLine",
                       "Compare two files and print the differences: 0 equal, 1 different, 2 unreadable.")},
    {"merge",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "Merge three files, BASE OURS THEIRS, into OURS: 0 merged, 1 conflicts, 2 unreadable.")},
    {"mergetool",
     QT_TRANSLATE_NOOP("CommandLine",
                       "Resolve the conflicts of BASE OURS THEIRS in a window and save OUT: 0 saved without "
                       "conflicts, 1 otherwise.")},
    {"key",
     QT_TRANSLATE_NOOP("CommandLine",
                       "With --compare and --merge: what tells glyphs apart, name, unicode or production."),
     "key", "name"},
    {"output", QT_TRANSLATE_NOOP("CommandLine", "With --merge: the file to write instead of OURS."), "file"},
    {"prefer",
     QT_TRANSLATE_NOOP("CommandLine", "With --merge: the side that is right in conflicts, ours or theirs."),
     "side"},
    {"marker-size",
     QT_TRANSLATE_NOOP("CommandLine", "With --merge: the characters of a marker of conflicts, 7 or more."),
     "number", "7"},
    {"path", QT_TRANSLATE_NOOP("CommandLine", "With --merge: what reports and markers call the file."),
     "path"},
    {"convert",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "Write the file IN as OUT (- is the standard output): glyph data (.xml) or a table (.txt, "
         ".tsv, .csv), as the suffixes tell: 0 written, 1 something would be lost, 2 wrong input.")},
    {"fields",
     QT_TRANSLATE_NOOP("CommandLine", "With --convert: the columns of the table, such as name,unicode."),
     "fields"},
    {"only",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "With --convert and --check: the records that meet a filter, such as 'script == \"latin\"', "
         "the name of a saved one, or that a search finds, as in the window."),
     "filter"},
    {"textconv", QT_TRANSLATE_NOOP("CommandLine", "Print a file with one field a line, for git diff.")},
    {"git-setup",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "Have git merge and show glyph data with Runebook, in the repository of this folder.")},
    {"global", QT_TRANSLATE_NOOP("CommandLine", "With --git-setup: in all repositories of yours.")},
    {"check",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "Read the files (- is the standard input) and print every problem in them: 0 none, 1 some, 2 "
         "unreadable.")},
    {"strict", QT_TRANSLATE_NOOP("CommandLine", "With --check: hints count as problems.")},
    {"ignore",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "With --check: kinds of problems and hints not to tell, such as missing-mark,font-name."),
     "kinds"},
    {"json", QT_TRANSLATE_NOOP("CommandLine", "With --compare, --merge and --check: print JSON.")},
    {"run",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "Run a Python script on the files, without windows: 0 done, 1 the script failed, 2 wrong "
         "input, 3 no supported Python."),
     "script"},
    {"eval", QT_TRANSLATE_NOOP("CommandLine", "The same with code instead of a script file."), "code"},
    {"save", QT_TRANSLATE_NOOP("CommandLine", "With --run and --eval: write the files that were changed.")},
    {"lossy",
     QT_TRANSLATE_NOOP("CommandLine",
                       "With --save: write files even where they cannot hold all values; a copy of the file "
                       "as it was is kept. With --convert: write the file although something is lost.")},
    {"answer",
     QT_TRANSLATE_NOOP("CommandLine",
                       "With --run and --eval: what the script gets when it asks for KEY; may be repeated."),
     "KEY=VALUE"},
    {"ignore-rescue",
     QT_TRANSLATE_NOOP(
         "CommandLine",
         "Without windows: go on although an interrupted save of a file has left a rescue file.")},
    {"require-python",
     QT_TRANSLATE_NOOP("CommandLine",
                       "With --run and --eval: the oldest Python that will do; else status 3."),
     "version"},
    {"python-stubs",
     QT_TRANSLATE_NOOP("CommandLine", "Write typing stubs of what scripts can import into a folder."),
     "folder"},
    {"new-instance",
     QT_TRANSLATE_NOOP("CommandLine",
                       "Start on its own, even when Runebook runs already; the files would go to it.")},
    // Between the program and itself; see RunWatch.
    {"watch-run", nullptr, "session", nullptr, Shown::No},
    {"reopen", nullptr, "session", nullptr, Shown::No},
};

QCommandLineOption optionOf(const Option &each)
{
    const auto text = [](const char *words) { return QString::fromUtf8(words); };
    QCommandLineOption option(text(each.name), each.description ? Texts::tr(each.description) : QString(),
                              text(each.valueName), text(each.fallback));
    if (each.shown == Shown::No)
        option.setFlags(QCommandLineOption::HiddenFromHelp);
    return option;
}

CommandLine wrong(const QString &message)
{
    CommandLine line;
    line.mode = CommandLine::Mode::Wrong;
    line.message = message + u'\n' + Texts::tr("Try “runebook --help”.");
    return line;
}

// What the options of one mode say. Each answers why that is wrong use; null when it is not.

QString takeWatch(const QCommandLineParser &, CommandLine &line)
{
    return line.files.size() == 2 ? QString() : Texts::tr("--watch-run takes a name and a time.");
}

QString takeHelp(const QCommandLineParser &parser, CommandLine &line)
{
    line.message = parser.helpText();
    return {};
}

QString takeVersion(const QCommandLineParser &, CommandLine &line)
{
    line.message = "Runebook "_L1 + QStringLiteral(RUNEBOOK_VERSION);
    return {};
}

QString takeCheck(const QCommandLineParser &parser, CommandLine &line)
{
    line.isStrict = parser.isSet(u"strict"_s);
    line.leftOutKinds = parser.value(u"ignore"_s).split(u',', Qt::SkipEmptyParts);
    for (const QString &id : std::as_const(line.leftOutKinds)) {
        const auto kind = problemKindOfId(id);
        if (!kind || !(setOf(*kind) & kOptionalKinds))
            return Texts::tr("--ignore takes kinds of problems of records, separated by commas; %1 is none.")
                .arg(id);
    }
    return line.files.isEmpty() ? Texts::tr("--check takes files.") : QString();
}

QString takeScript(const QCommandLineParser &parser, CommandLine &line)
{
    if (parser.isSet(u"run"_s) && parser.isSet(u"eval"_s))
        return Texts::tr("--run and --eval exclude each other.");
    line.script = parser.value(u"run"_s);
    line.code = parser.value(u"eval"_s);
    line.savesFiles = parser.isSet(u"save"_s);
    for (const QString &each : parser.values(u"answer"_s)) {
        const qsizetype equals = each.indexOf(u'=');
        if (equals < 1)
            return Texts::tr("--answer takes KEY=VALUE.");
        line.answers.insert(each.left(equals), each.mid(equals + 1));
    }
    line.requiredPython = parser.value(u"require-python"_s);
    static const QRegularExpression wellFormed(u"^3(\\.\\d{1,2})?$"_s);
    if (parser.isSet(u"require-python"_s) && !wellFormed.match(line.requiredPython).hasMatch())
        return Texts::tr("--require-python takes a version such as 3.10.");
    return {};
}

QString takeStubs(const QCommandLineParser &parser, CommandLine &line)
{
    line.stubsFolder = parser.value(u"python-stubs"_s);
    return {};
}

QString takeCompare(const QCommandLineParser &, CommandLine &line)
{
    if (line.files.size() != 2)
        return Texts::tr("--compare takes two files.");
    if (!compareKeyFromWord(line.compareKey))
        return Texts::tr("--key takes name, unicode or production.");
    return {};
}

QString takeMerge(const QCommandLineParser &parser, CommandLine &line)
{
    constexpr int kShortestMarker = 7;
    constexpr int kLongestMarker = 1000;
    if (line.files.size() != 3)
        return Texts::tr("--merge takes three files: BASE OURS THEIRS.");
    const auto key = compareKeyFromWord(line.compareKey);
    if (!key)
        return Texts::tr("--key takes name, unicode or production.");
    const QString side = parser.value(u"prefer"_s);
    if (parser.isSet(u"prefer"_s) && side != "ours"_L1 && side != "theirs"_L1)
        return Texts::tr("--prefer takes ours or theirs.");
    line.merge = {.base = line.files.at(0),
                  .ours = line.files.at(1),
                  .theirs = line.files.at(2),
                  .output = parser.value(u"output"_s),
                  .path = parser.value(u"path"_s),
                  .key = *key,
                  .prefer = {},
                  .markerSize = parser.value(u"marker-size"_s).toInt(),
                  .asJson = line.asJson};
    if (!side.isEmpty())
        line.merge.prefer = side == "ours"_L1 ? MergeSide::Ours : MergeSide::Theirs;
    if (line.merge.markerSize < kShortestMarker || line.merge.markerSize > kLongestMarker)
        return Texts::tr("--marker-size takes a number, 7 or more.");
    return {};
}

QString takeMergeTool(const QCommandLineParser &, CommandLine &line)
{
    if (line.files.size() != 4)
        return Texts::tr("--mergetool takes four files: BASE OURS THEIRS OUT.");
    const auto key = compareKeyFromWord(line.compareKey);
    if (!key)
        return Texts::tr("--key takes name, unicode or production.");
    line.merge = {.base = line.files.at(0),
                  .ours = line.files.at(1),
                  .theirs = line.files.at(2),
                  .output = line.files.at(3),
                  .path = {},
                  .key = *key,
                  .prefer = {}};
    return {};
}

QString takeConversion(const QCommandLineParser &parser, CommandLine &line)
{
    if (line.files.size() != 2)
        return Texts::tr("--convert takes two files: IN OUT.");
    line.conversion = {.input = line.files.at(0),
                       .output = line.files.at(1),
                       .fields = parser.value(u"fields"_s).split(u',', Qt::SkipEmptyParts),
                       .search = line.only,
                       .losesValues = line.losesValues};
    if (parser.isSet(u"fields"_s) && line.conversion.fields.isEmpty())
        return Texts::tr("--fields takes fields, such as name,unicode.");
    return {};
}

QString takeTextConversion(const QCommandLineParser &, CommandLine &line)
{
    return line.files.size() == 1 ? QString() : Texts::tr("--textconv takes one file.");
}

QString takeGitSetup(const QCommandLineParser &parser, CommandLine &line)
{
    line.isForUser = parser.isSet(u"global"_s);
    return line.files.isEmpty() ? QString() : Texts::tr("--git-setup takes no files.");
}

/// Which option stands for which mode; of several the first counts.
constexpr struct {
    const char *option;
    CommandLine::Mode mode;
    QString (*take)(const QCommandLineParser &parser, CommandLine &line);
} kModes[] {
    {"watch-run", CommandLine::Mode::WatchRun, &takeWatch},
    {"help", CommandLine::Mode::Help, &takeHelp},
    {"version", CommandLine::Mode::Version, &takeVersion},
    {"check", CommandLine::Mode::Check, &takeCheck},
    {"run", CommandLine::Mode::Script, &takeScript},
    {"eval", CommandLine::Mode::Script, &takeScript},
    {"python-stubs", CommandLine::Mode::Script, &takeStubs},
    {"compare", CommandLine::Mode::Compare, &takeCompare},
    {"merge", CommandLine::Mode::Merge, &takeMerge},
    {"mergetool", CommandLine::Mode::MergeTool, &takeMergeTool},
    {"convert", CommandLine::Mode::Conversion, &takeConversion},
    {"textconv", CommandLine::Mode::TextConversion, &takeTextConversion},
    {"git-setup", CommandLine::Mode::GitSetup, &takeGitSetup},
};

/// Where what is meant for the script begins: behind "--"; -1 without a script, when only more files follow.
qsizetype endOfOptions(const QStringList &arguments)
{
    const auto isScript = [](const QString &argument) {
        return argument.startsWith("--run"_L1) || argument.startsWith("--eval"_L1);
    };
    const qsizetype end = arguments.indexOf("--"_L1);
    const bool isForScript = end >= 0 && std::any_of(arguments.begin(), arguments.begin() + end, isScript);
    return isForScript ? end : -1;
}

} // namespace

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        || qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

CommandLine parseCommandLine(const QStringList &arguments)
{
    const qsizetype end = endOfOptions(arguments);
    QCommandLineParser parser;
    parser.setApplicationDescription(Texts::tr("An editor for glyph data files."));
    parser.addPositionalArgument(u"file"_s,
                                 Texts::tr("Glyph data files (.xml) and tables (.txt, .tsv, .csv) to open."),
                                 u"[file...]"_s);
    for (const Option &option : kOptions)
        parser.addOption(optionOf(option));
    if (!parser.parse(end < 0 ? arguments : arguments.first(end)))
        return wrong(parser.errorText());

    CommandLine line;
    line.files = parser.positionalArguments();
    line.compareKey = parser.value(u"key"_s);
    line.asJson = parser.isSet(u"json"_s);
    if (parser.isSet(u"only"_s))
        line.only = parser.value(u"only"_s);
    line.ignoresRescue = parser.isSet(u"ignore-rescue"_s);
    line.losesValues = parser.isSet(u"lossy"_s);
    line.startsNewInstance = parser.isSet(u"new-instance"_s);
    line.sessionFile = parser.value(parser.isSet(u"watch-run"_s) ? u"watch-run"_s : u"reopen"_s);
    if (end >= 0)
        line.scriptArguments = arguments.mid(end + 1);
    for (const auto &each : kModes) {
        if (!parser.isSet(QString::fromUtf8(each.option)))
            continue;
        line.mode = each.mode;
        // Whoever thinks that a script is given only some records must hear that it is not.
        using enum CommandLine::Mode;
        const bool takesOnly =
            each.mode == Check || each.mode == Conversion || each.mode == Help || each.mode == Version;
        if (!line.only.isNull() && !takesOnly)
            return wrong(Texts::tr("--only goes with --convert and --check; a script filters by itself."));
        const QString objection = each.take(parser, line);
        return objection.isNull() ? line : wrong(objection);
    }
    return line;
}

} // namespace runebook
