#pragma once

#include "editing/search/SearchFilter.h"

#include <QObject>
#include <QTimer>

class RSRTVArrayController;

namespace runebook {

/// Where else a text would be found: counts what it would find with other settings, a little at a time while
/// the program is idle.
class SearchOffers : public QObject
{
    Q_OBJECT
public:
    struct Offer {
        SearchSettings settings;
        QString title; ///< what is different: "Description"
        qsizetype count = 0;
    };

    explicit SearchOffers(RSRTVArrayController &controller, QObject *parent = nullptr);

    /// Looks for \a text anew; what was found before is forgotten.
    void start(const QString &text, const SearchSettings &settings);
    void stop();
    const QString &text() const { return m_text; }
    const SearchSettings &settings() const { return m_settings; }
    /// Those that find something, in the order of the search menu; complete when ready() was emitted.
    const QList<Offer> &offers() const { return m_offers; }

Q_SIGNALS:
    void ready();

private:
    void countNext();

    RSRTVArrayController &m_controller;
    QString m_text;
    SearchSettings m_settings;
    QList<Offer> m_pending;
    QList<Offer> m_offers;
    QTimer m_timer;
};

} // namespace runebook
