#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

namespace runebook {

/// The application as scripts see it. The program may put an object of its own in its place, which then has
/// to answer orderedDocuments() as well.
class ScriptApplication : public QObject
{
    Q_OBJECT
public:
    /// The object that scripts get for NSApplication.sharedApplication().
    static QObject *object();
    static void setObject(QObject *application);
    static ScriptApplication &shared();

    /// The open documents, front to back.
    Q_INVOKABLE QList<QObject *> orderedDocuments() const;
    Q_INVOKABLE QList<QObject *> documents() const { return orderedDocuments(); }
    Q_INVOKABLE QObject *delegate() const { return m_delegate; }
    /// Not owned.
    Q_INVOKABLE void setDelegate(QObject *delegate) { m_delegate = delegate; }
    Q_INVOKABLE QObject *keyWindow() const;
    Q_INVOKABLE QString version() const;
    /// The menu bar of the window that is in front; null when there is no window.
    Q_INVOKABLE QObject *mainMenu() const;

private:
    QPointer<QObject> m_delegate;
};

} // namespace runebook
