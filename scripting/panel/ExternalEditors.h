#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

/// Opening a line of a file in the editor that the desktop has for Python.
namespace runebook::ExternalEditors {

/// A program and what it is given.
struct Command {
    QString program; ///< empty when there is none
    QStringList arguments;

    friend bool operator==(const Command &, const Command &) = default;
};

/// What the desktop opens Python files with: the path of a desktop file or of an application bundle; empty
/// when it has none.
QString defaultApplication();
/// How \a application (a desktop file, an application bundle or a command) shows \a line of \a path; without
/// a program when it has no way that is known here, or there is no line. Lines are texts, as they were
/// printed.
Command commandFor(const QString &application, const QString &path, const QString &line);
/// Shows the line in the default application; opens the file there without the line when it has no way to
/// show one. Where the desktop has no application for it, \a instead is called in the event loop, unless \a
/// context has gone by then. Does not wait.
void open(const QString &path, const QString &line, QObject *context, std::function<void()> instead);

} // namespace runebook::ExternalEditors
