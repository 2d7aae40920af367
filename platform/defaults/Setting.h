#pragma once

#include "platform/defaults/UserDefaults.h"

#include <optional>
#include <type_traits>

namespace runebook {

/// What a number outside of the range of its setting is read as.
enum class OutOfRange { ReadsAsNearest, ReadsAsFallback };

/// What may stand in a setting: from \a least to \a most.
template <typename T> struct SettingRange {
    T least;
    T most;
    OutOfRange outside = OutOfRange::ReadsAsNearest;
};

/// One setting in the standard defaults: its key, what it is until the user has chosen, and which values
/// count. Declared once, as an `inline const` of the namespace Settings, in the header of settings of the
/// lowest folder that uses it; others include that header. T is bool, int, double, an enumeration (stored as
/// its number), a text, a list, a map, bytes, or QVariant for what is stored as it stands. Nothing is read
/// before somebody asks. Main thread only.
template <typename T> class Setting
{
public: // making
    constexpr explicit Setting(const char *key, T fallback = {}) : m_key(key), m_fallback(std::move(fallback))
    {
    }
    constexpr Setting(const char *key, T fallback,
                      SettingRange<T> range) requires std::is_arithmetic_v<T> || std::is_enum_v<T>
        : m_key(key), m_fallback(fallback), m_range(range)
    {
    }

public: // reading
    QString key() const { return m_key; }
    const T &fallback() const { return m_fallback; }
    /// What holds now. A stored value of another type counts as what the framework converts it to.
    T value() const { return valueOr(m_fallback); }
    /// The same, with a fallback that is known only when it is needed.
    T valueOr(const T &fallback) const
    {
        const QVariant stored = UserDefaults::standard().objectForKey(key());
        return stored.isValid() ? inRange(fromVariant(stored), fallback) : fallback;
    }

public: // writing
    void set(const T &value) const { UserDefaults::standard().setObjectForKey(toVariant(value), key()); }
    void reset() const { UserDefaults::standard().removeObjectForKey(key()); }
    /// An empty text or list is no choice.
    void setOrReset(const T &value) const { value.isEmpty() ? reset() : set(value); }
    /// Lets those who ask the defaults by key, as scripts do, see the fallback too.
    void registerFallback() const
    {
        UserDefaults::standard().registerDefaults({{key(), toVariant(m_fallback)}});
    }

public: // following
    /// Calls \a function whenever the setting was changed, by whomever, as long as \a context lives.
    template <typename Function>
    QMetaObject::Connection onChange(const QObject *context, Function function) const
    {
        return QObject::connect(&UserDefaults::standard(), &UserDefaults::changed, context,
                                [key = m_key, function](const QString &changed) {
                                    if (changed == key)
                                        function();
                                });
    }

private:
    static QVariant toVariant(const T &value)
    {
        if constexpr (std::is_enum_v<T>)
            return static_cast<int>(value);
        else
            return QVariant(value);
    }

    static T fromVariant(const QVariant &stored)
    {
        if constexpr (std::is_same_v<T, QVariant>)
            return stored;
        else if constexpr (std::is_same_v<T, QVariantList>)
            return stored.toList();
        else if constexpr (std::is_enum_v<T>)
            return static_cast<T>(stored.toInt());
        else
            return stored.value<T>();
    }

    T inRange(const T &value, const T &fallback) const
    {
        if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
            if (m_range && m_range->outside == OutOfRange::ReadsAsNearest)
                return qBound(m_range->least, value, m_range->most);
            if (m_range && (value < m_range->least || m_range->most < value))
                return fallback;
        }
        return value;
    }

    QLatin1StringView m_key;
    T m_fallback;
    std::optional<SettingRange<T>> m_range;
};

} // namespace runebook
