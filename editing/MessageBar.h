#pragma once

#include <QFrame>

class QLabel;
class QPushButton;
class QTimer;

namespace runebook {

/// A line of text above the table that says what the user should know, without standing in the way. It goes
/// when it is closed; passing remarks go by themselves.
class MessageBar : public QFrame
{
    Q_OBJECT
public:
    enum class Stay { UntilClosed, ShortTime };

    explicit MessageBar(QWidget *parent = nullptr);
    void showMessage(const QString &text, Stay stay);
    QString text() const;

private:
    QLabel *m_label;
    QTimer *m_timer;
};

} // namespace runebook
