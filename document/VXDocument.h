#pragma once

#include "document/DocumentInfos.h"
#include "document/FieldChanges.h"
#include "document/FileForm.h"
#include "document/UnkeptValues.h"
#include "model/ReadNotes.h"
#include "model/VXGlyphInfo.h"
#include "platform/documents/Document.h"

#include <optional>

class QFont;

namespace runebook {
struct FileContent;
struct FormattedText;
} // namespace runebook

/// One open glyph data file: its info list, the file version it was read with, its undo history. Every
/// change of the list registers its inverse before it is made and is announced after it. Main thread only.
class VXDocument : public runebook::Document, public runebook::SharingOwner
{
    Q_OBJECT
    Q_PROPERTY(InfoList infos READ infos WRITE setInfos)
    Q_PROPERTY(int fileVersion READ fileVersion WRITE setFileVersion)
public:
    Q_INVOKABLE explicit VXDocument(QObject *parent = nullptr);
    ~VXDocument() override;

public: // opening and saving
    /// Types "public.xml" and "public.plain-text"; others answer false. A file that cannot be read opens as
    /// an empty document, and the answer is true all the same: readError() tells why.
    bool readFromURLOfType(const QString &url, const QString &type,
                           runebook::Error *error = nullptr) override;
    /// The list of a file, by its extension, without installing it; nothing for other extensions and for
    /// files that cannot be read.
    Q_INVOKABLE std::optional<InfoList> readFromURL(const QString &url, runebook::Error *error = nullptr);
    /// Sets the file version as well, which is a change of the document where it was another one.
    Q_INVOKABLE std::optional<InfoList> readXMLFromURL(const QString &url, runebook::Error *error = nullptr);
    Q_INVOKABLE std::optional<InfoList> readTabbedFromURL(const QString &url,
                                                          runebook::Error *error = nullptr);
    bool writeToURLOfType(const QString &url, const QString &type, runebook::Error *error = nullptr) override;
    QString autosavingFileType() const override;
    /// The delay that making a document sets: the user's setting, in seconds, 6 where there is none.
    static double usualAutosavingDelay();
    void makeWindowControllers() override;
    /// The name of the window's interface file.
    Q_INVOKABLE QString windowNibName() const;
    /// As much of the path as tells the document from the other open ones.
    QString displayName() const override;
    /// Why the file could not be read; an empty domain when it could.
    const runebook::Error &readError() const override { return m_readError; }
    QStringList savingWillChange() const override;
    void takeSavedForm(const QString &type) override;
    void learnFormOf(const QString &original) override;
    runebook::SavingLosses savingLosses(const QString &type) const override;
    qsizetype fixSavingLosses() override;
    bool readAutosavedContents(const QString &path, bool *isWhole, runebook::Error *error) override;
    /// Reads what can be read of a table that opened empty: rows that are no record are noted, and written
    /// back as they stand. False, and an error, where nothing can be read.
    Q_INVOKABLE bool readWhatCanBeRead(runebook::Error *error = nullptr);
    /// The table that the content was read from or saved as; null for glyph data.
    const runebook::TableFormPtr &tableForm() const { return m_fileForm.table(); }
    /// What a save as a table of \a type would write: its own columns, else one for each field.
    runebook::TableFormPtr tableFormFor(const QString &type) const;
    /// The content of a file from its bytes, with every note of the reading. False, and an error, when they
    /// are not such a file.
    bool readFromData(const QByteArray &bytes, const QString &type, runebook::Error *error = nullptr);
    /// Takes what was read elsewhere, with every note of the reading, as the content.
    void takeContentRead(runebook::FileContent content);
    bool takeContentOf(runebook::Document &other) override;
    bool readWorseThan(const runebook::Document &former) const override;
    bool isEmpty() const override { return m_infos.count() == 0; }
    std::unique_ptr<runebook::SlicedContent> slicedContent() const override;
    /// Saving takes the token when it begins. Once the file is written, the document counts as unchanged
    /// if nothing happened meanwhile. \a operation: 0 save, 1 save as, 2 save a copy.
    Q_INVOKABLE quint64 changeCountTokenForSaveOperation(int operation) const;
    Q_INVOKABLE void updateChangeCountWithTokenForSaveOperation(quint64 token, int operation);
    /// What the records cannot keep of the file that was read.
    const runebook::ReadNotes &readNotes() const { return m_readNotes; }
    /// How many conflicts of a merge are open here, for which the document holds our side: a save asks.
    qsizetype openConflicts() const { return m_openConflicts; }
    /// No undo step, and none that was saved otherwise.
    void setOpenConflicts(qsizetype count) { m_openConflicts = count; }
    Q_INVOKABLE int fileVersion() const { return m_fileVersion; }
    /// No undo step, but the document is edited.
    Q_INVOKABLE void setFileVersion(int version);

public: // the info list
    /// All records; the reference holds until the list changes. In a loop that changes the list, asking for
    /// single records is cheaper.
    const InfoList &infos() const { return m_infos.list(); }
    /// Replaces the list: no undo step, but the document is edited. The records get this document.
    Q_INVOKABLE void setInfos(InfoList infos);
    Q_INVOKABLE qsizetype countOfInfos() const { return m_infos.count(); }
    /// Null for an index outside the list.
    Q_INVOKABLE InfoPtr objectInInfosAtIndex(qsizetype index) const { return m_infos.at(index); }
    /// The first place of the record, or -1.
    Q_INVOKABLE qsizetype indexOfObjectInInfos(const InfoPtr &info) const { return placeOf(info.get()); }
    /// The same for those who hold no share of the record.
    qsizetype placeOf(const VXGlyphInfo *info) const { return m_infos.placeOf(info); }
    /// The records that infosRemoved tells of, while it does; some may stand elsewhere in the list.
    const InfoList &leavingInfos() const { return m_infos.leaving(); }
    /// Appends. Undo: removeInfo.
    Q_INVOKABLE void addInfo(const InfoPtr &info) { m_infos.add(info); }
    Q_INVOKABLE void addInfos(const InfoList &infos) { m_infos.add(infos); }
    /// Makes \a document, which may be null, the one that \a info belongs to, as records of its list do.
    static void setDocumentOf(const InfoPtr &info, VXDocument *document)
    {
        runebook::InfoOwnership::give(info, document);
    }
    /// Removes every occurrence. Undo appends again, at the end of the list.
    Q_INVOKABLE void removeInfo(const InfoPtr &info) { m_infos.remove(info); }
    Q_INVOKABLE void removeInfos(const InfoList &infos) { m_infos.remove(infos); }
    Q_INVOKABLE void insertObjectInInfosAtIndex(const InfoPtr &info, qsizetype index)
    {
        m_infos.insertAt(info, index);
    }
    /// Inserts the records so that each stands at its index afterwards; the first at the lowest.
    Q_INVOKABLE void insertObjectsInInfosAtIndexes(const InfoList &infos, const runebook::IndexSet &indexes)
    {
        m_infos.insertAt(infos, indexes);
    }
    /// The record loses its document.
    Q_INVOKABLE void removeObjectFromInfosAtIndex(qsizetype index) { m_infos.removeAt(index); }
    /// The records keep their document.
    Q_INVOKABLE void removeObjectsFromInfosAtIndexes(const runebook::IndexSet &indexes)
    {
        m_infos.removeAt(indexes);
    }
    /// No undo step, but the document is edited.
    Q_INVOKABLE void replaceObjectInInfosAtIndexWithObject(qsizetype index, const InfoPtr &info)
    {
        m_infos.replaceAt(index, info);
    }
    /// Puts the records into another order: the list's own records, each once. Undo restores the old order.
    Q_INVOKABLE void reorderInfos(const InfoList &infos) { m_infos.reorder(infos); }

public: // history
    /// Takes back the step of that number, from 0, and leaves all behind it as they are; that is a new step.
    /// False, and an error that says what is in the way, where a later one changed the same.
    Q_INVOKABLE bool undoOnlyStep(int step, runebook::Error *error = nullptr);

public: // look-ups: the first record in list order wins
    Q_INVOKABLE InfoPtr infoForName(const QString &name) const override
    {
        return m_infos.lookups().infoForName(name);
    }
    Q_INVOKABLE InfoPtr infoForUnicode(const QString &unicode) const
    {
        return m_infos.lookups().infoForUnicode(unicode);
    }
    /// All records whose value for \a key is one of \a values, in list order; nothing when there is none or
    /// the key names no field.
    Q_INVOKABLE std::optional<InfoList> infoForKeyValues(const QString &key, const QVariantList &values) const
    {
        return m_infos.lookups().infosForKeyValues(key, values);
    }
    /// The records that a name like "uni00410042" or "u1F600" stands for; free ones are made for code points
    /// that the list does not have. Nothing for other names.
    Q_INVOKABLE std::optional<InfoList> baseInfosForUniName(const QString &name) const
    {
        return m_infos.lookups().baseInfosForUniName(name);
    }
    Q_INVOKABLE static QStringList categories() { return VXGlyphInfo::categories(); }
    Q_INVOKABLE static QStringList subCategories() { return VXGlyphInfo::subCategories(); }
    Q_INVOKABLE static QStringList scripts() { return VXGlyphInfo::scripts(); }

public: // names in other records: decompositions, marks, alternate names; see Renaming.h
    /// The records that name \a name there, in list order.
    Q_INVOKABLE InfoList infosUsingName(const QString &name) const;
    /// Gives the record another name and, with \a references, writes it wherever others name it, and in the
    /// names that are built on it, as one step. How many other records that changed; an error where the name
    /// cannot be.
    Q_INVOKABLE qsizetype renameInfoToReferences(const InfoPtr &info, const QString &name, bool references,
                                                 runebook::Error *error = nullptr);

public: // previews, by the names that scripts know; see GlyphPreview.h and PreviewFonts.h
    Q_INVOKABLE QString stringForInfo(const InfoPtr &info) const;
    Q_INVOKABLE QString baseStringForInfo(const InfoPtr &info) const;
    runebook::FormattedText formatStringFromInfo(const InfoPtr &info) const;
    static runebook::FormattedText formatInfoStringFont(const QString &text, const QFont &font);
    static std::optional<QFont> fontForScriptSize(const QString &script, double size);
    Q_INVOKABLE static QString previewFontForScript(const QString &script);
    Q_INVOKABLE static void registerPreviewFontForScript(const QString &path, const QString &script);
    Q_INVOKABLE static void removePreviewFontForScript(const QString &script);
    Q_INVOKABLE static void setNeedsUpdateScriptToFontCache();

public: // called by records
    runebook::UndoManager *undoManager() override { return Document::undoManager(); }
    void infoHasChanged(VXGlyphInfo &info, runebook::GlyphField field,
                        const runebook::FieldValue &old) override;
    void contentHasChanged(VXGlyphInfo &info) override;
    QObject *asObject() override { return this; }
    runebook::InfoOwnership &ownership() override { return m_infos.ownership(); }
    /// Tells the window that the record it shows may look different.
    Q_INVOKABLE void elementHasChanged(const InfoPtr &info);
    /// Announces now what would be announced when control returns to the event loop.
    void flushChanges();

public:
    using Change = runebook::FieldChange;

Q_SIGNALS:
    /// After every change of the list as seen by observers of the key "infos"; taking records out with
    /// removeInfo and removeInfos does not count as one.
    void didChangeInfos();
    /// What really happened to the list: the records stand at these places now, or stood there before.
    void infosInserted(const runebook::IndexSet &indexes);
    void infosRemoved(const runebook::IndexSet &indexes);
    /// Another record has taken the place of \a former.
    void infoReplaced(qsizetype index, const InfoPtr &former);
    /// The whole list is another one or in another order.
    void infosReset();
    /// Fields of records have changed: once for each command, however many there were.
    void infosChanged(const std::vector<VXDocument::Change> &changes);
    /// The window shows the document now.
    void windowMade();
    /// The record may look different where it is shown.
    void elementChanged(const InfoPtr &info);
    /// The document's file was read again and readNotes() with it, besides what the signals above tell.
    void readNotesChanged();

protected:
    void noteAcceptedLosses() override;

private:
    /// Makes \a infos the list, without undo step or notice to the edited state.
    void install(InfoList infos) { m_infos.install(std::move(infos)); }
    /// Takes over what a reading told besides the records, which it answers.
    InfoList takeForm(runebook::FileContent content);
    void adoptTable(const QString &original);
    runebook::UnkeptValues::Content savedContent(const QString &type) const;
    bool mayWrite(const QString &url, const QString &type, runebook::Error *notice, runebook::Error *error);
    void restoreFileVersion(int version);

    runebook::DocumentInfos m_infos;
    quint8 m_fileVersion = 2;
    runebook::Error m_readError;
    runebook::ReadNotes m_readNotes;
    runebook::FileForm m_fileForm;
    mutable runebook::UnkeptValues m_unkept;
    qsizetype m_openConflicts = 0;
    mutable QString m_lossyType; ///< whose losses were asked for last
    quint64 m_revision = 0; ///< counts changes of any kind
    runebook::FieldChanges m_changes;
};
