#include "platform/defaults/UserDefaults.h"

#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/defaults/DefaultsProblem.h"

#include <QDataStream>
#include <QIODevice>
#include <QStandardPaths>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QString standardFileName()
{
    const QString chosen = qEnvironmentVariable("RUNEBOOK_DEFAULTS");
    if (!chosen.isEmpty())
        return chosen;
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + "/runebook/runebook.ini"_L1;
}

// QSettings reads a list of one text back as a text and an empty list as nothing, and takes "@" and "/"
// in a special way. So a list or map travels as one value that QVariant streams itself.
constexpr auto kStreamed = "\x01streamed:"_L1;

QVariant toStored(const QVariant &value)
{
    const int type = value.typeId();
    if (type != QMetaType::QVariantList && type != QMetaType::QStringList && type != QMetaType::QVariantMap)
        return value;
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    stream << value;
    return QString(kStreamed + QLatin1StringView(bytes.toBase64()));
}

QVariant fromStored(const QVariant &stored)
{
    if (stored.typeId() != QMetaType::QString)
        return stored;
    const QString text = stored.toString();
    if (!text.startsWith(kStreamed))
        return stored;
    const QByteArray bytes = QByteArray::fromBase64(QStringView(text).mid(kStreamed.size()).toLatin1());
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_4);
    QVariant value;
    stream >> value;
    return stream.status() == QDataStream::Ok ? value : QVariant();
}

// Values are kept as long as the program runs; synchronize() answers that they cannot be written.
const QString kNowhere = u"/dev/null/settings"_s;

/// QSettings puts a new file in the place of whatever is there, and waits at a pipe.
bool isUsable(const QString &path)
{
    const FileKind kind = fileKind(path);
    if ((kind == FileKind::None || kind == FileKind::Regular) && !isOddity(path + ".lock"_L1))
        return true;
    tellPassedOver(path, "settings are kept in plain files alone");
    return false;
}

} // namespace

UserDefaults &UserDefaults::standard()
{
    static UserDefaults defaults(standardFileName());
    return defaults;
}

UserDefaults::UserDefaults(const QString &path, QObject *parent) : QObject(parent), m_path(path)
{
    setDamagedDefaultsAside(path);
    m_settings = std::make_unique<QSettings>(isUsable(path) ? path : kNowhere, QSettings::IniFormat);
}

UserDefaults::~UserDefaults() = default;

QVariant UserDefaults::objectForKey(const QString &key) const
{
    const QVariant stored = storedValue(key);
    return stored.isValid() ? fromStored(stored) : m_fallbacks.value(key);
}

QString UserDefaults::stringForKey(const QString &key) const
{
    return objectForKey(key).toString();
}

bool UserDefaults::boolForKey(const QString &key) const
{
    return objectForKey(key).toBool();
}

int UserDefaults::integerForKey(const QString &key) const
{
    return objectForKey(key).toInt();
}

QVariantList UserDefaults::arrayForKey(const QString &key) const
{
    return objectForKey(key).toList();
}

bool UserDefaults::isSet(const QString &key) const
{
    return storedValue(key).isValid();
}

QVariant UserDefaults::storedValue(const QString &key) const
{
    const std::optional<QVariant> ofThisRun = m_ofThisRun.value(key);
    return ofThisRun ? *ofThisRun : m_settings->value(key);
}

void UserDefaults::store(const QVariant &value, const QString &key)
{
    if (const auto ofThisRun = m_ofThisRun.find(key); ofThisRun != m_ofThisRun.end())
        *ofThisRun = value;
    else if (value.isValid())
        m_settings->setValue(key, value);
    else
        m_settings->remove(key);
}

void UserDefaults::keepForThisRun(const QStringList &keys)
{
    for (const QString &key : keys)
        m_ofThisRun.insert(key, std::nullopt);
}

void UserDefaults::setObjectForKey(const QVariant &value, const QString &key)
{
    if (!value.isValid()) {
        removeObjectForKey(key);
        return;
    }
    const QVariant old = objectForKey(key);
    store(toStored(value), key);
    if (old != value)
        Q_EMIT changed(key);
}

void UserDefaults::removeObjectForKey(const QString &key)
{
    if (!isSet(key))
        return;
    const QVariant old = objectForKey(key);
    store({}, key);
    if (old != objectForKey(key))
        Q_EMIT changed(key);
}

void UserDefaults::registerDefaults(const QVariantMap &fallbacks)
{
    m_fallbacks.insert(fallbacks);
}

bool UserDefaults::synchronize()
{
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}

QString UserDefaults::fileName() const
{
    return m_path;
}

} // namespace runebook
