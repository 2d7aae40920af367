#pragma once

#include <QDir>
#include <QFile>
#include <QTest>

/// Compares \a lines with tests/data/texts/NAME.txt, which is written anew where RUNEBOOK_WRITE_TEXTS is set:
/// somebody reads what has changed in it before it is committed.
#define COMPARE_LINES(name, lines)                                                                           \
    do {                                                                                                     \
        const QString wrong = runebook::differenceFromTexts(name, lines);                                    \
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));                                                        \
    } while (false)

namespace runebook {

inline QString pathOfTexts(const QString &name)
{
    QDir().mkpath(QStringLiteral(RUNEBOOK_TEST_DATA "/texts"));
    return QStringLiteral(RUNEBOOK_TEST_DATA "/texts/%1.txt").arg(name);
}

inline QStringList keptTexts(const QString &name)
{
    QFile file(pathOfTexts(name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n') : QStringList();
}

inline QString differenceFromTexts(const QString &name, QStringList lines)
{
    lines << QString();
    if (qEnvironmentVariableIsSet("RUNEBOOK_WRITE_TEXTS")) {
        QFile file(pathOfTexts(name));
        const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(lines.join(u'\n').toUtf8()) > 0;
        return isWritten ? QString() : file.fileName() + QStringLiteral(" cannot be written");
    }
    const QStringList kept = keptTexts(name);
    for (qsizetype i = 0; i < std::max(lines.size(), kept.size()); ++i) {
        if (lines.value(i) != kept.value(i))
            return QStringLiteral("%1.txt:%2: “%3”\n   is now “%4”")
                .arg(name)
                .arg(i + 1)
                .arg(kept.value(i), lines.value(i));
    }
    return {};
}

/// Whether \a line is one of those in a file, in any order.
inline bool isAmongTexts(const QString &name, const QString &line)
{
    if (keptTexts(name).contains(line))
        return true;
    QFile file(pathOfTexts(name));
    if (qEnvironmentVariableIsSet("RUNEBOOK_WRITE_TEXTS"))
        return file.open(QIODevice::Append) && file.write(line.toUtf8() + '\n') > 0;
    qWarning().noquote() << "not in" << file.fileName() + u':' << line;
    return false;
}

} // namespace runebook
