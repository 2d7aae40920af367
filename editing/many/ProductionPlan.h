#pragma once

#include "editing/many/RecordPlan.h"

namespace runebook {

/// What production names are made from.
enum class ProductionRule : quint8 {
    GlyphList, ///< as Make Legacy Name: by the glyph list, else from the code point
    CodePoint, ///< uniXXXX or uXXXXX
    Parts, ///< of the parts of the name: those of a and b for a_b.sc, with the suffix
};

/// "list", "codepoint", "parts": how scripts call them.
std::optional<ProductionRule> productionRuleOfWord(const QString &word);
/// The production name that \a info gets by a rule; null when the rule knows none, or the name is one itself.
QString productionNameByRule(const VXDocument &document, const VXGlyphInfo &info, ProductionRule rule);

/// New production names for records: rows are those that change.
class ProductionPlan : public RecordPlan
{
public:
    enum class Which { OnlyEmpty, All };

    ProductionPlan(VXDocument &document, InfoList infos, ProductionRule rule, Which which);

    bool planMore(const QDeadlineTimer &deadline) override;
    double planned() const override;
    QStringList headings() const override;
    qsizetype countOfRows() const override { return std::ssize(m_rows); }
    QString text(qsizetype row, int column) const override;
    Remark remark(qsizetype row) const override;
    int changedColumn() const override { return 2; }
    QString summary() const override;
    QString stepName() const override;
    bool makesRecords() const override { return false; }
    bool applyMore(const QDeadlineTimer &deadline) override;
    double applied() const override;

protected:
    qsizetype countOfDoable() const override { return countOfRows(); }

private:
    struct Row {
        InfoPtr info;
        QString after;
    };
    void lookAt(const InfoPtr &info);
    void countFinalName(const VXGlyphInfo &info);

    InfoList m_infos;
    ProductionRule m_rule;
    Which m_which;
    std::vector<Row> m_rows;
    QSet<const VXGlyphInfo *> m_changing;
    QHash<QString, int> m_uses; ///< of the new names, as many records as will have them in a font
    std::size_t m_next = 0; ///< record that has no row yet
    qsizetype m_nextUse = 0; ///< record of the document whose name was not counted
    qsizetype m_repeated = 0; ///< rows whose name other records will have too
    qsizetype m_kept = 0; ///< records that have a name
    qsizetype m_unknown = 0; ///< records for which the rule knows no name
    std::size_t m_applied = 0;
};

} // namespace runebook
