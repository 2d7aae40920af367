#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class CodePane;
}

namespace runebook {

/// Preferences: how code and the console look, and how much the console keeps.
class CodePane : public QWidget
{
    Q_OBJECT
public:
    explicit CodePane(QWidget *parent = nullptr);
    ~CodePane() override;

private:
    void showSample();

    std::unique_ptr<Ui::CodePane> m_ui;
};

} // namespace runebook
