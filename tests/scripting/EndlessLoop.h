#pragma once

#include <QString>
#include <QTest>

namespace runebook {

/// A line of a script that only a signal ends. The thread sanitizer delivers signals in calls of the C library alone, of which the
/// plain loop has none.
#if defined(__SANITIZE_THREAD__)
inline const auto kEndlessLoop = QStringLiteral("while True: __import__('os').close(__import__('os').dup(0))");
#else
inline const auto kEndlessLoop = QStringLiteral("while True: pass");
#endif

/// Leaves out, under the thread sanitizer, scripts that are inside of a regular expression: it calls nothing either.
#if defined(__SANITIZE_THREAD__)
#define SKIP_WITHOUT_SIGNALS(code) \
    if (code.contains(QLatin1StringView("re.match"))) \
    QSKIP("sanitizer-signals: delivered in calls of the C library only, and a regular expression has none")
#else
#define SKIP_WITHOUT_SIGNALS(code) static_cast<void>(code)
#endif

} // namespace runebook
