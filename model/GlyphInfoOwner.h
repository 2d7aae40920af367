#pragma once

#include "model/FieldValue.h"
#include "model/GlyphField.h"

#include <QString>
#include <memory>

class QObject;
class VXGlyphInfo;

namespace runebook {

class UndoManager;

/// What a record asks of the document that owns it. The document implements it; records know no more.
class GlyphInfoOwner
{
public:
    /// Where a change registers its inverse; null when nothing is to be kept.
    virtual UndoManager *undoManager() = 0;
    /// Called by every setter after the change. \a old is what the field held before.
    virtual void infoHasChanged(VXGlyphInfo &info, GlyphField field, const FieldValue &old) = 0;
    /// Called by setters that leave no undo step and announce nothing: what a file holds of the record is
    /// another thing now.
    virtual void contentHasChanged(VXGlyphInfo &info) { Q_UNUSED(info) }
    /// Told of changes to records that stand in a list but have no owner; set once.
    static inline void (*ownerlessHasChanged)(VXGlyphInfo &info) = nullptr;
    /// The first record of that name, or null.
    virtual std::shared_ptr<VXGlyphInfo> infoForName(const QString &name) const = 0;
    virtual QObject *asObject() = 0;

protected:
    ~GlyphInfoOwner() = default;
};

} // namespace runebook
