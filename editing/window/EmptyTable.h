#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QVBoxLayout;

namespace runebook {

/// Stands in the middle of a table without rows: why there are none, and what can be done about it.
class EmptyTable : public QWidget
{
    Q_OBJECT
public:
    struct Offer {
        QString text;
        std::function<void()> act;
        friend bool operator==(const Offer &a, const Offer &b) { return a.text == b.text; }
    };
    struct Notice {
        QString title;
        QString hint; ///< stands above the offers
        QList<Offer> offers;
        friend bool operator==(const Notice &, const Notice &) = default;
    };

    /// Covers \a area, which gets the keys that are not meant for the offers.
    explicit EmptyTable(QWidget *area);
    /// A notice without title hides everything.
    void showNotice(const Notice &notice);
    const Notice &notice() const { return m_notice; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void place();

    Notice m_notice;
    QLabel *m_title;
    QLabel *m_hint;
    QWidget *m_buttons = nullptr;
    QVBoxLayout *m_layout;
};

} // namespace runebook
