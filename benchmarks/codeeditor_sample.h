#pragma once

#include <QString>
#include <QStringList>

/// \a length characters of Python with everything that a highlighter has a look for: indented blocks, strings
/// of all kinds, numbers, comments, names in and out of the lists. The same for every program and every run.
inline QString pythonSample(int length)
{
    const QStringList pieces = {
        QStringLiteral("def process%1(info, prefix=\"uni\", limit=0x%1):\n"
                       "    \"\"\"Give the record a name of its own, number %1.\"\"\"\n"
                       "    if info.unicode() is None or info.index() > limit:\n"
                       "        return None\n"
                       "    value = int(info.unicode(), 16) + %1\n"
                       "    return prefix + '%04X' % value    # four digits at least\n\n"),
        QStringLiteral("class Table%1(object):\n"
                       "    '''Counts what passes by.'''\n"
                       "    def __init__(self, names, scale=%1.5e-3):\n"
                       "        self.names = [name.lower() for name in names if not name.startswith('_')]\n"
                       "        self.counts = {'latin': 0, \"greek\": %1, 'other': 1_000}\n\n"),
        QStringLiteral("for info in Doc.infos():\n"
                       "    # Record %1: only letters that can be sorted\n"
                       "    if info.category() == \"Letter\" and len(info.name()) < %1:\n"
                       "        info.setSortName_(\"%s_%03d\" % (info.name(), info.index()))\n"
                       "        print(info.name(), info.sortName(), sep=', ')\n"
                       "    else:\n"
                       "        continue\n\n"),
        QStringLiteral("try:\n"
                       "    total%1 = sum(map(float, values[%1:])) / max(1, len(values))\n"
                       "except (ValueError, ZeroDivisionError) as error:\n"
                       "    raise RuntimeError('no values in {}'.format(error))\n\n")};
    QString text;
    text.reserve(length + 1000);
    quint32 random = 1;
    while (text.size() < length) {
        random = random * 1664525 + 1013904223;
        text +=
            QString(pieces[int(random >> 30)]).replace(QStringLiteral("%1"), QString::number(random >> 20));
    }
    return text.left(length);
}
