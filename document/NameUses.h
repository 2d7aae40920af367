#pragma once

#include "model/EditedValue.h"
#include "model/GlyphInfoOwner.h"
#include "model/VXGlyphInfo.h"

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace runebook {

/// The fields in which records name others.
inline constexpr std::array kNamingFields {GlyphField::Decompose, GlyphField::Marks, GlyphField::AltNames};

/// A field of a record that names another one; Name: its name is built on the other one's.
struct NameUse {
    InfoPtr info;
    GlyphField field;
};

/// A record that has another name now.
struct Renamed {
    InfoPtr info;
    QString former;
};

/// Finds who uses names: goes through all records in slices, and keeps nothing but what it has found. A list
/// that changes meanwhile wants a new search. Looking through a record takes a fraction of a microsecond, so
/// that nothing has to be kept in step with edits.
class NameUses
{
public:
    /// Who of the records that \a all are uses the names that \a infos have. \a all has to stay until nobody
    /// looks any more, \a owner finds them by name.
    static NameUses of(const InfoList &all, const GlyphInfoOwner &owner, const InfoList &infos);
    /// Who uses the names that \a renamed had, where no other record is called so; and how these uses read
    /// when they follow.
    static NameUses ofFormer(const InfoList &all, const GlyphInfoOwner &owner,
                             const std::vector<Renamed> &renamed);

public: // looking
    bool isComplete() const { return m_pass == kPasses; }
    /// 0 to 1.
    double progress() const;
    /// Goes on for about so long; true when complete.
    bool runFor(std::chrono::milliseconds budget);
    void finish();

public: // what was found
    /// Names that are built on others first, then the others in list order.
    const std::vector<NameUse> &uses() const { return m_uses; }
    /// How many records these are of.
    qsizetype countOfRecords() const;
    bool isRenaming() const { return m_isRenaming; }
    /// How many names are followed; the names that change with them not counted.
    qsizetype countOfNames() const { return static_cast<qsizetype>(m_sought.size()); }
    /// Names built on others that cannot follow, as another record has the new one.
    const LeftOut &leftOut() const { return m_leftOut; }
    /// What stands there once it follows. Only while renaming.
    QString textAfter(const NameUse &use) const { return textWith(use, m_names); }

public: // following
    /// Has the uses follow that \a isChosen answers true for (absent: all), as edits; those of a name that is
    /// not chosen itself stay. \a goesOn is asked now and then, with what is done from 0 to 1. How many
    /// records were changed; nothing where it was stopped: the edits made so far stand in the open step.
    std::optional<qsizetype> follow(const std::function<bool(std::size_t use)> &isChosen = {},
                                    const std::function<bool(double done)> &goesOn = {}) const;

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    /// What becomes of a name; the name itself where nothing does.
    using Names = std::unordered_map<std::string, std::string, Hash, std::equal_to<>>;

    NameUses(const InfoList &all, const GlyphInfoOwner &owner) : m_all(&all), m_owner(&owner) { }
    void look(const InfoPtr &info);
    void lookAtName(const InfoPtr &info);
    static std::string builtName(std::string_view name, const Names &names);
    static QString textWith(const NameUse &use, const Names &names);

    static constexpr int kPasses = 2; ///< names, then all that names them

    const InfoList *m_all;
    const GlyphInfoOwner *m_owner;
    Names m_sought;
    Names m_names; ///< the same with those built on them, while renaming
    std::unordered_set<const VXGlyphInfo *> m_own; ///< whose names these are
    std::unordered_set<std::string, Hash, std::equal_to<>> m_fresh; ///< that names will become
    bool m_isRenaming = false;
    std::vector<NameUse> m_uses;
    LeftOut m_leftOut;
    int m_pass = 0;
    std::size_t m_next = 0;
};

/// Gives \a info, one of \a all, another name and has all uses of the old one follow, where \a references;
/// one step. How many other records that changed; nothing, and an error, where the name cannot be.
std::optional<qsizetype> renameInfo(const InfoList &all, GlyphInfoOwner &owner, const InfoPtr &info,
                                    const QString &name, bool references, Error *error);
/// The name of a step that renames: "Rename a to b in 12 Records".
QString nameOfRenaming(const std::vector<Renamed> &renamed, qsizetype records);

} // namespace runebook
