#pragma once

#include <QStringList>
#include <memory>

namespace runebook {

class Document;

/// Who keeps the open documents, as one of them sees it.
class OpenDocuments
{
public:
    /// Null as long as nobody keeps any.
    static OpenDocuments *current();

    /// The number in the name of a document without file: 1, 2, ...
    virtual int untitledNumber(const Document *document) const = 0;
    /// The files of all of them; empty texts for those without.
    virtual QStringList filePaths() const = 0;
    /// A document that is not among the open ones yet; null when none can be made.
    virtual std::unique_ptr<Document> makeDocument() const = 0;
    virtual void noteRecentFile(const QString &path) = 0;
    /// Takes the document out and deletes it later.
    virtual void removeDocument(Document *document) = 0;

protected:
    OpenDocuments();
    ~OpenDocuments();
    Q_DISABLE_COPY_MOVE(OpenDocuments)
};

} // namespace runebook
