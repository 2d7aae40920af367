#pragma once

#include "document/VXDocument.h"
#include "editing/window/WindowParts.h"

#include <QDeadlineTimer>
#include <QObject>
#include <functional>
#include <memory>

namespace runebook {

struct EntryChange;
class EntryPlan;
class PlanSheet;
class RecordPlan;

/// The commands of a document window that edit or make many records at once: duplicates, variants,
/// characters, entries of lists, production names. Each takes what is being typed first, shows in a sheet
/// what it will do, and is one undo step. Scripts say what a person would choose and see no sheet.
class ManyCommands : public QObject
{
    Q_OBJECT
public:
    ManyCommands(const WindowParts &parts, QObject *parent);

public: // by hand
    /// Behind each selected record a new one with a free name, every other field, and no code point.
    void duplicate();
    /// Opens the sheet for the entries of list fields; \a field nothing: the one that was edited last.
    void editEntries(std::optional<GlyphField> field = {});
    void addVariants();
    /// Behind the selected record, if there is one alone, else at the end.
    void addCharacters();
    /// For the selected records, or all that are shown.
    void fillProductionNames();

public: // for scripts
    /// The number of records that have changed; -1, an error and no change where one refuses it.
    qsizetype changeEntries(const QString &key, const QStringList &added, const QStringList &removed,
                            Error *error);
    /// The new records. Names that are there already are left out.
    InfoList addVariants(const QStringList &suffixes, const QStringList &fields, Error *error);
    /// Of ranges, the name of a block, or the characters of \a text; the new records.
    InfoList addCharacters(const QString &text, Error *error);
    /// By "list", "codepoint" or "parts"; the number of names that have changed, -1 and an error for others.
    qsizetype fillProductionNames(const QString &rule, bool onlyEmpty, Error *error);

private:
    InfoList selectedOrShown() const;
    /// Behind which new records come; null: at the end.
    InfoPtr placeForNew() const;
    void open(PlanSheet *sheet);
    /// Makes and carries out at once; false, and an error, where something is in the way.
    bool carryOutAll(RecordPlan &plan, Error *error);
    template <class Plan> void carryOutLater(std::shared_ptr<Plan> plan);
    /// False when the user has stopped it; nothing has changed then.
    bool carryOut(RecordPlan &plan);
    bool carryOut(EntryPlan &plan);
    bool inSlices(const QString &stepName, const std::function<bool(const QDeadlineTimer &)> &goOn,
                  const std::function<double()> &part);
    void select(const InfoList &infos);

    WindowParts m_parts;
};

} // namespace runebook
