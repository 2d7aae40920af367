#pragma once

#include <QDialog>
#include <QPointer>

class SUAppcastItem;
class SUUpdater;

namespace runebook {

/// Offers one newer version: what it is called, what is new in it, and the way to its page.
class UpdateWindow : public QDialog
{
    Q_OBJECT
public:
    UpdateWindow(const SUAppcastItem &item, const QString &currentVersion, QWidget *parent = nullptr);

Q_SIGNALS:
    void skipRequested();

private:
    void addButtons(const SUAppcastItem &item);
};

/// Shows in windows what an updater tells.
class UpdatePresenter : public QObject
{
    Q_OBJECT
public:
    explicit UpdatePresenter(SUUpdater &updater);
    ~UpdatePresenter() override;

private:
    void showUpdate(const SUAppcastItem &item);
    void tell(const QString &text, const QString &more);
    void replaceWindow(QWidget *window);

    SUUpdater &m_updater;
    QPointer<QWidget> m_window; ///< one answer at a time
};

} // namespace runebook
