#pragma once

#include "editing/many/NewRecords.h"
#include "editing/many/RecordPlan.h"

namespace runebook {

/// Which variants of records are to be added.
struct VariantChoices {
    QStringList suffixes; ///< with their dots
    std::vector<GlyphField> fields; ///< that variants take over

    /// The suffixes in a typed text, separated by blanks or commas; one without a dot, underscore or hyphen
    /// in front gets a dot.
    static QStringList suffixesOfText(const QString &text);
    /// The fields that variants can take over, in the order of the table.
    static std::vector<GlyphField> possibleFields();
    /// As they were chosen last.
    static VariantChoices remembered();
    void remember(const QString &typedSuffixes) const;
};

/// Variants of records: for each one and each suffix a new record behind it. A production name gets the
/// suffix too. Names that are there already are left out.
class VariantsPlan : public RecordPlan
{
public:
    VariantsPlan(VXDocument &document, InfoList bases, VariantChoices choices);

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
    struct Row {
        std::size_t base;
        qsizetype suffix;
        QString objection; ///< null for a row that can be done
    };
    const Row &row(qsizetype place) const { return m_rows[static_cast<std::size_t>(place)]; }
    QString nameOf(const Row &row) const;
    InfoPtr variantOf(const Row &row) const;

    InfoList m_bases;
    VariantChoices m_choices;
    NewNames m_names;
    std::vector<Row> m_rows;
    std::size_t m_next = 0; ///< base that was not looked at
    qsizetype m_doable = 0;
    std::size_t m_made = 0;
    std::vector<NewRecord> m_variants;
};

} // namespace runebook
