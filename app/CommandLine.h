#pragma once

#include "app/FileConversion.h"
#include "merge/MergeCommand.h"

#include <QHash>
#include <QStringList>

namespace runebook {

/// What the user asked for on the command line.
struct CommandLine {
    enum class Mode {
        Windows,
        WatchRun,
        Compare,
        Merge,
        MergeTool,
        TextConversion,
        Conversion,
        GitSetup,
        Script,
        Check,
        Help,
        Version,
        Wrong
    };

    Mode mode = Mode::Windows;
    QStringList files;
    QString compareKey; ///< "name", "unicode" or "production"
    bool asJson = false;
    QString only; ///< as OnlyRecords takes it; null: all records
    bool isStrict = false; ///< hints count as problems
    QStringList leftOutKinds; ///< of problems, by their ids
    MergeRequest merge;
    FileConversion conversion;
    bool isForUser = false; ///< the set-up of git: not of one repository alone
    QString script; ///< path of a script file, "-" for the standard input; or
    QString code; ///< code to run
    QStringList scriptArguments; ///< what stands behind "--"
    QString requiredPython; ///< the oldest version that will do, such as "3.10"
    QString stubsFolder; ///< where the typing stubs are to be written
    bool savesFiles = false;
    QHash<QString, QString> answers; ///< to what the script asks
    bool ignoresRescue = false; ///< goes on where an interrupted save has left its text
    bool losesValues = false; ///< write files even where they cannot hold all values
    bool startsNewInstance = false; ///< even when the program runs already
    /// For WatchRun, and for Windows after a program that was ended: the file that RunWatch wrote.
    QString sessionFile;
    QString message; ///< for Help, Version and Wrong: what to print
};

/// Takes the arguments apart, the program's name first. Never fails: wrong use is a mode with a message.
CommandLine parseCommandLine(const QStringList &arguments);

/// True when there is a display that windows can be shown on, or the platform was chosen by hand.
bool hasDisplay();

} // namespace runebook
