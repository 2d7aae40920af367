/// \file
/// Makes a page of the help from a Markdown file: runebook-make-help IN.md OUT.html [FILE.md=PAGE.html...]
#include "packaging/help/HelpPage.h"

#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>
#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "minimal"); // nothing is shown, and fonts of the machine play no part
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 3) {
        std::fputs("usage: runebook-make-help IN.md OUT.html [FILE.md=PAGE.html...]\n", stderr);
        return 2;
    }
    runebook::HelpSource source;
    for (const QString &pair : arguments.mid(3))
        source.pages.insert(pair.section(u'=', 0, 0), pair.section(u'=', 1));

    QFile in(arguments.at(1));
    if (!in.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(in.fileName()), qPrintable(in.errorString()));
        return 1;
    }
    source.markdown = QString::fromUtf8(in.readAll());

    QSaveFile out(arguments.at(2));
    if (!out.open(QIODevice::WriteOnly) || out.write(helpPage(source).toUtf8()) < 0 || !out.commit()) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(out.fileName()), qPrintable(out.errorString()));
        return 1;
    }
    return 0;
}
