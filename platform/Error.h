#pragma once

#include <QMetaType>
#include <QObject>
#include <QString>

namespace runebook {

/// Why an operation failed, as a value. Callers branch on domain and code, never on the words; the words are
/// sentences for a person, translated.
struct Error {
    Q_GADGET
    Q_PROPERTY(QString domain MEMBER domain)
    Q_PROPERTY(int code MEMBER code)
    Q_PROPERTY(QString localizedDescription MEMBER description)
    Q_PROPERTY(QString localizedFailureReason MEMBER failureReason)
    Q_PROPERTY(QString localizedRecoverySuggestion MEMBER recoverySuggestion)
public:
    QString domain;
    int code = 0;
    QString description;
    QString failureReason;
    QString recoverySuggestion;

    /// The sentences that are there, in the order in which a person reads them, one a line.
    QString text() const;
};

/// Fills \a error when the caller wants to know; answers false so that a failing operation can return it.
bool fail(Error *error, Error reason);

/// Where errors go that have no caller: the shell shows them, a headless run prints them. A low layer only
/// announces.
class ErrorPresenter : public QObject
{
    Q_OBJECT
public:
    static ErrorPresenter &shared();
    /// Announces \a error on the main thread: at once when called there, otherwise without waiting.
    Q_INVOKABLE void present(const runebook::Error &error);

Q_SIGNALS:
    void presented(const runebook::Error &error);
};

} // namespace runebook

Q_DECLARE_METATYPE(runebook::Error)
