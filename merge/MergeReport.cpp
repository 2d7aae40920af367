#include "merge/MergeReport.h"

#include "merge/PossibleRenames.h"
#include "platform/PlainText.h"
#include "platform/ShownText.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(MergeReport)
};

constexpr qsizetype kLongest = 200;

/// One thing that both sides did differently.
struct ConflictLine {
    QString key;
    QString field; ///< empty for the record as a whole
    ConflictKind kind;
    QString ours, base, theirs;
};

QString textOf(const InfoPtr &info, GlyphField field)
{
    return info ? info->displayText(field) : QString();
}

void appendConflicts(const ThreeWayMerge &merge, const RecordMerge &record, std::vector<ConflictLine> &lines)
{
    const QString key = merge.keyOf(record);
    if (record.conflict != ConflictKind::Fields) {
        lines.push_back({key, {}, record.conflict, {}, {}, {}});
        return;
    }
    const RecordSides sides = merge.sidesOf(record);
    for (const FieldMerge &field : record.fields) {
        if (field.state == MergeState::Conflict && !field.isChosen) {
            lines.push_back({key, keyOfField(field.field), record.conflict, textOf(sides.ours, field.field),
                             textOf(sides.base, field.field), textOf(sides.theirs, field.field)});
        }
    }
}

std::vector<ConflictLine> conflictsOf(const ThreeWayMerge &merge)
{
    std::vector<ConflictLine> lines;
    if (merge.isHeaderInConflict())
        lines.push_back({{}, u"header"_s, ConflictKind::Line, {}, {}, {}});
    for (const RecordMerge &record : merge.records()) {
        if (record.result == RecordMerge::Result::Conflict)
            appendConflicts(merge, record, lines);
    }
    return lines;
}

QString sentenceOf(ConflictKind kind)
{
    switch (kind) {
    case ConflictKind::RemovedByUs:
        return Texts::tr("removed by ours, edited by theirs");
    case ConflictKind::RemovedByThem:
        return Texts::tr("edited by ours, removed by theirs");
    default:
        return Texts::tr("both changed lines that hold more than fields");
    }
}

QString shown(const QString &value)
{
    return value.isEmpty() ? Texts::tr("(none)") : terminalText(shownText(value, kLongest));
}

QString wordOf(ConflictKind kind)
{
    switch (kind) {
    case ConflictKind::RemovedByUs:
        return u"removed by ours"_s;
    case ConflictKind::RemovedByThem:
        return u"removed by theirs"_s;
    case ConflictKind::Fields:
        return u"field"_s;
    default:
        return u"line"_s;
    }
}

QString keyAt(const ThreeWayMerge &merge, std::size_t number)
{
    return merge.keyOf(merge.records()[number]);
}

QString wordOf(MergeSide side)
{
    return side == MergeSide::Ours ? u"ours"_s : u"theirs"_s;
}

} // namespace

void writeMergeReport(const ThreeWayMerge &merge, const QString &path, QTextStream &out)
{
    const QString file = terminalText(path);
    for (const ConflictLine &line : conflictsOf(merge)) {
        out << file << ": " << Texts::tr("conflict: ") << terminalText(line.key);
        if (!line.field.isEmpty())
            out << (line.key.isEmpty() ? "" : ".") << line.field;
        out << ": ";
        if (line.kind == ConflictKind::Fields)
            out << Texts::tr("ours %1, base %2, theirs %3")
                       .arg(shown(line.ours), shown(line.base), shown(line.theirs))
                << '\n';
        else
            out << sentenceOf(line.kind) << '\n';
    }
    for (const PossibleRename &rename : possibleRenames(merge)) {
        out << file << ": "
            << Texts::tr("renamed by %1? %2 is gone, %3 has its code points")
                   .arg(wordOf(rename.side), terminalText(keyAt(merge, rename.from)),
                        terminalText(keyAt(merge, rename.to)))
            << '\n';
    }
    out << file << ": "
        << Texts::tr("%1 from ours, %2 from theirs, %3 from both, %4 the same on both sides, %5 conflicts")
               .arg(QString::number(merge.count(MergeState::Ours)),
                    QString::number(merge.count(MergeState::Theirs)),
                    QString::number(merge.count(MergeState::Merged)),
                    QString::number(merge.count(MergeState::Both)), QString::number(merge.openConflicts()))
        << '\n';
}

void writeMergeJson(const ThreeWayMerge &merge, const QString &path, QTextStream &out)
{
    QJsonArray conflicts;
    for (const ConflictLine &line : conflictsOf(merge)) {
        QJsonObject object {{u"key"_s, line.key}, {u"kind"_s, wordOf(line.kind)}};
        if (!line.field.isEmpty())
            object.insert(u"field"_s, line.field);
        if (line.kind == ConflictKind::Fields) {
            object.insert(u"ours"_s, line.ours);
            object.insert(u"base"_s, line.base);
            object.insert(u"theirs"_s, line.theirs);
        }
        conflicts << object;
    }
    QJsonArray renames;
    for (const PossibleRename &rename : possibleRenames(merge)) {
        renames << QJsonObject {{u"from"_s, keyAt(merge, rename.from)},
                                {u"to"_s, keyAt(merge, rename.to)},
                                {u"side"_s, wordOf(rename.side)},
                                {u"conflict"_s, rename.isInConflict}};
    }
    const QJsonObject report {{u"file"_s, path},
                              {u"conflicts"_s, conflicts},
                              {u"renames"_s, renames},
                              {u"ours"_s, merge.count(MergeState::Ours)},
                              {u"theirs"_s, merge.count(MergeState::Theirs)},
                              {u"merged"_s, merge.count(MergeState::Merged)},
                              {u"same"_s, merge.count(MergeState::Both)}};
    out << QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Compact)) << '\n';
}

} // namespace runebook
