#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>

class QProgressDialog;

namespace runebook {

/// What scripts need of the program besides its documents and windows. Its operations stand behind the
/// modules that ship with the program; scripts use those.
class ScriptHelpers : public QObject
{
    Q_OBJECT
public:
    static ScriptHelpers &shared();

public: // talking to the user
    /// False in a run without windows: nobody is there to answer.
    Q_INVOKABLE bool canAsk() const;
    void setCanAsk(bool canAsk);
    Q_INVOKABLE void showMessage(const QString &title, const QString &text);
    /// What the user typed; null when they cancelled.
    Q_INVOKABLE QString askText(const QString &prompt, const QString &text);
    /// See ScriptDialogs.
    Q_INVOKABLE QVariant askFields(const QString &prompt, const QVariantList &fields);
    Q_INVOKABLE QString askYesNo(const QString &question, const QString &explanation);
    Q_INVOKABLE QString askFile(const QString &prompt, bool isToSave, const QString &name,
                                const QStringList &filters);
    /// What a script gets in a run without windows when it asks for \a key; invalid when nothing was given
    /// for it.
    Q_INVOKABLE QVariant answerFor(const QString &key) const;
    void setAnswers(const QHash<QString, QString> &answers) { m_answers = answers; }
    /// Shows how far a script is, once that takes longer than a moment; \a maximum 0 when nobody knows. False
    /// when the user wants it to stop.
    Q_INVOKABLE bool showProgress(const QString &title, int value, int maximum);
    Q_INVOKABLE void endProgress();
    /// Lets windows repaint and answer to the user.
    Q_INVOKABLE void processEvents();
    Q_INVOKABLE void beep();

public: // the desktop
    Q_INVOKABLE bool openURL(const QString &url);
    Q_INVOKABLE QString clipboardText() const;
    Q_INVOKABLE bool hasClipboardText() const;
    Q_INVOKABLE void setClipboardText(const QString &text);
    Q_INVOKABLE void clearClipboard();

public: // records
    /// The keys of the fields that files hold, in the order in which a record lists its fields.
    Q_INVOKABLE QStringList fieldKeys() const;

public: // texts
    Q_INVOKABLE quint32 hexStringToInt(const QString &text) const;
    Q_INVOKABLE QString hexStringFromInt(qint64 number) const;
    /// What Unicode says about a character, by key; empty for what it does not assign.
    Q_INVOKABLE QVariantMap unicodeData(quint32 codePoint) const;
    Q_INVOKABLE QString stringWithChar(quint32 codePoint) const;
    /// The code point at a place counted in UTF-16 units, and the place of its last unit.
    Q_INVOKABLE QVariantList character32AtIndex(const QString &text, qint64 index) const;
    /// Location and length of a line counted from 1, in UTF-16 units.
    Q_INVOKABLE QVariantList rangeOfLine(const QString &text, int number) const;
    Q_INVOKABLE QString UUID() const;

private:
    QHash<QString, QString> m_answers;
    QPointer<QProgressDialog> m_progress;
    QElapsedTimer m_sinceProgress;
};

} // namespace runebook
