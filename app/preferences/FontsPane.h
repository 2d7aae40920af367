#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class FontsPane;
}

namespace runebook {

/// Preferences: the font file in which the previews of a script are shown.
class FontsPane : public QWidget
{
    Q_OBJECT
public:
    explicit FontsPane(QWidget *parent = nullptr);
    ~FontsPane() override;

    /// Uses the font file \a path for the script that is selected. False, with a word in the pane, when it is
    /// no font.
    bool useFontFile(const QString &path);

private:
    void fillList();
    void showSelected();
    void choose();
    void remove();
    QString selectedScript() const;

    std::unique_ptr<Ui::FontsPane> m_ui;
};

} // namespace runebook
