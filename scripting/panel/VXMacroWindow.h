#pragma once

#include <QMainWindow>
#include <memory>

class QPlainTextEdit;
class VXTabBarControl;

namespace Ui {
class VXMacroWindow_11;
}

namespace runebook {
class SnippetsPopup;
} // namespace runebook

/// The window of the macro panel. It never counts as the window of a document, so the document the user saw
/// last stays the one that scripts work on, and the program does not stay open for it alone.
class VXMacroWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit VXMacroWindow(QWidget *parent = nullptr);
    ~VXMacroWindow() override;

public: // what is in it
    const Ui::VXMacroWindow_11 &parts() const { return *m_ui; }

public:
    Q_INVOKABLE bool canBecomeMainWindow() const { return false; }
    /// There is no document here: beeps and saves nothing.
    Q_INVOKABLE void saveDocument();
    /// "Use Selection for Find": what is selected where the keys go becomes the text to look for.
    Q_INVOKABLE void exportFont();

Q_SIGNALS:
    void saveRefused();
    void becameKey();
    /// The user closes the window; it is hidden after this.
    void closing();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    std::unique_ptr<Ui::VXMacroWindow_11> m_ui;
};
