// How long KSyntaxHighlighting takes to highlight the sample, formats thrown away: codeeditor_peer LENGTH
// prints the seconds of one pass after a first one that loads the definition.
#include "benchmarks/codeeditor_sample.h"

#include <KSyntaxHighlighting/AbstractHighlighter>
#include <KSyntaxHighlighting/Definition>
#include <KSyntaxHighlighting/Format>
#include <KSyntaxHighlighting/Repository>
#include <KSyntaxHighlighting/State>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>

class Highlighter : public KSyntaxHighlighting::AbstractHighlighter
{
public:
    void highlight(const QStringList &lines)
    {
        KSyntaxHighlighting::State state;
        for (const QString &line : lines)
            state = highlightLine(line, state);
    }
    qint64 formattedCharacters() const { return m_formattedCharacters; }

protected:
    void applyFormat(int, int length, const KSyntaxHighlighting::Format &) override
    {
        m_formattedCharacters += length;
    }

private:
    qint64 m_formattedCharacters = 0;
};

int main(int argc, char *argv[])
{
    const QCoreApplication app(argc, argv);
    const QStringList lines = pythonSample(app.arguments().value(1).toInt()).split(QLatin1Char('\n'));
    KSyntaxHighlighting::Repository repository;
    Highlighter highlighter;
    highlighter.setDefinition(repository.definitionForName(QStringLiteral("Python")));
    highlighter.highlight(lines);
    QElapsedTimer timer;
    timer.start();
    highlighter.highlight(lines);
    std::printf("%.9f\n", double(timer.nsecsElapsed()) / 1e9);
    return highlighter.formattedCharacters() > 0 ? 0 : 1;
}
