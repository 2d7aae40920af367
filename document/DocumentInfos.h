#pragma once

#include "document/InfoListUndo.h"
#include "document/InfoLookups.h"
#include "document/InfoOwnership.h"
#include "document/InfoSequence.h"
#include "platform/UndoManager.h"

#include <QObject>

Q_DECLARE_METATYPE(InfoList)
Q_DECLARE_METATYPE(runebook::IndexSet)

namespace runebook {

/// The info list of a document. Every change of it registers its inverse before it is made, keeps the
/// look-ups in step, and is announced after it; VXDocument tells what each operation means. Main thread only.
class DocumentInfos : public QObject
{
    Q_OBJECT
public:
    /// Both must live as long.
    DocumentInfos(GlyphInfoOwner &owner, UndoManager &undoManager);

public: // asking
    const InfoList &list() const { return m_infos.list(); }
    qsizetype count() const { return m_infos.count(); }
    InfoPtr at(qsizetype index) const { return index >= 0 && index < count() ? m_infos.at(index) : nullptr; }
    /// The first place of the record, or -1.
    qsizetype placeOf(const VXGlyphInfo *info) const { return info ? m_infos.placeOf(*info) : -1; }
    /// The records that removed() tells of, while it does.
    const InfoList &leaving() const { return m_leaving; }
    /// Where the records stand, each as often as it does.
    IndexSet placesOf(const InfoList &infos) const;
    /// Another one after every change of the list that is no step.
    quint64 number() const { return m_number; }
    const InfoLookups &lookups() const { return m_lookups; }
    InfoOwnership &ownership() { return m_ownership; }

public: // changing, with an undo step
    void add(const InfoPtr &info);
    void add(const InfoList &infos);
    void remove(const InfoPtr &info);
    void remove(const InfoList &infos);
    void insertAt(const InfoPtr &info, qsizetype index);
    void insertAt(const InfoList &infos, const IndexSet &indexes);
    void removeAt(qsizetype index);
    void removeAt(const IndexSet &indexes);
    void reorder(const InfoList &infos);

public: // changing, without
    /// Makes \a infos the list.
    void install(InfoList infos);
    void replaceAt(qsizetype index, const InfoPtr &info);
    /// A record, of this list or not, has another value; see InfoLookups.
    void fieldHasChanged(VXGlyphInfo &info, GlyphField field, const FieldValue &old, std::size_t changes);

Q_SIGNALS:
    /// The list, or a record of it that belongs to somebody else, is another one: first of all that is told.
    void revised();
    /// Of which no undo step tells.
    void changedSilently();
    /// These are the document's own signals, see there.
    void didChangeInfos();
    void inserted(const runebook::IndexSet &indexes);
    void removed(const runebook::IndexSet &indexes);
    void replaced(qsizetype index, const InfoPtr &former);
    void reset();

private:
    enum class Notice { Observers, Quiet };

    void putIn(const InfoList &infos, const IndexSet &indexes, Notice notice);
    void takeOut(const IndexSet &indexes, Notice notice);
    void listChanged(Notice notice);
    using Undo = InfoListUndo<DocumentInfos>;
    void registerUndo(ListUndo kind, Undo::How how, const InfoList &infos, const IndexSet &places);

    UndoManager &m_undoManager;
    InfoSequence m_infos;
    InfoOwnership m_ownership;
    InfoLookups m_lookups;
    InfoList m_leaving;
    quint64 m_number = 0;
};

} // namespace runebook
