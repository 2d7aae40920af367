#include "app/CommandLine.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/Files.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QStandardPaths>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

struct Outcome {
    int status = -1;
    QString output;
    QString errors;
};

/// Runs the built program with the environment of this test.
Outcome run(const QStringList &arguments, const QStringList &withoutVariables = {})
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &variable : withoutVariables)
        environment.remove(variable);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook"), arguments);
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

/// The program as it is started from a terminal or a Makefile.
class ProgramTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(answersWithoutADisplay,
          (const QStringList &arguments, int status, const QString &output, const QString &errors), {
              row("help", {u"--help"_s}, 0, "--compare", "");
              row("version", {u"--version"_s}, 0, u"Runebook " RUNEBOOK_VERSION ""_s, "");
              row("unknown option", {u"--colour"_s}, 2, "", "--help");
              row("one file to compare", {u"--compare"_s, u"a.xml"_s}, 2, "", "two files");
              row("unknown key", {u"--compare"_s, u"a"_s, u"b"_s, u"--key"_s, u"colour"_s}, 2, "", "--key");
              row("a version", {u"--eval"_s, u"1"_s, u"--require-python"_s, u"3.x"_s}, 2, "", "3.10");
              row("files that are not there", {u"--compare"_s, u"/no/a.xml"_s, u"/no/b.xml"_s}, 2, "",
                  "/no/a.xml");
              row("two files to merge", {u"--merge"_s, u"a"_s, u"b"_s}, 2, "", "three files");
              row("a side that is none", {u"--merge"_s, u"a"_s, u"b"_s, u"c"_s, u"--prefer"_s, u"base"_s}, 2,
                  "", "--prefer");
              row("a short marker", {u"--merge"_s, u"a"_s, u"b"_s, u"c"_s, u"--marker-size"_s, u"3"_s}, 2, "",
                  "--marker-size");
              row("nothing to merge", {u"--merge"_s, u"/no/a.xml"_s, u"/no/b.xml"_s, u"/no/c.xml"_s}, 2, "",
                  "/no/a.xml");
              row("one file to convert", {u"--convert"_s, u"a.xml"_s}, 2, "", "two files");
              row("no file to convert", {u"--convert"_s, u"/no/a.csv"_s, u"-"_s}, 2, "", "/no/a.csv");
              row("nothing to convert", {u"--textconv"_s, u"/no/a.xml"_s}, 2, "", "/no/a.xml");
              row("a window", {}, 1, "", "No display");
          })
    {
        const Outcome outcome = run(arguments, {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s});
        QCOMPARE(outcome.status, status);
        QVERIFY2(outcome.output.contains(output), qPrintable(outcome.output));
        QVERIFY2(outcome.errors.contains(errors), qPrintable(outcome.errors));
        QVERIFY(!outcome.output.contains("--watch-run"_L1)); // what the program says to itself
    }

    void comparesTwoFiles()
    {
        const QTemporaryDir folder;
        const QString sample = QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml");
        const QByteArray changed =
            contentOf(sample).replace("name=\"A\" ", "name=\"A\" sortName=\"changed\" ");
        const QString copy = write(folder.filePath(u"copy.xml"_s), changed);
        QCOMPARE(run({u"--compare"_s, sample, sample}).status, 0);
        const Outcome different = run({u"--compare"_s, sample, copy});
        QCOMPARE(different.status, 1);
        QVERIFY2(different.output.contains(u"changed"_s), qPrintable(different.output));
        const Outcome json = run({u"--compare"_s, sample, copy, u"--json"_s});
        QCOMPARE(json.status, 1);
        QVERIFY(QJsonDocument::fromJson(json.output.toUtf8()).array().size() >= 1);
    }

    TABLE(mergesThreeFiles,
          (const QStringList &options, const QByteArray &theirs, int status, const QByteArray &result,
           const QString &output, const QString &errors),
          {
              const QByteArray other = "name=\"b\" category=\"T\"";
              row("nothing in conflict", {}, other, 0, "category=\"T\"", "1 from ours, 1 from theirs", "");
              row("a conflict", {}, "name=\"a\" category=\"T\"", 1,
                  "<<<<<<< ours: ", "a.category: ours O, base (none), theirs T", "");
              row("long markers", {u"--marker-size=9"_s, u"--path=g.xml"_s}, "name=\"a\" category=\"T\"", 1,
                  "\n>>>>>>>>> theirs: g.xml\n", "g.xml: ", "");
              row("ours preferred", {u"--prefer=ours"_s}, "name=\"a\" category=\"T\"", 0,
                  "name=\"a\" category=\"O\"", "0 conflicts", "");
              row("theirs preferred", {u"--prefer=theirs"_s}, "name=\"a\" category=\"T\"", 0,
                  "name=\"a\" category=\"T\"", "0 conflicts", "");
              row("as JSON", {u"--json"_s}, "name=\"a\" category=\"T\"", 1,
                  "=======", "\"field\":\"category\",\"key\":\"a\"", "");
              row("no text", {}, "name=\"b\" category=\"\xFF\"", 2, "\xFF", "", "not UTF-8");
          })
    {
        const QTemporaryDir folder;
        const QByteArray base = "<glyphData>\n\t<glyph name=\"a\" />\n\t<glyph name=\"b\" />\n</glyphData>\n";
        QByteArray ourText = base, theirText = base;
        ourText.replace("name=\"a\"", "name=\"a\" category=\"O\"");
        theirText.replace(theirs.first(8), theirs);
        const QString ours = write(folder.filePath(u"ours.xml"_s), ourText);
        const QStringList files {write(folder.filePath(u"base.xml"_s), base), ours,
                                 write(folder.filePath(u"theirs.xml"_s), theirText)};
        const QString out = folder.filePath(u"out.xml"_s);
        const Outcome elsewhere = run(QStringList {u"--merge"_s, u"--output"_s, out} + options + files);
        QCOMPARE(elsewhere.status, status);
        QVERIFY2(elsewhere.output.contains(output), qPrintable(elsewhere.output));
        QVERIFY2(elsewhere.errors.contains(errors), qPrintable(elsewhere.errors));
        const QByteArray merged = contentOf(out);
        QVERIFY2(merged.contains(result)
                     && merged.contains("category=\"O\"") == !options.contains(u"--prefer=theirs"_s),
                 merged.constData());
        QCOMPARE(contentOf(ours), ourText);
        QCOMPARE(run(QStringList {u"--merge"_s} + options + files).status, status);
        QCOMPARE(contentOf(ours), merged);
    }

    void conflictsStopWhatHasNoWindow()
    {
        const QTemporaryDir folder;
        const QByteArray text = "<glyphData format=\"2\">\n\t<glyph name=\"a\" />\n<<<<<<< ours: a.xml\n"
                                "\t<glyph name=\"b\" />\n=======\n\t<glyph name=\"c\" />\n"
                                ">>>>>>> theirs: a.xml\n</glyphData>\n";
        const QString file = write(folder.filePath(u"a.xml"_s), text);
        const Outcome checked = run({u"--check"_s, file});
        QCOMPARE(checked.status, 1);
        QVERIFY2(checked.output.contains(file + ":3: conflict: b: "_L1)
                     && !checked.output.contains("foreign-line"_L1),
                 qPrintable(checked.output));
        const Outcome merged = run({u"--merge"_s, file, file, file});
        QCOMPARE(merged.status, 2);
        const Outcome script = run({u"--eval"_s, u"Doc.infos()[0].setName_('x')"_s, u"--save"_s, file});
        QCOMPARE(script.status, 2);
        QVERIFY2(script.errors.contains("conflicts"_L1), qPrintable(script.errors));
        QCOMPARE(contentOf(file), text);
    }

    // isBeside: or in the user's data folder
    // isSame: a save that had ended all but for this file
    TABLE(stopsAtRescueFiles, (QStringList mode, bool isBeside, bool isSame), {
        const QString code = u"Doc.infos()[0].setName_('x')"_s;
        const QStringList eval {u"--eval"_s, code, u"--save"_s};
        const QStringList run {u"--run"_s, u"SCRIPT"_s, u"--save"_s};
        row("eval", eval, true, false);
        row("run", run, true, false);
        row("run, in the data folder", run, false, false);
        row("eval, ended", eval, true, true);
        row("check", {u"--check"_s}, true, false);
        row("check, in the data folder", {u"--check"_s, u"--json"_s}, false, false);
        row("compare", {u"--compare"_s, u"SAMPLE"_s}, true, false);
        row("merge", {u"--merge"_s, u"SAMPLE"_s, u"SAMPLE"_s}, true, false);
        row("compare, in the data folder", {u"--compare"_s, u"SAMPLE"_s}, false, false);
    })
    {
        const QTemporaryDir folder;
        const QByteArray text = "<glyphData>\n\t<glyph name=\"a\" />\n</glyphData>\n";
        const QString file = write(folder.filePath(u"a.xml"_s), text);
        mode.replaceInStrings(u"SCRIPT"_s,
                              write(folder.filePath(u"s.py"_s), "Doc.infos()[0].setName_('x')\n"));
        mode.replaceInStrings(u"SAMPLE"_s, write(folder.filePath(u"b.xml"_s), text));
        QString rescue = folder.filePath(u".a.xml.runebook-rescue"_s);
        if (!isBeside) {
            const QByteArray hash =
                QCryptographicHash::hash(file.toUtf8(), QCryptographicHash::Sha1).toHex().left(10);
            QVERIFY(QDir().mkpath(folder.filePath(u"data/runebook/Rescue"_s)));
            rescue = folder.filePath(
                u"data/runebook/Rescue/a.xml-%1.runebook-rescue"_s.arg(QString::fromLatin1(hash)));
        }
        write(rescue, isSame ? text : text + text);
        const QByteArray dataBefore = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(folder.filePath(u"data"_s)));
        const Outcome met = run(mode + QStringList {file});
        const QByteArray after = contentOf(file);
        const Outcome ignored = run(mode + QStringList {u"--ignore-rescue"_s, file});
        qputenv("XDG_DATA_HOME", dataBefore);
        if (met.status == 3 || ignored.status == 3)
            QSKIP("needs a supported Python");
        QVERIFY(QFile::exists(rescue));
        if (isSame) {
            QCOMPARE(met.status, 0);
            return;
        }
        QCOMPARE(met.status, 2);
        QVERIFY2(met.errors.contains(rescue) && met.errors.contains(file), qPrintable(met.errors));
        QCOMPARE(after, text);
        // What is checked there is not in the program's own form.
        QVERIFY2(ignored.status == (mode.front() == "--check"_L1 ? 1 : 0), qPrintable(ignored.errors));
        QCOMPARE(contentOf(file) == text, mode.front() != "--eval"_L1 && mode.front() != "--run"_L1);
    }

    void checksFiles()
    {
        const QTemporaryDir folder;
        const QByteArray own = contentOf(QStringLiteral(RUNEBOOK_TEST_DATA "/glyphdata/version2.xml"));
        const QByteArray header = own.left(own.indexOf("\t<glyph "));
        const QString clean = write(folder.filePath(u"clean.xml"_s),
                                    header + "\t<glyph unicode=\"0041\" name=\"A\" />\n</glyphData>\n");
        const QString bad = write(folder.filePath(u"bad.xml"_s),
                                  header
                                      + "\t<glyph unicode=\"0041\" name=\"A\" />\n<!-- note -->\n"
                                        "\t<glyph unicode=\"41\" name=\"A\" weight=\"1\" />\n"
                                        "\t<glyph name='q' />\n</glyphData>\n");
        const QString table = write(folder.filePath(u"table.txt"_s), "name\tdesc\nA\tx\nB\ta \"b\" c\n");
        const QString binary = write(folder.filePath(u"binary.xml"_s), "\xFF\x00");
        const int first = int(header.count('\n')) + 1;
        const auto at = [&](const QString &file, int line, const char *rest) {
            return u"%1:%2: %3"_s.arg(file).arg(line).arg(QString::fromLatin1(rest));
        };

        Outcome outcome = run({u"--check"_s, clean}, {u"DISPLAY"_s, u"QT_QPA_PLATFORM"_s});
        QCOMPARE(outcome.output, clean + u": 1 records, version 2, 0 problems\n"_s);
        QCOMPARE(outcome.status, 0);

        outcome = run({u"--check"_s, bad});
        QCOMPARE(outcome.status, 1);
        const QStringList lines = outcome.output.split(u'\n');
        QVERIFY2(outcome.output.contains(u" “weight”\n"_s), qPrintable(outcome.output));
        for (const QString &start :
             {at(bad, first, "duplicate-name: A.name: "), at(bad, first, "duplicate-code-point: A.unicode: "),
              at(bad, first + 1, "foreign-line: "), at(bad, first + 2, "invalid-code-point: A.unicode: "),
              at(bad, first + 2, "unknown-attribute: A.weight: "), at(bad, first + 3, "other-meaning: "),
              bad + u": 3 records, version 2, "_s}) {
            const bool isThere = std::any_of(
                lines.begin(), lines.end(), [&start](const QString &line) { return line.startsWith(start); });
            QVERIFY2(isThere, qPrintable(start + u'\n' + outcome.output));
        }

        outcome = run({u"--check"_s, table});
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.output.startsWith(at(table, 3, "quote-or-line-break: B.desc: ")),
                 qPrintable(outcome.output));

        outcome = run({u"--check"_s, u"--only"_s, u"name == 'A'"_s, table});
        QCOMPARE(outcome.output, table + u": 2 records, a table, 0 problems\n"_s);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(run({u"--check"_s, u"--only"_s, u"script = a"_s, table}).status, 2);

        outcome = run({u"--check"_s, u"--json"_s, clean, bad, binary, u"/no/such.xml"_s});
        QCOMPARE(outcome.status, 2);
        QVERIFY(outcome.errors.contains(u"binary.xml"_s) && outcome.errors.contains(u"such.xml"_s));
        const QJsonArray files = QJsonDocument::fromJson(outcome.output.toUtf8()).array();
        QCOMPARE(files.size(), 4);
        QList<int> statuses;
        for (const QJsonValue &file : files)
            statuses << file[u"status"_s].toInt();
        QCOMPARE(statuses, QList<int>({0, 1, 2, 2}));
        QCOMPARE(files[1][u"file"_s].toString(), bad);
        QCOMPARE(files[1][u"records"_s].toInt(), 3);
        QCOMPARE(files[1][u"version"_s].toInt(), 2);
        const QJsonArray problems = files[1][u"problems"_s].toArray();
        QVERIFY(problems.size() >= 6);
        for (const QJsonValue &problem : problems) {
            QVERIFY(problem[u"line"_s].toInt() >= first);
            QVERIFY(!problem[u"kind"_s].toString().isEmpty() && !problem[u"sentence"_s].toString().isEmpty());
        }

        QProcess piped;
        const QString hinted =
            write(folder.filePath(u"hint.xml"_s),
                  header + "\t<glyph unicode=\"0041\" name=\"A\" case=\"lower\" />\n</glyphData>\n");
        outcome = run({u"--check"_s, hinted});
        QCOMPARE(outcome.status, 0);
        QVERIFY2(outcome.output.startsWith(at(hinted, first, "hint unicode-case: A.case: "))
                     && outcome.output.endsWith(", 0 problems, 1 hints\n"_L1),
                 qPrintable(outcome.output));
        QCOMPARE(run({u"--check"_s, u"--strict"_s, hinted}).status, 1);
        QCOMPARE(run({u"--check"_s, u"--strict"_s, u"--ignore"_s, u"unicode-case"_s, hinted}).status, 0);
        QCOMPARE(run({u"--check"_s, u"--ignore"_s, u"comment"_s, hinted}).status, 2);

        piped.start(QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook"), {u"--check"_s, u"-"_s});
        piped.write("name\tunicode\nA\t0041\n");
        piped.closeWriteChannel();
        QVERIFY(piped.waitForFinished(60'000));
        QCOMPARE(QString::fromUtf8(piped.readAllStandardOutput()), u"-: 1 records, a table, 0 problems\n"_s);
        QCOMPARE(piped.exitCode(), 0);
        QCOMPARE(run({u"--eval"_s, u"1"_s, u"--only"_s, u"A"_s, clean}).status, 2);
        QCOMPARE(run({u"--check"_s}).status, 2);
    }

    // arguments: "in" and "out" are files of the test
    TABLE(convertsFiles,
          (const QByteArray &in, const QStringList &arguments, int status, const QByteArray &out,
           const QString &errors),
          {
              const QByteArray xml =
                  "<glyphData>\n\t<glyph unicode=\"0041\" name=\"A\" script=\"latin\" />\n"
                  "\t<glyph name=\"B\" altNames=\"b, c\" direction=\"RTL\" />\n</glyphData>\n";
              const QByteArray csv = "name,note,unicode\nA,\"x \"\"y\"\"\",0041\nB,,\n";
              row("glyph data as a table", xml,
                  {u"in.xml"_s, u"out.csv"_s, u"--fields"_s, u"Name,unicode,altNames"_s}, 0,
                  "name,unicode,altNames\nA,0x0041,\nB,,\"b, c\"\n", "");
              row("all fields", xml, {u"in.xml"_s, u"out.tsv"_s}, 0,
                  "name\tunicode\tcategory\tsubCategory\tcase\tscript\tdirection\tproduction\tsortName\tsortN"
                  "ameKeep"
                  "\tsortNameOld\tdecompose\tanchors\tmarks\taltNames\tunicodeLegacy\tdesc\n"
                  "A\t0x0041\t\t\t\tlatin\t\t\t\t\t\t\t\t\t\t\t\nB\t\t\t\t\t\tRTL\t\t\t\t\t\t\t\tb, c\t\t\n",
                  "");
              row("only what a search finds", xml,
                  {u"in.xml"_s, u"-"_s, u"--only"_s, u"B"_s, u"--fields"_s, u"name"_s}, 0, "name\nB\n", "");
              row("only what passes a filter", xml,
                  {u"in.xml"_s, u"-"_s, u"--only"_s, u"writingDirection == 'RTL' && !(script != '')"_s,
                   u"--fields"_s, u"name"_s},
                  0, "name\nB\n", "");
              row("a filter that is none", xml, {u"in.xml"_s, u"out.csv"_s, u"--only"_s, u"script = latin"_s},
                  2, "(unreadable)", "a text stands in quotation marks");
              row("a table as another", csv, {u"in.csv"_s, u"out.txt"_s}, 0,
                  "name\tnote\tunicode\nA\t\"x \"\"y\"\"\"\t0041\nB\t\t\n", "");
              row("its columns in another order", csv, {u"in.csv"_s, u"-"_s, u"--fields=note,name"_s}, 0,
                  "note\tname\n\"x \"\"y\"\"\"\tA\n\tB\n", "");
              row("an unknown column", csv, {u"in.csv"_s, u"out.xml"_s}, 1, "(unreadable)",
                  "The column “note” is left out");
              row("lossy", csv, {u"in.csv"_s, u"-"_s, u"--lossy"_s}, 0,
                  "<glyph unicode=\"0041\" name=\"A\" />", "The column “note” is left out");
              row("a bad row", csv + "C\n", {u"in.csv"_s, u"out.txt"_s}, 1, "(unreadable)",
                  "Line 4, column 2 (note): the row has 1 of 3 cells.");
              row("a comment", "<!-- x -->\n" + xml, {u"in.xml"_s, u"out.xml"_s}, 0, "name=\"B\"", "");
              row("no such field", xml, {u"in.xml"_s, u"out.csv"_s, u"--fields=colour"_s}, 2, "(unreadable)",
                  "colour");
              row("fields of glyph data", csv, {u"in.csv"_s, u"out.xml"_s, u"--fields=name"_s}, 2,
                  "(unreadable)", "--fields");
              row("no glyph data", "<html>", {u"in.xml"_s, u"out.csv"_s}, 2, "(unreadable)", "no glyph data");
              row("no table", "a,b\n", {u"in.csv"_s, u"out.xml"_s}, 2, "(unreadable)", "No column");
          })
    {
        const QTemporaryDir folder;
        QStringList words {u"--convert"_s};
        for (const QString &argument : arguments)
            words << (argument.startsWith(u"in."_s) || argument.startsWith(u"out."_s)
                          ? folder.filePath(argument)
                          : argument);
        write(words.at(1), in);
        const Outcome outcome = run(words, {u"DISPLAY"_s, u"QT_QPA_PLATFORM"_s});
        QVERIFY2(outcome.status == status, qPrintable(outcome.errors));
        const QByteArray written = words.at(2) == u"-" ? outcome.output.toUtf8() : contentOf(words.at(2));
        QVERIFY2(words.at(2) == u"-" || words.at(2).endsWith(u"xml") ? written.contains(out) : written == out,
                 written.constData());
        QVERIFY2(outcome.errors.contains(errors), qPrintable(outcome.errors));
        QCOMPARE(outcome.errors.isEmpty(), errors.isEmpty());
    }

    /// A real spreadsheet takes what is written, and what it writes is read.
    void goesThroughASpreadsheet()
    {
        const QString program = QStandardPaths::findExecutable(u"ssconvert"_s);
        if (program.isEmpty())
            QSKIP("spreadsheet: no ssconvert of gnumeric here");
        const QTemporaryDir folder;
        const QByteArray lines =
            "\t<glyph unicode=\"0041\" unicode2=\"1E10\" name=\"A\" description=\"a; b, 'c'\" />\n"
            "\t<glyph unicode=\"1E10\" name=\"alef-ar\" altNames=\"\u05D0, b\" direction=\"RTL\" />\n"
            "\t<glyph unicode=\"0030\" name=\"zero\" case=\"smallCaps\" script=\"latin\" />\n";
        const QString xml =
            write(folder.filePath(u"a.xml"_s), "<glyphData format=\"2\">\n" + lines + "</glyphData>\n");
        const auto step = [&folder](const QString &name) { return folder.filePath(name); };
        QCOMPARE(run({u"--convert"_s, xml, step(u"b.csv"_s)}).status, 0);
        QCOMPARE(QProcess::execute(program, {step(u"b.csv"_s), step(u"c.ods"_s)}), 0);
        QCOMPARE(QProcess::execute(program, {step(u"c.ods"_s), step(u"d.csv"_s)}), 0);
        const Outcome back = run({u"--convert"_s, step(u"d.csv"_s), step(u"e.xml"_s)});
        QVERIFY2(back.status == 0, qPrintable(back.errors));
        const Outcome compared = run({u"--compare"_s, xml, step(u"e.xml"_s)});
        QVERIFY2(compared.status == 0, qPrintable(compared.output));
    }

    void scriptsDriveWindowsWithoutADisplay()
    {
        const QString code = u"Doc.makeWindowControllers()\n"
                             "window = Doc.windowController()\n"
                             "table = window.infolistController()\n"
                             "print(window.title(), window.subtitle())\n"
                             "window.searchField().setStringValue_('f_f')\n"
                             "window.filterInfos()\n"
                             "print(window.subtitle())\n"
                             "table.setSelectionIndexes_([0, 1])\n"
                             "window.moveNameToAltName()\n"
                             "print([info.name() for info in table.selectedObjects()], "
                             "table.selectedObjects()[0].altNames())\n"
                             "window.delete_()\n"
                             "print(Doc.countOfInfos())\n"
                             "Doc.undoManager().undo()\n"
                             "print(Doc.countOfInfos(), Doc.isDocumentEdited())\n"_s;
        const Outcome outcome =
            run({u"--eval"_s, code, QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml")},
                {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s});
        QCOMPARE(outcome.output,
                 u"sample.xml 2395 infos\n6/2395 infos\n['f_f', 'f_f.sc'] ['f_f']\n2393\n2395 False\n"_s);
        QCOMPARE(outcome.status, 0);
    }

    void scriptsReachTheApplication()
    {
        const QString code = u"from AppKit import NSApp, NSClassFromString\n"
                             "delegate, updater = NSApp().delegate(), NSApp().updater()\n"
                             "print(delegate.applicationName(), updater.isChecking())\n"
                             "panes = delegate.preferencesController()\n"
                             "panes.showPrefpaneWithIdentifier_('code')\n"
                             "print(panes.selectedItemIdentifier())\n"
                             "for show in (delegate.showMacroPanel_, delegate.showMainPreferences_,\n"
                             "             delegate.showCompareWindow_, delegate.showChangeLogWindow_):\n"
                             "    show(None)\n"
                             "print(delegate.changeLogURL().split('/')[-1])\n"
                             "feed = NSClassFromString('SUAppcast').alloc().init()\n"
                             "for version in ('2', '1'):\n"
                             "    item = NSClassFromString('SUAppcastItem').alloc().init()\n"
                             "    item.versionString = version\n"
                             "    feed.addItem_(item)\n"
                             "best = NSApp().bestValidUpdateInAppcast_forUpdater_(feed, updater)\n"
                             "print(best.versionString, len(feed.items()))\n"
                             "print(askString('Which?', key='name'))\n"_s;
        const Outcome outcome =
            run({u"--eval"_s, code, u"--answer"_s, u"name=A=b"_s}, {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s});
        QCOMPARE(outcome.output, u"Runebook False\ncode\nchangelog.html\n2 2\nA=b\n"_s);
        QCOMPARE(outcome.status, 0);
    }

    void startsWithFilesAndDamagedOnes()
    {
        const QTemporaryDir folder;
        const QString broken = write(folder.filePath(u"broken.xml"_s), "\xff\xfe<glyph ");
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook"),
                      {QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml"), broken, folder.path(),
                       u"/no/such.xml"_s});
        QVERIFY(process.waitForStarted());
        // It stays: what cannot be opened is told in the window.
        QVERIFY(!process.waitForFinished(1500));
        process.terminate();
        QVERIFY(process.waitForFinished(20'000));
        // What was open is kept for the next start.
        const UserDefaults defaults(qEnvironmentVariable("RUNEBOOK_DEFAULTS"));
        QVERIFY(!defaults.arrayForKey(u"VXOpenWindows"_s).isEmpty());
    }
};

RUNEBOOK_TEST_MAIN(ProgramTest)
#include "ProgramTest.moc"
