#pragma once

#include <QObject>
#include <QStringList>

namespace runebook {

/// Errors without a caller, as they are presented: reports of a reading come in a row, so they are gathered
/// and shown in the front window's message bar in the next turn of the event loop.
class PresentedErrors : public QObject
{
    Q_OBJECT
public:
    explicit PresentedErrors(QObject *parent);

private:
    void show();

    QStringList m_pending;
};

} // namespace runebook
