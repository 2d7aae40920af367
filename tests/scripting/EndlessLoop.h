#pragma once

#include <QString>
#include <QTest>

namespace runebook {

/// A line of a script that only a signal ends. The thread sanitizer delivers signals in calls of the C
/// library alone, of which the plain loop has none.
#if defined(__SANITIZE_THREAD__)
inline const auto kEndlessLoop =
    QStringLiteral("while True: __import__('os').close(__import__('os').dup(0))");
/// Leaves out scripts that are inside of a regular expression: it calls nothing either.
#define SKIP_WITHOUT_SIGNALS(code)                                                                           \
    if (code.contains(QLatin1StringView("re.match")))                                                        \
    QSKIP("sanitizer-signals: delivered in calls of the C library only, and a regular expression has none")
#else
inline const auto kEndlessLoop = QStringLiteral("while True: pass");
#define SKIP_WITHOUT_SIGNALS(code) static_cast<void>(code)
#endif

} // namespace runebook
