#pragma once

#include "model/GlyphInfoOwner.h"
#include "model/VXGlyphInfo.h"
#include "platform/UndoManager.h"

#include <algorithm>

/// A document of records that writes down what it hears of them.
class RecordingOwner : public QObject, public runebook::GlyphInfoOwner
{
public:
    InfoPtr add(InfoPtr info = VXGlyphInfo::init())
    {
        info->setDocument(this);
        records.push_back(info);
        return info;
    }
    ~RecordingOwner() override
    {
        for (const InfoPtr &info : records)
            info->setDocument(nullptr);
    }

    runebook::UndoManager *undoManager() override { return &manager; }
    void infoHasChanged(VXGlyphInfo &, runebook::GlyphField field, const runebook::FieldValue &) override
    {
        heard << runebook::keyOfField(field);
    }
    InfoPtr infoForName(const QString &name) const override
    {
        // As in a document an absent name is nobody's, and an empty one is another thing.
        const auto found = std::ranges::find_if(records, [&](const InfoPtr &info) {
            return !name.isNull() && info->name() == name && !info->name().isNull();
        });
        return found == records.end() ? nullptr : *found;
    }
    QObject *asObject() override { return this; }

    InfoList records;
    QStringList heard; ///< the key of the field, once for each notification
    runebook::UndoManager manager;
};
