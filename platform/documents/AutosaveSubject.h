#pragma once

#include "platform/documents/AutosaveFolder.h"
#include "platform/documents/SlicedContent.h"

#include <QJsonArray>
#include <memory>

namespace runebook {

/// What an autosave keeps, and how it is asked for it. It is another thing than what a save writes: it holds
/// every value, and what is being typed.
class AutosaveSubject
{
public:
    /// Whether anything would be lost with it: edits, or what is being typed.
    virtual bool hasUnsavedWork() const = 0;
    virtual bool isDocumentEdited() const = 0;
    /// What it is called when autosaving has to tell of it.
    virtual QString displayName() const = 0;
    /// The window that shows it, or null.
    virtual QObject *windowController() const = 0;
    /// Where it belongs.
    virtual AutosaveNote autosaveNote() = 0;
    /// Prints the content as autosaving keeps it, a little at a time; null when it can only be written at
    /// once. It holds every value, whatever the file can hold.
    virtual std::unique_ptr<SlicedContent> slicedContent() const = 0;
    /// Writes the content at once, where it cannot be printed in slices.
    virtual bool writeAutosave(const QString &path, Error *error) = 0;
    /// What stands in editors and was not handed over yet.
    virtual QJsonArray pendingTexts() const = 0;

protected:
    ~AutosaveSubject() = default;
};

/// When changes are autosaved: the same for all documents.
struct AutosaveTimes {
    double delay = 0; ///< seconds of inactivity; 0 means never
    double bound = 10; ///< seconds after which a change lies on the disk at the latest

    static AutosaveTimes &shared()
    {
        static AutosaveTimes times;
        return times;
    }
};

} // namespace runebook
