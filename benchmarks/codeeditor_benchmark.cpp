// The code editor on a large macro: cutting and colouring all of it, typing into it, finding a brace's
// partner across it, counting its lines after an edit.
#include "benchmarks/codeeditor_sample.h"
#include "codeeditor/BraceMatching.h"
#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/KeywordTable.h"
#include "codeeditor/VXCodeTextStorage.h"
#include "codeeditor/VXLineNumberView.h"

#include <QApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextBlock>
#include <benchmark/benchmark.h>
#include <chrono>
#include <string>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

constexpr int kSampleLength = 500'000;
constexpr int kLineCount = 100'000;

const QString &sample()
{
    static const QString text = pythonSample(kSampleLength);
    return text;
}

template <typename Work> double secondsFor(Work &&work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// An editor as the macro panel makes it.
struct Editor {
    JSTTextView view;
    JSTDocument document;

    Editor()
    {
        const QFont regular = document.defaultFont();
        QFont bold = regular;
        bold.setBold(true);
        QFont italic = regular;
        italic.setItalic(true);
        setUpPythonTokenizer(*document.tokenizer(),
                             defaultKeywordAttributes({regular, bold, italic}, view.palette()));
        document.setAutocompleteKeywords({u"print"_s, u".name"_s, u"x"_s});
        document.setSourceText(&view);
        view.setupLineNumberview();
        view.resize(1000, 700);
    }
};

void tokenize(benchmark::State &state)
{
    TDTokenizer tokenizer;
    setUpPythonTokenizer(tokenizer, {});
    for ([[maybe_unused]] auto _ : state) {
        tokenizer.setString(sample());
        tokenizer.setReader(TDReader());
        int tokens = 0;
        while (tokenizer.nextToken() != TDToken::EOFToken())
            ++tokens;
        benchmark::DoNotOptimize(tokens);
    }
}

/// A whole pass over a text that was never coloured, formats applied to every block.
void colour(benchmark::State &state)
{
    Editor editor;
    for ([[maybe_unused]] auto _ : state) {
        editor.view.textStorage()->blockSignals(true); // the text comes without being coloured
        editor.view.setString(QString());
        editor.view.setString(sample());
        editor.view.textStorage()->blockSignals(false);
        state.SetIterationTime(secondsFor([&] { editor.document.colour(JSTDocument::Pass::Always); }));
    }
}

/// The peer on the same text, in its own program; it tells its own time.
void colourPeer(benchmark::State &state, const QString &program)
{
    for ([[maybe_unused]] auto _ : state) {
        QProcess process;
        process.start(program, {QString::number(kSampleLength)});
        if (!process.waitForFinished() || process.exitCode() != 0) {
            state.SkipWithError("the peer failed");
            return;
        }
        state.SetIterationTime(process.readAllStandardOutput().trimmed().toDouble());
    }
}

/// From a key to the picture: the character is typed in the middle of the text and everything painted.
void typeInto(benchmark::State &state, QPlainTextEdit &view)
{
    view.show();
    QTextCursor cursor = view.textCursor();
    cursor.setPosition(view.document()->findBlockByNumber(view.blockCount() / 2).position() + 4);
    view.setTextCursor(cursor);
    view.centerCursor();
    QApplication::processEvents();
    for ([[maybe_unused]] auto _ : state) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, u"x"_s);
        QApplication::sendEvent(&view, &press);
        QApplication::processEvents();
        state.PauseTiming();
        QKeyEvent back(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
        QApplication::sendEvent(&view, &back);
        QApplication::processEvents();
        state.ResumeTiming();
    }
}

void typeCharacter(benchmark::State &state)
{
    Editor editor;
    editor.view.setString(sample());
    typeInto(state, editor.view);
}

void typeCharacterPeer(benchmark::State &state)
{
    const JSTDocument fonts;
    QPlainTextEdit view;
    view.setFont(fonts.defaultFont());
    view.setPlainText(sample());
    view.resize(1000, 700);
    typeInto(state, view);
}

void matchBrace(benchmark::State &state)
{
    initBraces();
    // Whole pieces only: every brace in between is closed, so the way leads through all of the text.
    const QString text = u'(' + sample().first(sample().lastIndexOf(u"\n\n")) + u')';
    if (!TE_findMatchingBraceForRangeInString(0, text))
        state.SkipWithError("the braces of the sample do not match");
    for ([[maybe_unused]] auto _ : state) {
        auto match = TE_findMatchingBraceForRangeInString(0, text);
        benchmark::DoNotOptimize(match);
    }
}

void countLines(benchmark::State &state)
{
    QPlainTextEdit view;
    view.setPlainText(QString(u"    print(\"a line of code\", 1)\n"_s).repeated(kLineCount));
    VXLineNumberView ruler(&view);
    ruler.lineIndices();
    QTextCursor cursor(view.document()->findBlockByNumber(kLineCount / 2));
    for ([[maybe_unused]] auto _ : state) {
        cursor.insertText(u"x\n"_s);
        state.SetIterationTime(secondsFor([&] { benchmark::DoNotOptimize(ruler.lineIndices().size()); }));
    }
}

void toggleComments(benchmark::State &state)
{
    Editor editor;
    editor.view.setString(QString(u"    print(\"a line of code\", 1)\n"_s).repeated(kLineCount));
    editor.view.show();
    editor.view.selectAll();
    QApplication::processEvents();
    for ([[maybe_unused]] auto _ : state) {
        editor.view.commentSelection();
        QApplication::processEvents();
    }
}

/// What a long line is made of: letters without a blank, as pasted data has them, or code of every colour.
QString longLine(bool isCode, int length)
{
    return QString(isCode ? u"print(x[1], 'a') or "_s : u"a"_s).repeated(length).left(length);
}

void typeIntoLongLine(benchmark::State &state, bool isCode, int length)
{
    Editor editor;
    editor.view.setString(longLine(isCode, length));
    typeInto(state, editor.view);
}

void openLongLine(benchmark::State &state, bool isCode, int length)
{
    const QString line = longLine(isCode, length);
    Editor editor;
    editor.view.show();
    QApplication::processEvents();
    for ([[maybe_unused]] auto _ : state) {
        editor.view.setString(line);
        QApplication::processEvents();
        state.PauseTiming();
        editor.view.setString({});
        QApplication::processEvents();
        state.ResumeTiming();
    }
}

void zoomLongLine(benchmark::State &state, bool isCode, int length)
{
    Editor editor;
    editor.view.setString(longLine(isCode, length));
    editor.view.show();
    QApplication::processEvents();
    int size = 13;
    for ([[maybe_unused]] auto _ : state) {
        editor.document.setFontSize(size = size == 13 ? 14 : 13);
        QApplication::processEvents();
    }
}

void registerAll()
{
    const auto add = [](const char *name, auto function) {
        return benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond);
    };
    add("tokenize/500000", &tokenize);
    add("colour/500000", &colour)->UseManualTime()->Iterations(5);
    add("type-character/500000", &typeCharacter);
    add("type-character/500000:peer", &typeCharacterPeer);
    add("match-brace/500000", &matchBrace);
    add("comment-toggle/100000", &toggleComments);
    for (const bool isCode : {false, true}) {
        for (const int length : {100'000, 1'000'000}) {
            const std::string name = isCode ? "long-code-" : "long-line-";
            const std::string size = '/' + std::to_string(length);
            add((name + "open" + size).c_str(), [=](auto &state) { openLongLine(state, isCode, length); });
            add((name + "key" + size).c_str(), [=](auto &state) { typeIntoLongLine(state, isCode, length); });
            add((name + "zoom" + size).c_str(), [=](auto &state) { zoomLongLine(state, isCode, length); });
        }
    }
    add("line-table/100000", &countLines)->UseManualTime()->Iterations(200);
    const QString peer = QApplication::applicationDirPath() + u"/codeeditor_peer"_s;
    if (QFileInfo(peer).isExecutable()) {
        const auto run = [peer](benchmark::State &state) { colourPeer(state, peer); };
        add("tokenize/500000:peer", run)->UseManualTime()->Iterations(3);
        add("colour/500000:peer", run)->UseManualTime()->Iterations(3);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    qputenv("RUNEBOOK_DEFAULTS", home.filePath(u"defaults.ini"_s).toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
