#pragma once

#include <QList>
#include <QObject>

namespace runebook {

/// Documents that a script has opened unseen get a window when it ends: nobody could save or close them, and
/// Quit would ask about files that were never shown.
class UnseenDocuments : public QObject
{
    Q_OBJECT
public:
    explicit UnseenDocuments(QObject *parent);

private:
    void show();

    QList<QObject *> m_beforeRun; ///< to be compared, never to be used: some may be gone
};

} // namespace runebook
