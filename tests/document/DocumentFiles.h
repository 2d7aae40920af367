#pragma once

#include "document/VXDocument.h"
#include "platform/documents/DocumentController.h"
#include "tests/Files.h"

#include <QSignalSpy>

namespace runebook {

using namespace Qt::StringLiterals;

inline DocumentController &controller()
{
    return DocumentController::shared();
}

inline VXDocument *openDocument(const QString &path, Error *error = nullptr)
{
    return qobject_cast<VXDocument *>(controller().openDocumentWithContentsOfURLDisplay(path, false, error));
}

inline VXDocument *newDocument()
{
    return qobject_cast<VXDocument *>(controller().openUntitledDocumentAndDisplay(false));
}

inline void setUpController()
{
    controller().setDocumentFactory([] { return new VXDocument; });
    controller().addType({u"public.xml"_s, {u"xml"_s}, u"Glyph data"_s});
    controller().addType({u"public.plain-text"_s, {u"txt"_s}, u"Table"_s});
}

/// A test of documents in files of a folder of its own, all closed after each function.
class DocumentFiles : public QObject
{
    Q_OBJECT
protected:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
protected Q_SLOTS:
    void initTestCase() { setUpController(); }
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup()
    {
        for (Document *document : QList<Document *>(controller().documentList()))
            document->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(controller().documentList().isEmpty());
    }
};

} // namespace runebook
