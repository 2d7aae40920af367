#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class UpdatesPane;
}

namespace runebook {

/// Preferences: where updates are looked for, and which of them are offered.
class UpdatesPane : public QWidget
{
    Q_OBJECT
public:
    explicit UpdatesPane(QWidget *parent = nullptr);
    ~UpdatesPane() override;

private:
    void bindOffer();
    void checkAddresses();

    std::unique_ptr<Ui::UpdatesPane> m_ui;
};

} // namespace runebook
