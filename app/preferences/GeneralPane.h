#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class GeneralPane;
}

namespace runebook {

/// Preferences: windows, files and editing.
class GeneralPane : public QWidget
{
    Q_OBJECT
public:
    explicit GeneralPane(QWidget *parent = nullptr);
    ~GeneralPane() override;

private:
    void showOriginals();
    void resetColumns();

    std::unique_ptr<Ui::GeneralPane> m_ui;
};

} // namespace runebook
