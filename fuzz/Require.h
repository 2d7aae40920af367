#pragma once

#include <QByteArray>
#include <QString>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

/// Ends the program with a picture of what went wrong, so that libFuzzer keeps the input.
#define REQUIRE(condition, got, wanted)                                                                      \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: %s\n got: %s\nwant: %s\n", __FILE__, __LINE__, #condition,          \
                         qPrintable(got), qPrintable(wanted));                                               \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

/// Any bytes as valid UTF-8: what is none becomes a replacement character.
inline QByteArray madeValid(const std::uint8_t *data, std::size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)).toUtf8();
}

/// A copy without a byte behind its end, so that reading one too many is found.
class ExactBytes
{
public:
    explicit ExactBytes(const QByteArray &bytes)
        : m_bytes(new char[static_cast<std::size_t>(bytes.size())]), m_size(bytes.size())
    {
        std::memcpy(m_bytes.get(), bytes.constData(), static_cast<std::size_t>(m_size));
    }
    QByteArray view() const { return QByteArray::fromRawData(m_bytes.get(), m_size); }

private:
    std::unique_ptr<char[]> m_bytes;
    qsizetype m_size;
};
