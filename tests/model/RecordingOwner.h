#pragma once

#include "model/GlyphInfoOwner.h"
#include "model/VXGlyphInfo.h"
#include "platform/UndoManager.h"

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
        for (const InfoPtr &info : records) {
            if (info->name() == name)
                return info;
        }
        return nullptr;
    }
    QObject *asObject() override { return this; }

    InfoList records;
    QStringList heard; ///< the key of the field, once for each notification
    runebook::UndoManager manager;
};
