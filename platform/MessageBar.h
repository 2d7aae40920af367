#pragma once

#include <QFrame>
#include <functional>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QTimer;

namespace runebook {

/// A line of text at the top of a window that says what the user should know, perhaps with buttons that do
/// something about it, without standing in the way: it never takes the keyboard by itself. It goes when it is
/// closed (by Escape, too, when the keyboard is in it) or answered; passing remarks go by themselves. What
/// stands until it is closed is not covered by what comes after it: that is shown below it, as are remarks
/// that come at nearly the same time.
class MessageBar : public QFrame
{
    Q_OBJECT
public:
    enum class Stay { UntilClosed, ShortTime };

    explicit MessageBar(QWidget *parent = nullptr);
    void showMessage(const QString &text, Stay stay);
    struct Answer {
        QString text; ///< of the button
        std::function<void()> act;
    };
    /// The same with a button for each of \a answers; the bar closes, then the answer acts. A question that
    /// stays keeps its buttons while something else is shown below it.
    void ask(const QString &text, const QList<Answer> &answers, Stay stay = Stay::ShortTime);
    QString text() const;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString belowStanding(const QString &text);
    void showText(const QString &text);
    void leave();
    void addButtons(const QList<Answer> &answers);
    void removeButtons();
    void forgetStanding();

    QHBoxLayout *m_layout;
    QList<QPushButton *> m_buttons; // owned as children
    QLabel *m_label;
    QTimer *m_timer;
    QString m_standing; ///< stays until it is closed
    QList<Answer> m_standingAnswers; ///< to what stays
};

} // namespace runebook
