#include "document/SavingChanges.h"

#include <QCoreApplication>
#include <QLocale>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(SavingChanges)
};

struct Sentence {
    ReadNotes::Kind kind;
    const char *one;
    const char *many;
};

// The kinds in the order in which their loss hurts.
constexpr Sentence kSentences[] = {
    {ReadNotes::Conflict,
     QT_TRANSLATE_NOOP(
         "SavingChanges",
         "One conflict is not resolved: its markers are left out, and all its sides stay as records."),
     QT_TRANSLATE_NOOP(
         "SavingChanges",
         "%1 conflicts are not resolved: their markers are left out, and all sides stay as records.")},
    {ReadNotes::ForeignLine,
     QT_TRANSLATE_NOOP("SavingChanges", "One line that is no glyph, such as a comment, is left out."),
     QT_TRANSLATE_NOOP("SavingChanges", "%1 lines that are no glyphs, such as comments, are left out.")},
    {ReadNotes::Comment, QT_TRANSLATE_NOOP("SavingChanges", "One comment is left out."),
     QT_TRANSLATE_NOOP("SavingChanges", "%1 comments are left out.")},
    {ReadNotes::UnknownAttribute, QT_TRANSLATE_NOOP("SavingChanges", "One unknown attribute is left out."),
     QT_TRANSLATE_NOOP("SavingChanges", "%1 unknown attributes are left out.")},
    {ReadNotes::UnreadRest, QT_TRANSLATE_NOOP("SavingChanges", "The unread end of one line is left out."),
     QT_TRANSLATE_NOOP("SavingChanges", "The unread ends of %1 lines are left out.")},
    {ReadNotes::DroppedAttribute,
     QT_TRANSLATE_NOOP("SavingChanges", "One attribute is not kept as it stands."),
     QT_TRANSLATE_NOOP("SavingChanges", "%1 attributes are not kept as they stand.")},
    {ReadNotes::CodePoints,
     QT_TRANSLATE_NOOP("SavingChanges", "Of one record with more than two code points two are kept."),
     QT_TRANSLATE_NOOP("SavingChanges", "Of %1 records with more than two code points two are kept.")},
    {ReadNotes::OtherMeaning,
     QT_TRANSLATE_NOOP("SavingChanges", "One line says something else than what will be written for it."),
     QT_TRANSLATE_NOOP("SavingChanges", "%1 lines say something else than what will be written for them.")},
};

} // namespace

QStringList savingChanges(const ReadNotes &notes, int fileVersion)
{
    QStringList changes;
    for (const Sentence &sentence : kSentences) {
        const qsizetype count = notes.count(sentence.kind);
        if (count > 0)
            changes << (count == 1 ? Texts::tr(sentence.one)
                                   : Texts::tr(sentence.many).arg(QLocale().toString(count)));
    }
    const qsizetype others = notes.otherForms[fileVersion == 1 ? 0 : 1];
    if (others > 0 && !notes.hasCarriageReturns)
        changes << (others == 1 ? Texts::tr(
                        "One line that nobody has edited is written anew: it is not in Runebook's own form.")
                                : Texts::tr(
                                      "%1 lines that nobody has edited are written anew: they are not in "
                                      "Runebook's own form.")
                                      .arg(QLocale().toString(others)));
    if (notes.hasCarriageReturns)
        changes << Texts::tr("Lines will end with LF instead of CR LF.");
    if (notes.hasByteOrderMark)
        changes << Texts::tr("The byte order mark at the beginning is left out.");
    if (notes.hasForeignHeader)
        changes << Texts::tr("The header is replaced by Runebook's own.");
    return changes;
}

std::vector<LostCodePoints> lostCodePoints(const InfoList &infos, int fileVersion)
{
    constexpr qsizetype kNeverLost = 2;
    std::vector<LostCodePoints> lost;
    for (const InfoPtr &info : infos) {
        // One code point is no list: nearly all records go out here.
        if (!info->stored(GlyphField::Unicodes).isList() || info->unicodes().size() <= kNeverLost)
            continue;
        const InfoPtr read =
            VXGlyphInfo::initWithLineXMLFileVersion(info->lineXMLFormatVersion(fileVersion).trimmed());
        if (read && read->unicodes() != info->unicodes())
            lost.push_back({info, read->unicodes()});
    }
    return lost;
}

} // namespace runebook
