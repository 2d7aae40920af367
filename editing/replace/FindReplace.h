#pragma once

#include "editing/replace/TextReplacement.h"
#include "model/EditedValue.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <optional>
#include <unordered_set>
#include <vector>

namespace runebook {

/// What a replacement does to names that nobody may want: the edit is made all the same.
struct NameProblems {
    qsizetype invalid = 0; ///< changed records whose new name breaks the rules for names
    qsizetype repeated = 0; ///< changed records that then share their name with another record

    bool isEmpty() const { return invalid == 0 && repeated == 0; }
    friend bool operator==(const NameProblems &, const NameProblems &) = default;
};

/// One record that a replacement changes, for people to look at before. A list is shown joined with ", ".
struct ReplacePreview {
    QString name;
    QString before;
    QString after;
    TextReplacement::Places places;
};

/// What a replacement changes, or has changed.
struct ReplaceSummary {
    qsizetype records = 0;
    qsizetype occurrences = 0;
    std::vector<ReplacePreview> first; ///< of the first changed records, as many as were asked for
    NameProblems problems;
    LeftOut leftOut; ///< records with the text whose new value no save would write: they stay as they are
};

/// The rules of find and replace: a text replaced in one field of records. Knows no window and opens no undo
/// group; records register their old values as with every edit. Made for one replacement, then thrown away.
class FindReplace
{
    Q_DECLARE_TR_FUNCTIONS(FindReplace)
public: // fields
    /// The numbers under which the pop-up button knows the fields.
    enum FieldTag {
        Name = 2,
        Production,
        AltNames,
        Anchors,
        SortName,
        Desc,
        Decompose,
        Accents, ///< the marks
    };
    /// All of them, in the order of the button.
    static QList<int> tags();
    /// Nothing for a number that is no tag.
    static std::optional<GlyphField> fieldForTag(int tag);
    /// For people; empty for a number that is no tag.
    static QString titleForTag(int tag);

public:
    FindReplace(const QString &find, const QString &replacement, int tag, const ReplaceOptions &options = {});

    /// Why nothing can be found: a regular expression that is none, or that takes too many steps. Null when
    /// there is nothing to say.
    QString problem() const;

    /// False when the field is none or both texts are empty: then apply() does nothing at all.
    bool isUseful() const;
    /// What apply() would change; changes nothing. Lists at most \a shown records one by one.
    ReplaceSummary preview(const InfoList &infos, qsizetype shown) const;
    /// How far a long piece of work has come.
    struct Progress {
        std::size_t next = 0; ///< record
        ReplaceSummary summary;
    };
    /// Goes on with a preview until \a deadline, a few records at least; true when all were looked at.
    bool previewMore(const InfoList &infos, qsizetype shown, const QDeadlineTimer &deadline,
                     Progress &progress) const;
    /// The same for apply().
    bool applyMore(const InfoList &infos, const QDeadlineTimer &deadline, Progress &progress) const;
    /// The names that apply() would spoil; nothing in other fields. \a all is every record of the
    /// document, the \a infos among them.
    NameProblems nameProblems(const InfoList &infos, const InfoList &all) const;
    /// How far that has come.
    struct NameScan {
        std::unordered_set<const VXGlyphInfo *> selected;
        std::vector<std::size_t> changed; ///< hashes of names
        std::vector<std::size_t> everybody;
        std::size_t nextSelected = 0;
        std::size_t next = 0;
        std::size_t nextChanged = 0;
        bool isSorted = false;
        NameProblems problems;
    };
    /// Goes on with it until \a deadline; true when all names were looked at.
    bool nameProblemsMore(const InfoList &infos, const InfoList &all, const QDeadlineTimer &deadline,
                          NameScan &scan) const;
    /// Replaces in all \a infos. Records without a value in the field are set to no value once more.
    ReplaceSummary apply(const InfoList &infos) const;

private:
    qsizetype occurrencesIn(const VXGlyphInfo &info) const;
    QString refusal(const VXGlyphInfo &info) const;
    std::string_view newName(const VXGlyphInfo &info, std::string &buffer) const;
    QStringList replacedElements(const QStringList &elements) const;
    ReplacePreview previewOf(const VXGlyphInfo &info) const;
    void replaceIn(VXGlyphInfo &info) const;

    TextReplacement m_text;
    std::optional<GlyphField> m_field;
    bool m_replacesBrackets;
};

} // namespace runebook
