#pragma once

#include "scripting/python/ScriptConsole.h"

#include <QObject>

/// Keeps what scripts write, as the macro panel does, and counts how often it is cleared.
class KeptConsole final : public QObject, public runebook::ScriptConsole
{
public:
    void setWrite(const QString &text) override { output += text; }
    void setWriteError(const QString &text) override { errors += text; }
    void clearConsole(QObject *) override
    {
        ++clearings;
        output.clear();
    }
    QString output;
    QString errors;
    int clearings = 0;
};
