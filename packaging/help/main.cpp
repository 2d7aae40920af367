/// \file
/// Makes a page of the help from a Markdown file: runebook-make-help IN.md OUT.html [FILE.md=PAGE.html...]
#include "packaging/help/HelpPage.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>
#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
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

    const QByteArray page = helpPage(source).toUtf8();
    if (page.isEmpty()) {
        std::fprintf(stderr, "%s: cmark-gfm makes no page of it\n", qPrintable(in.fileName()));
        return 1;
    }
    QSaveFile out(arguments.at(2));
    if (!out.open(QIODevice::WriteOnly) || out.write(page) < 0 || !out.commit()) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(out.fileName()), qPrintable(out.errorString()));
        return 1;
    }
    return 0;
}
