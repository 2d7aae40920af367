#include "editing/many/VariantsPlan.h"

#include "editing/fields/EditNames.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/many/ManySettings.h"
#include "model/FieldTable.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(VariantsPlan)
};

QString number(qsizetype count)
{
    return QLocale().toString(qlonglong(count));
}

} // namespace

// Choices

QStringList VariantChoices::suffixesOfText(const QString &text)
{
    QStringList suffixes;
    for (const QString &word : QString(text).replace(u',', u' ').split(u' ', Qt::SkipEmptyParts)) {
        const bool hasMark = QStringView(u"._-").contains(word.front());
        suffixes << (hasMark ? word : u'.' + word);
    }
    suffixes.removeDuplicates();
    return suffixes;
}

std::vector<GlyphField> VariantChoices::possibleFields()
{
    std::vector<GlyphField> fields;
    for (const FieldRow &row : kFieldTable) {
        const bool isOwn = row.field == GlyphField::Name || row.field == GlyphField::Unicodes
            || row.field == GlyphField::UnicodeLegacy;
        if (row.editor != FieldEditor::None && !isOwn)
            fields.push_back(row.field);
    }
    return fields;
}

VariantChoices VariantChoices::remembered()
{
    VariantChoices choices {suffixesOfText(Settings::kVariantSuffixes.value()), {}};
    const QStringList keys = Settings::kVariantFields.value().split(u' ');
    for (const GlyphField field : possibleFields()) {
        if (keys.contains(keyOfField(field)))
            choices.fields.push_back(field);
    }
    return choices;
}

void VariantChoices::remember(const QString &typedSuffixes) const
{
    QStringList keys;
    for (const GlyphField field : fields)
        keys << keyOfField(field);
    Settings::kVariantSuffixes.set(typedSuffixes);
    Settings::kVariantFields.set(keys.join(u' '));
}

// The plan

VariantsPlan::VariantsPlan(VXDocument &document, InfoList bases, VariantChoices choices)
    : RecordPlan(document), m_bases(std::move(bases)), m_choices(std::move(choices)), m_names(document)
{
    m_rows.reserve(m_bases.size() * std::size_t(m_choices.suffixes.size()));
}

QString VariantsPlan::nameOf(const Row &row) const
{
    return m_bases[row.base]->name() + m_choices.suffixes.at(row.suffix);
}

bool VariantsPlan::planMore(const QDeadlineTimer &deadline)
{
    while (m_next < m_bases.size()) {
        for (qsizetype suffix = 0; suffix < m_choices.suffixes.size(); ++suffix) {
            Row row {m_next, suffix, {}};
            row.objection = m_bases[m_next]->name().isEmpty() ? Texts::tr("The record has no name.")
                                                              : m_names.objectionTo(nameOf(row));
            if (row.objection.isNull())
                ++m_doable;
            m_rows.push_back(std::move(row));
        }
        if (isPause(++m_next, deadline))
            break;
    }
    return m_next >= m_bases.size();
}

double VariantsPlan::planned() const
{
    return m_bases.empty() ? 1 : double(m_next) / double(m_bases.size());
}

QStringList VariantsPlan::headings() const
{
    return {Texts::tr("New Record"), Texts::tr("Behind")};
}

QString VariantsPlan::text(qsizetype place, int column) const
{
    return column == 0 ? cellDisplayText(nameOf(row(place)))
                       : cellDisplayText(*m_bases[row(place).base], GlyphField::Name);
}

RecordPlan::Remark VariantsPlan::remark(qsizetype place) const
{
    return {row(place).objection, !row(place).objection.isNull()};
}

QString VariantsPlan::obstacle() const
{
    return m_choices.suffixes.isEmpty() ? Texts::tr("Type a suffix such as .sc, or several.") : QString();
}

QString VariantsPlan::summary() const
{
    QStringList sentences {countOfTaken() == 0 ? Texts::tr("Nothing is new.")
                               : countOfTaken() == 1
                               ? Texts::tr("One record is new.")
                               : Texts::tr("%1 records are new.").arg(number(countOfTaken()))};
    if (m_names.countOfTaken() > 0)
        sentences << Texts::tr("Already there: %1.").arg(number(m_names.countOfTaken()));
    if (const qsizetype invalid = countOfRows() - m_doable - m_names.countOfTaken(); invalid > 0)
        sentences << Texts::tr("No valid names: %1.").arg(number(invalid));
    return sentences.join(u' ');
}

// Doing it

InfoPtr VariantsPlan::variantOf(const Row &row) const
{
    const VXGlyphInfo &base = *m_bases[row.base];
    InfoPtr variant = recordLike(base, nameOf(row), m_choices.fields);
    // Two records with the same production name are one in a font.
    if (const QString production = variant->production(); !production.isEmpty())
        variant->setProduction(production + m_choices.suffixes.at(row.suffix));
    return variant;
}

QString VariantsPlan::stepName() const
{
    return editName(Texts::tr("Add Variant %1").arg(firstTaken()), Texts::tr("Add %1 Variants"),
                    countOfTaken());
}

bool VariantsPlan::applyMore(const QDeadlineTimer &deadline)
{
    while (m_made < m_rows.size()) {
        const Row &row = m_rows[m_made];
        if (isTaken(qsizetype(m_made)))
            m_variants.push_back({variantOf(row), m_bases[row.base]});
        if (isPause(++m_made, deadline))
            break;
    }
    if (m_made < m_rows.size())
        return false;
    if (!m_variants.empty())
        setAdded(insertBehind(document(), std::move(m_variants)));
    return true;
}

double VariantsPlan::applied() const
{
    return m_rows.empty() ? 1 : double(m_made) / double(m_rows.size());
}

} // namespace runebook
