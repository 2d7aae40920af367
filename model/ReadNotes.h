#pragma once

#include <QString>
#include <utility>
#include <vector>

namespace runebook {

/// What a reader met that the records cannot keep or that a save will write differently. Gathered while
/// reading, for the one who has to warn before the file is overwritten.
struct ReadNotes {
    enum Kind : quint8 {
        Comment, ///< a comment, which is not kept
        UnknownAttribute, ///< an attribute that no record has
        UnreadRest, ///< attributes behind the place where reading of the line ended
        DroppedAttribute, ///< a repeated or refused attribute, one without value or with leading blanks
        CodePoints, ///< more than two code points, of which a save keeps two
        ForeignLine, ///< a line that is no glyph line
        OtherMeaning, ///< a line that an XML reader takes for something else than what a save will print for
                      ///< it
        Conflict, ///< what two sides did differently, between markers; both sides are records
        TableProblem, ///< a row of a table that is no record, or a cell that is no value: kept as it stands
        KindCount
    };
    struct Note {
        Kind kind;
        qsizetype record; ///< 0-based place of the record concerned, or of the next one
        QString text; ///< what was met, cut for display
        qsizetype offset = -1; ///< of the line in the bytes that were read
    };

    /// Adds a note; of many the first are kept, all are counted.
    void add(Kind kind, qsizetype record, const QString &text = {}, qsizetype offset = -1);
    /// Adds the notes of what was read behind this, where \a records records had been read before.
    void append(const ReadNotes &following, qsizetype records);
    bool isEmpty() const;
    qsizetype count(Kind kind) const { return counts[kind]; }
    /// Whether further notes would only be counted.
    bool isFull() const { return notes.size() >= mostNotes; }
    void countOne(Kind kind) { ++counts[kind]; }
    /// Whether further keys of unknown attributes would be told of: beyond kMostKeys their number is.
    bool mayTellOfMoreKeys() const { return unknownAttributes.size() <= kMostKeys; }
    /// Keeps the attribute if it is the first with its key.
    void addUnknown(const QString &key, const QString &value);

    std::vector<Note> notes;
    std::size_t mostNotes = 1000; ///< that are kept
    qsizetype counts[KindCount] = {};
    /// Keys and values of unknown attributes, the first of each key, kMostKeys and one at most: for a report
    /// when all was read.
    static constexpr std::size_t kMostKeys = 20;
    std::vector<std::pair<QString, QString>> unknownAttributes;
    /// Records whose lines have another form than the one that is printed for them, without any of the notes
    /// above: for files of version 1 and of the later ones.
    qsizetype otherForms[2] = {};
    bool hasByteOrderMark = false;
    bool hasCarriageReturns = false;
    bool isCutOff = false; ///< the end of the list is missing
    bool hasForeignHeader = false; ///< a header that a save replaces by the program's own
};

} // namespace runebook
