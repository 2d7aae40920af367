#include "editing/merge/MergeOpening.h"

#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "merge/ConflictBlocks.h"
#include "platform/Background.h"
#include "platform/documents/DocumentController.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(MergeOpening)
};

Error refusal(int code, const QString &sentence)
{
    return {u"MergeError"_s, code, sentence, {}, {}};
}

MergeWindow *openWindow(std::unique_ptr<MergeResolution> resolution, const MergeTitles &titles, Error *error)
{
    if (!resolution) {
        fail(error, refusal(20, Texts::tr("The records of the result are not those of the merge.")));
        return nullptr;
    }
    auto *window = new MergeWindow(std::move(resolution), titles);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

/// With the records of \a prepared, which has them no more.
std::unique_ptr<VXDocument> documentOf(PreparedMerge &prepared, Error *error)
{
    if (!prepared.merge) {
        fail(error, prepared.error);
        return nullptr;
    }
    std::unique_ptr<Document> made = DocumentController::shared().makeDocument();
    auto *document = qobject_cast<VXDocument *>(made.get());
    if (!document)
        return nullptr;
    document->takeContentRead(std::exchange(prepared.content, {}));
    document->setFileType(kGlyphDataType);
    document->updateChangeCount(Document::ChangeDone);
    return std::unique_ptr<VXDocument>(static_cast<VXDocument *>(made.release()));
}

} // namespace

PreparedMerge prepareMerge(const MergeSources &sources, CompareKey key, MergeProgress *progress)
{
    std::array<QByteArray, 3> texts;
    for (std::size_t side = 0; side < texts.size(); ++side) {
        PreparedMerge unread;
        const MergeSource &source = sources[side];
        const std::optional<QByteArray> bytes =
            source.path.isEmpty() ? source.text : readUtf8File(source.path, &unread.error);
        if (!bytes)
            return unread;
        texts[side] = *bytes;
    }
    return PreparedMerge::of(texts, key, progress);
}

void prepareMergeApart(MergeSources sources, CompareKey key, std::shared_ptr<MergeProgress> progress,
                       QObject *context, std::function<void(PreparedMerge)> then)
{
    runInBackground([sources = std::move(sources), key, progress = std::move(progress),
                     guard = QPointer(context), then = std::move(then)] {
        auto prepared = std::make_shared<PreparedMerge>(prepareMerge(sources, key, progress.get()));
        runOnMainThread([prepared, guard, then] {
            if (guard)
                then(std::move(*prepared));
        });
    });
}

QByteArray textOfDocument(const VXDocument &document)
{
    QByteArray text;
    const BlockSink sink = [&text](std::string_view block) {
        text.append(block.data(), qsizetype(block.size()));
        return true;
    };
    GlyphDataWriter(document.infos(), quint8(document.fileVersion()))(sink, nullptr);
    return text;
}

MergeWindow *showMerge(PreparedMerge prepared, const MergeTitles &titles, const QString &name, Error *error)
{
    std::unique_ptr<VXDocument> made = documentOf(prepared, error);
    if (!made)
        return nullptr;
    VXDocument *document = made.release();
    document->setUntitledName(name);
    DocumentController::shared().addDocument(document);
    document->makeWindowControllers();
    MergeWindow *window = openWindow(MergeResolution::of(std::move(prepared), *document), titles, error);
    if (!window)
        document->close();
    return window;
}

MergeWindow *showMergeInto(PreparedMerge prepared, const MergeTitles &titles, const QString &path,
                           Error *error)
{
    std::unique_ptr<VXDocument> made = documentOf(prepared, error);
    if (!made)
        return nullptr;
    VXDocument *document = made.release();
    document->setFileURL(QFileInfo(path).absoluteFilePath());
    document->keepMine(); // what stands there is what is being resolved
    DocumentController::shared().addDocument(document);
    MergeWindow *window = openWindow(MergeResolution::of(std::move(prepared), *document), titles, error);
    if (!window)
        document->close();
    return window;
}

MergeWindow *resolveConflicts(VXDocument &document, Error *error)
{
    if (document.isDocumentEdited()) {
        fail(
            error,
            refusal(21, Texts::tr("Conflicts are resolved from the file: undo or save your changes first.")));
        return nullptr;
    }
    const std::optional<QByteArray> text = readUtf8File(document.fileURL(), error);
    if (!text)
        return nullptr;
    PreparedMerge prepared = PreparedMerge::of(sidesOfConflicts(*text), CompareKey::Name);
    std::unique_ptr<VXDocument> result = documentOf(prepared, error);
    if (!result)
        return nullptr;
    std::unique_ptr<MergeResolution> resolution;
    {
        const UndoGroup group(document.undoManager(), Texts::tr("Resolve Conflicts"));
        document.takeContentOf(*result);
        changeOpenConflicts(document, prepared.merge->openConflicts());
        resolution = MergeResolution::of(std::move(prepared), document);
        if (resolution)
            resolution->endWithUndo();
        else
            document.undoManager()->abandonGroup();
    }
    const QString name = document.displayName();
    return openWindow(std::move(resolution), {name, name, name}, error);
}

} // namespace runebook
