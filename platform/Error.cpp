#include "platform/Error.h"

#include "platform/Background.h"

#include <QCoreApplication>
#include <QStringList>
#include <QThread>

namespace runebook {

QString Error::text() const
{
    QStringList sentences;
    for (const QString &sentence : {description, failureReason, recoverySuggestion}) {
        if (!sentence.isEmpty())
            sentences += sentence;
    }
    return sentences.join(u'\n');
}

bool fail(Error *error, Error reason)
{
    if (error)
        *error = std::move(reason);
    return false;
}

ErrorPresenter &ErrorPresenter::shared()
{
    static ErrorPresenter presenter;
    return presenter;
}

void ErrorPresenter::present(const Error &error)
{
    if (!QCoreApplication::instance() || QThread::currentThread() == QCoreApplication::instance()->thread()) {
        Q_EMIT presented(error);
        return;
    }
    runOnMainThread([this, error] { Q_EMIT presented(error); });
}

} // namespace runebook
