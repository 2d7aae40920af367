#pragma once

#include "model/StringHelpers.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace runebook {

/// A reference to a line of a file in a text for the console.
struct FileLink {
    UnitRange range;
    QString path; ///< "<string>" for the code of the macro panel, "<prompt>" for what was entered below the
                  ///< console
    QString line; ///< as printed, may be empty

    friend bool operator==(const FileLink &, const FileLink &) = default;
};

/// A text as the console shows it: paths cut to the file's name where they lead to a file.
struct ConsoleText {
    QString text;
    QList<UnitRange> emphasised; ///< names of errors and the word "Traceback": bold and red
    QList<FileLink> links; ///< in the order of the text

    /// Finds what is to be marked in one piece of output.
    static ConsoleText fromOutput(const QString &output);
};

/// The names of errors that the console marks.
const QStringList &errorNames();
/// \a message without its first ", in <module>".
QString cleanupErrorMessage(const QString &message);

} // namespace runebook
