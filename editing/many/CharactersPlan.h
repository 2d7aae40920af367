#pragma once

#include "editing/many/NewRecords.h"
#include "editing/many/RecordPlan.h"
#include "model/ProposedFields.h"

#include <utility>

namespace runebook {

/// Which characters somebody means.
struct TypedCharacters {
    std::vector<std::pair<char32_t, char32_t>> ranges; ///< first and last, in their order, none twice
    QString objection; ///< why nothing is meant; null when something is

    /// Ranges and code points ("U+0400-04FF, U+2116"), the name of a block, or else the characters of the
    /// text themselves, without white space.
    static TypedCharacters ofText(const QString &text);
    qsizetype count() const;
};

/// Records for characters, their names and fields as Unicode proposes them. Characters and names that are
/// there already are left out; code points without a character are only counted.
class CharactersPlan : public RecordPlan
{
public:
    /// The records come behind \a behind, or at the end of the list when that is null.
    CharactersPlan(VXDocument &document, TypedCharacters characters, InfoPtr behind);

    bool planMore(const QDeadlineTimer &deadline) override;
    double planned() const override;
    QStringList headings() const override;
    qsizetype countOfRows() const override { return std::ssize(m_rows); }
    QString text(qsizetype row, int column) const override;
    Remark remark(qsizetype row) const override;
    int changedColumn() const override { return 0; }
    QString summary() const override;
    QString obstacle() const override;
    QString stepName() const override;
    bool applyMore(const QDeadlineTimer &deadline) override;
    double applied() const override;

protected:
    qsizetype countOfDoable() const override { return m_doable; }

private:
    enum Column { NameColumn, UnicodeColumn, CharacterColumn, CategoryColumn, DescriptionColumn };
    struct Row {
        char32_t codePoint;
        QString name;
        QString objection; ///< null for a row that can be done
    };
    InfoPtr recordWith(char32_t codePoint) const;
    void noteFurther(const InfoPtr &info);
    void lookAt(char32_t codePoint);
    const ProposedFields &fieldsOf(qsizetype row) const;
    QString nameOf(char32_t codePoint) const;
    QString newNameOf(char32_t codePoint) const;
    InfoPtr recordOf(qsizetype row) const;

    TypedCharacters m_characters;
    InfoPtr m_behind;
    NewNames m_names;
    std::vector<Row> m_rows;
    QHash<char32_t, qsizetype> m_rowsByCharacter; ///< of those that can be done
    QHash<char32_t, InfoPtr> m_further; ///< records by code points behind their first
    QSet<QString> m_altNames;
    qsizetype m_noted = 0; ///< records that are in both
    std::size_t m_range = 0;
    char32_t m_inRange = 0; ///< so many of it were looked at
    qsizetype m_lookedAt = 0;
    qsizetype m_doable = 0;
    qsizetype m_present = 0; ///< characters that some record has
    qsizetype m_unassigned = 0;
    mutable qsizetype m_shownRow = -1; ///< whose fields were asked for last
    mutable ProposedFields m_shownFields;
    std::size_t m_made = 0;
    std::vector<NewRecord> m_records;
};

} // namespace runebook
