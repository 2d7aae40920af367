#pragma once

#include <QHash>
#include <QObject>
#include <QSettings>
#include <QVariant>
#include <memory>
#include <optional>

namespace runebook {

/// What the user has chosen, by key, kept between runs; with fallbacks that classes register. The file is
/// the user's own unless the environment variable RUNEBOOK_DEFAULTS names another. Main thread only.
class UserDefaults : public QObject
{
    Q_OBJECT
public: // making
    /// The defaults of this process. Made on first use.
    static UserDefaults &standard();
    /// Defaults kept in the file \a path (INI); for tests and for several sets beside each other.
    explicit UserDefaults(const QString &path, QObject *parent = nullptr);
    ~UserDefaults() override;

public: // reading: the stored value, else the registered fallback, else the null value of the type
    Q_INVOKABLE QVariant objectForKey(const QString &key) const;
    Q_INVOKABLE QString stringForKey(const QString &key) const;
    Q_INVOKABLE bool boolForKey(const QString &key) const;
    Q_INVOKABLE int integerForKey(const QString &key) const;
    Q_INVOKABLE QVariantList arrayForKey(const QString &key) const;
    /// True when the user has a value of their own for \a key; registered fallbacks do not count.
    Q_INVOKABLE bool isSet(const QString &key) const;

public: // writing
    /// Stores \a value (text, number, boolean, byte array, list or map of these); an invalid value removes
    /// the key. Announces changed() when the value differs from what was read before.
    Q_INVOKABLE void setObjectForKey(const QVariant &value, const QString &key);
    Q_INVOKABLE void removeObjectForKey(const QString &key);
    /// From now on changes under these keys last for this run and are not written: what windows remember
    /// is no business of a run that nobody sees.
    void keepForThisRun(const QStringList &keys);
    /// Adds fallbacks; they are never written to the file.
    Q_INVOKABLE void registerDefaults(const QVariantMap &fallbacks);
    /// Writes what is pending. False when the file cannot be written.
    Q_INVOKABLE bool synchronize();

public:
    /// The file in which the values are kept.
    QString fileName() const;

Q_SIGNALS:
    void changed(const QString &key);

private:
    QVariant storedValue(const QString &key) const;
    void store(const QVariant &value, const QString &key);

    QString m_path;
    std::unique_ptr<QSettings> m_settings;
    QHash<QString, std::optional<QVariant>> m_ofThisRun; ///< nothing while unchanged; invalid: removed
    QVariantMap m_fallbacks;
};

} // namespace runebook
