#include "document/NameUses.h"

#include "model/NameRules.h"
#include "platform/UndoManager.h"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(NameUses)
};

constexpr std::string_view kSeparator = ", ";

/// Calls \a visit with each name in a list of them, until it answers false.
template <typename Visit> void forEachName(std::string_view list, Visit visit)
{
    for (;;) {
        const std::size_t end = list.find(kSeparator);
        if (!visit(list.substr(0, end)) || end == list.npos)
            return;
        list.remove_prefix(end + kSeparator.size());
    }
}

} // namespace

NameUses NameUses::of(const InfoList &all, const GlyphInfoOwner &owner, const InfoList &infos)
{
    NameUses uses(all, owner);
    for (const InfoPtr &info : infos) {
        const std::string name = info->name().toStdString();
        if (!name.empty())
            uses.m_sought.emplace(name, name);
        uses.m_own.insert(info.get());
    }
    uses.m_names = uses.m_sought;
    return uses;
}

NameUses NameUses::ofFormer(const InfoList &all, const GlyphInfoOwner &owner,
                            const std::vector<Renamed> &renamed)
{
    NameUses uses(all, owner);
    uses.m_isRenaming = true;
    for (const Renamed &each : renamed)
        uses.m_own.insert(each.info.get());
    for (const auto &[info, former] : renamed) {
        const InfoPtr other = owner.infoForName(former);
        const bool isTaken = other && !uses.m_own.contains(other.get());
        // A name that nobody gave is nobody's.
        const bool isNone = former.isEmpty() || former == VXGlyphInfo::unknownName().toString(nullptr);
        if (!isTaken && !isNone && info->name() != former && !info->name().isEmpty())
            uses.m_sought.emplace(former.toStdString(), info->name().toStdString());
    }
    uses.m_names = uses.m_sought;
    return uses;
}

// Looking

double NameUses::progress() const
{
    const auto all = static_cast<double>(std::max<std::size_t>(1, m_all->size()));
    return isComplete() ? 1 : (m_pass + static_cast<double>(m_next) / all) / kPasses;
}

bool NameUses::runFor(std::chrono::milliseconds budget)
{
    constexpr std::size_t kBatch = 512;
    const auto end = std::chrono::steady_clock::now() + budget;
    if (m_sought.empty())
        m_pass = kPasses;
    while (!isComplete()) {
        const std::size_t count = m_all->size();
        for (const std::size_t last = std::min(count, m_next + kBatch); m_next < last; ++m_next)
            look((*m_all)[m_next]);
        if (m_next >= count) {
            ++m_pass;
            m_next = 0;
        }
        if (std::chrono::steady_clock::now() >= end)
            break;
    }
    return isComplete();
}

void NameUses::finish()
{
    while (!runFor(1000ms)) { }
}

void NameUses::look(const InfoPtr &info)
{
    if (m_pass == 0) {
        lookAtName(info);
        return;
    }
    std::string buffer;
    for (const GlyphField field : kNamingFields) {
        if (info->stored(field).isEmpty())
            continue;
        bool isUse = false;
        forEachName(info->utf8(field, buffer), [&](std::string_view name) {
            isUse = m_names.contains(name);
            return !isUse;
        });
        if (isUse)
            m_uses.push_back({info, field});
    }
}

void NameUses::lookAtName(const InfoPtr &info)
{
    std::string buffer;
    const std::string_view name = info->utf8(GlyphField::Name, buffer);
    if (name.find_first_of("._") == name.npos || m_own.contains(info.get()))
        return;
    const std::string built = builtName(name, m_sought);
    if (built.empty())
        return;
    if (m_isRenaming) {
        const QString fresh = QString::fromStdString(built);
        const InfoPtr other = m_owner->infoForName(fresh);
        if (objectionToName(std::string_view(built)) != NameObjection::None) {
            m_leftOut.add(textOfObjection(objectionToName(std::string_view(built))));
            return;
        }
        if (other || !m_fresh.insert(built).second) {
            m_leftOut.add(textOfTakenName(fresh));
            return;
        }
        m_names.emplace(name, built);
    }
    m_uses.push_back({info, GlyphField::Name});
}

/// What becomes of a name that is built on others: "a.sc" on "a", "f_f_i.liga" on "f", "lam_alef-ar" on
/// "alef-ar", whose ending says the script of all its parts. Empty for one that is not.
std::string NameUses::builtName(std::string_view name, const Names &names)
{
    for (std::size_t dot = name.rfind('.'); dot != name.npos && dot > 0; dot = name.rfind('.', dot - 1)) {
        if (const auto found = names.find(name.substr(0, dot)); found != names.end())
            return found->second + std::string(name.substr(dot));
    }
    const std::string_view stem = name.substr(0, name.find('.', 1));
    const std::size_t hyphen = stem.rfind('-');
    const std::string_view script = hyphen == stem.npos ? std::string_view() : stem.substr(hyphen);
    std::string_view rest = stem.substr(0, hyphen);
    if (rest.find('_') == rest.npos)
        return {};
    std::string built;
    bool isBuilt = false;
    for (;;) {
        const std::size_t end = rest.find('_');
        const auto found = names.find(std::string(rest.substr(0, end)) + std::string(script));
        const bool fits = found != names.end() && found->second.ends_with(script)
            && found->second.find('.') == std::string::npos;
        built += fits ? found->second.substr(0, found->second.size() - script.size())
                      : std::string(rest.substr(0, end));
        isBuilt |= fits;
        if (end == rest.npos)
            break;
        built += '_';
        rest.remove_prefix(end + 1);
    }
    return isBuilt ? built + std::string(name.substr(rest.data() + rest.size() - name.data()))
                   : std::string();
}

qsizetype NameUses::countOfRecords() const
{
    std::unordered_set<const VXGlyphInfo *> records;
    for (const NameUse &use : m_uses)
        records.insert(use.info.get());
    return static_cast<qsizetype>(records.size());
}

// Following

QString NameUses::textWith(const NameUse &use, const Names &names)
{
    std::string buffer;
    const std::string_view text = use.info->utf8(use.field, buffer);
    if (use.field == GlyphField::Name) {
        const auto found = names.find(text);
        return QString::fromStdString(found == names.end() ? std::string(text) : found->second);
    }
    std::string after;
    forEachName(text, [&](std::string_view name) {
        const auto found = names.find(name);
        if (!after.empty() || name.data() != text.data())
            after += kSeparator;
        after += found == names.end() ? name : std::string_view(found->second);
        return true;
    });
    return QString::fromStdString(after);
}

std::optional<qsizetype> NameUses::follow(const std::function<bool(std::size_t)> &isChosen,
                                          const std::function<bool(double)> &goesOn) const
{
    constexpr std::size_t kBatch = 256;
    const auto isLeft = [&](std::size_t use) { return isChosen && !isChosen(use); };
    Names names = m_names;
    for (std::size_t i = 0; i < m_uses.size() && m_uses[i].field == GlyphField::Name; ++i) {
        if (isLeft(i))
            names.erase(m_uses[i].info->name().toStdString());
    }
    std::unordered_set<const VXGlyphInfo *> changed;
    for (std::size_t i = 0; i < m_uses.size(); ++i) {
        if (i % kBatch == 0 && goesOn && !goesOn(static_cast<double>(i) / static_cast<double>(m_uses.size())))
            return {};
        const NameUse &use = m_uses[i];
        const QString after = textWith(use, names);
        if (isLeft(i) || use.info->listings() == 0 || after == use.info->displayText(use.field))
            continue;
        if (use.field == GlyphField::AltNames)
            storeEdited(*use.info, use.field, after.split(kListSeparator));
        else
            storeEdited(*use.info, use.field, after);
        changed.insert(use.info.get());
    }
    return static_cast<qsizetype>(changed.size());
}

std::optional<qsizetype> renameInfo(const InfoList &all, GlyphInfoOwner &owner, const InfoPtr &info,
                                    const QString &name, bool references, Error *error)
{
    if (!info)
        return 0;
    if (!info->validateName(name, error))
        return {};
    const std::vector<Renamed> renamed {{info, info->name()}};
    const UndoGroup group(owner.undoManager());
    info->setName(name);
    qsizetype others = 0;
    if (references) {
        NameUses uses = NameUses::ofFormer(all, owner, renamed);
        uses.finish();
        others = uses.follow().value_or(0);
    }
    owner.undoManager()->setActionName(nameOfRenaming(renamed, others + 1));
    return others;
}

QString nameOfRenaming(const std::vector<Renamed> &renamed, qsizetype records)
{
    constexpr qsizetype kLongest = 24;
    const QString count = QLocale().toString(static_cast<qlonglong>(records));
    if (renamed.size() != 1)
        return Texts::tr("Rename in %1 Records").arg(count);
    const auto shortened = [](const QString &name) {
        return name.size() > kLongest ? name.left(kLongest) + u'…' : name;
    };
    const QString former = shortened(renamed.front().former);
    const QString now = shortened(renamed.front().info->name());
    return records == 1 ? Texts::tr("Rename %1 to %2").arg(former, now)
                        : Texts::tr("Rename %1 to %2 in %3 Records").arg(former, now, count);
}

} // namespace runebook
