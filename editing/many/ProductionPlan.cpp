#include "editing/many/ProductionPlan.h"

#include "editing/fields/EditNames.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/many/ListEntries.h"
#include "editing/many/NewRecords.h"
#include "model/EditedValue.h"
#include "model/GlyphList.h"
#include "model/NameRules.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ProductionPlan)
};

QString number(qsizetype count)
{
    return QLocale().toString(qlonglong(count));
}

/// Whether fonts know \a name without a record that says what it is.
bool isWellKnown(const QString &name)
{
    static const QSet<QString> listed(GlyphList::names().cbegin(), GlyphList::names().cend());
    const qsizetype prefix = name.startsWith("uni"_L1) ? 3 : name.startsWith(u'u') ? 1 : 0;
    return listed.contains(name) || nameOfCodePoint(name.sliced(prefix)) == name;
}

/// A name without its suffix.
QString baseOfName(const QString &name)
{
    const qsizetype dot = name.indexOf(u'.', 1);
    return dot < 0 ? name : name.first(dot);
}

/// What a font calls the part of a name that is the name of a record; null when nobody knows.
QString nameOfPart(const VXDocument &document, const QString &part)
{
    const InfoPtr info = document.infoForName(part);
    if (info && !info->production().isEmpty())
        return info->production();
    if (const QString made = info ? productionNameFor(part, info->unicode()) : QString(); !made.isNull())
        return made;
    return isWellKnown(part) ? part : QString();
}

/// The records that stand for the parts of a name without its suffix: what stands behind a hyphen, as in
/// "lam_alef-ar", belongs to every part.
QStringList partsOf(const VXDocument &document, const QString &base)
{
    const qsizetype hyphen = base.indexOf(u'-', 1);
    const QString script = hyphen < 0 ? QString() : base.sliced(hyphen);
    QStringList parts;
    for (const QString &part : base.split(u'_', Qt::SkipEmptyParts)) {
        const bool isWhole = part.endsWith(script) || nameOfPart(document, part + script).isNull();
        parts << (isWhole ? part : part + script);
    }
    return parts;
}

/// The letters of which a ligature is composed, where they are its parts with something between: a conjunct
/// is named after its consonants, and has a virama.
QStringList lettersOf(const VXGlyphInfo &info, const QStringList &parts)
{
    QStringList letters;
    auto part = parts.begin();
    for (const QString &component : entriesIn(info, GlyphField::Decompose)) {
        letters << baseOfName(component);
        if (part != parts.end() && *part == letters.back())
            ++part;
    }
    return part == parts.end() && parts.size() > 1 ? letters : parts;
}

/// "uni06440627" for two of four digits each, "f_uni0627" for others.
QString joined(const QStringList &names)
{
    static const QRegularExpression kDigits(u"^uni(?:[0-9A-F]{4})+$"_s);
    const bool areDigits = std::all_of(names.begin(), names.end(),
                                       [](const QString &name) { return kDigits.match(name).hasMatch(); });
    return areDigits ? u"uni"_s + names.join(u'_').remove(u"uni"_s).remove(u'_') : names.join(u'_');
}

QString nameOfParts(const VXDocument &document, const VXGlyphInfo &info)
{
    const QString name = info.name();
    const QString base = baseOfName(name);
    QStringList made;
    for (const QString &letter : lettersOf(info, partsOf(document, base))) {
        made << nameOfPart(document, letter);
        if (made.back().isNull())
            return {};
    }
    const QString whole = joined(made) + name.sliced(base.size());
    return made.isEmpty() || whole == name ? QString() : whole;
}

} // namespace

std::optional<ProductionRule> productionRuleOfWord(const QString &word)
{
    const qsizetype place = QStringList {u"list"_s, u"codepoint"_s, u"parts"_s}.indexOf(word);
    return place < 0 ? std::nullopt : std::optional(ProductionRule(place));
}

QString productionNameByRule(const VXDocument &document, const VXGlyphInfo &info, ProductionRule rule)
{
    switch (rule) {
    case ProductionRule::GlyphList:
        return productionNameFor(info.name(), info.unicode());
    case ProductionRule::CodePoint: {
        const QString made = nameOfCodePoint(info.unicode());
        return made == info.name() ? QString() : made;
    }
    case ProductionRule::Parts:
        break;
    }
    const bool isComposed = info.name().indexOf(u'_', 1) > 0 || info.name().indexOf(u'.', 1) > 0;
    return isComposed ? nameOfParts(document, info) : productionNameFor(info.name(), info.unicode());
}

ProductionPlan::ProductionPlan(VXDocument &document, InfoList infos, ProductionRule rule, Which which)
    : RecordPlan(document), m_infos(std::move(infos)), m_rule(rule), m_which(which)
{
}

// Finding out

void ProductionPlan::lookAt(const InfoPtr &info)
{
    const QString before = info->production();
    if (m_which == Which::OnlyEmpty && !before.isEmpty()) {
        ++m_kept;
        return;
    }
    const QString after = productionNameByRule(document(), *info, m_rule);
    if (after.isEmpty())
        ++m_unknown;
    else if (after == before)
        ++m_kept;
    else if (!m_changing.contains(info.get())) {
        m_changing.insert(info.get());
        ++m_uses[after];
        m_rows.push_back({info, after});
    }
}

/// A font calls a record by its production name, and by its own where it has none.
void ProductionPlan::countFinalName(const VXGlyphInfo &info)
{
    if (m_changing.contains(&info))
        return;
    const QString production = info.production();
    const auto uses = m_uses.find(production.isEmpty() ? info.name() : production);
    if (uses != m_uses.end())
        ++*uses;
}

bool ProductionPlan::planMore(const QDeadlineTimer &deadline)
{
    while (m_next < m_infos.size()) {
        lookAt(m_infos[m_next]);
        if (isPause(++m_next, deadline))
            return false;
    }
    const qsizetype count = m_rows.empty() ? 0 : document().countOfInfos();
    while (m_nextUse < count) {
        countFinalName(*document().objectInInfosAtIndex(m_nextUse));
        if (isPause(std::size_t(++m_nextUse), deadline))
            break;
    }
    if (m_nextUse < count)
        return false;
    m_repeated = std::count_if(m_rows.begin(), m_rows.end(),
                               [this](const Row &row) { return m_uses.value(row.after) > 1; });
    return true;
}

double ProductionPlan::planned() const
{
    const double all = double(m_infos.size()) + double(document().countOfInfos());
    return all > 0 ? (double(m_next) + double(m_nextUse)) / all : 1;
}

// Showing

QStringList ProductionPlan::headings() const
{
    return {Texts::tr("Record"), Texts::tr("Before"), Texts::tr("After")};
}

QString ProductionPlan::text(qsizetype place, int column) const
{
    const Row &row = m_rows[static_cast<std::size_t>(place)];
    return column == 0 ? cellDisplayText(*row.info, GlyphField::Name)
        : column == 1  ? cellDisplayText(*row.info, GlyphField::Production)
                       : cellDisplayText(row.after);
}

RecordPlan::Remark ProductionPlan::remark(qsizetype place) const
{
    const int uses = m_uses.value(m_rows[static_cast<std::size_t>(place)].after);
    return {uses > 1 ? Texts::tr("Records that will have it: %1").arg(number(uses)) : QString(), false};
}

QString ProductionPlan::summary() const
{
    QStringList sentences {countOfTaken() == 0 ? Texts::tr("No production name changes.")
                               : countOfTaken() == 1
                               ? Texts::tr("One production name changes.")
                               : Texts::tr("%1 production names change.").arg(number(countOfTaken()))};
    if (m_repeated > 0)
        sentences << Texts::tr("New names that other records will have too: %1.").arg(number(m_repeated));
    if (m_kept > 0)
        sentences << Texts::tr("Records that keep theirs: %1.").arg(number(m_kept));
    if (m_unknown > 0)
        sentences
            << Texts::tr("Records that need none by this rule, or get none: %1.").arg(number(m_unknown));
    return sentences.join(u' ');
}

// Doing it

QString ProductionPlan::stepName() const
{
    return editName(Texts::tr("Fill Production Name of %1").arg(firstTaken()),
                    Texts::tr("Fill %1 Production Names"), countOfTaken());
}

bool ProductionPlan::applyMore(const QDeadlineTimer &deadline)
{
    while (m_applied < m_rows.size()) {
        const Row &row = m_rows[m_applied];
        if (isTaken(qsizetype(m_applied)))
            storeEdited(*row.info, GlyphField::Production, row.after);
        if (isPause(++m_applied, deadline))
            break;
    }
    return m_applied >= m_rows.size();
}

double ProductionPlan::applied() const
{
    return m_rows.empty() ? 1 : double(m_applied) / double(m_rows.size());
}

} // namespace runebook
