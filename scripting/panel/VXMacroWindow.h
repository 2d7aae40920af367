#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>

class QPlainTextEdit;

namespace Ui {
class VXMacroWindow_11;
}

namespace runebook {
class MessageBar;
class RunIndicator;
class SnippetsPopup;
} // namespace runebook

/// The window of the macro panel: its parts, and the commands that mean the text view which has the keys. It
/// never counts as the window of a document, so the document that the user saw last stays the one that
/// scripts work on, and the program does not stay open for it alone.
class VXMacroWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit VXMacroWindow(QWidget *parent = nullptr);
    ~VXMacroWindow() override;

public: // what is in it
    const Ui::VXMacroWindow_11 &parts() const { return *m_ui; }
    runebook::SnippetsPopup *snippetsPopup() const { return m_snippetsPopup; }
    /// What the panel has to tell or to ask, above the code.
    runebook::MessageBar *messageBar() const { return m_messageBar; }
    /// The editor or the console, whichever had the keys last; null when there is neither.
    QPlainTextEdit *activeTextView() const;
    /// Shows that a script runs.
    void setRunning(bool running);

public: // commands
    Q_INVOKABLE bool canBecomeMainWindow() const { return false; }
    /// What the save key does first; when it answers false there is nothing to save, see saveDocument().
    void setSaveHandler(std::function<bool()> handler) { m_saveHandler = std::move(handler); }
    /// There is no document here: beeps and saves nothing.
    Q_INVOKABLE void saveDocument();
    /// "Use Selection for Find": has the text view that has the keys take its selection as the text to look
    /// for.
    Q_INVOKABLE void exportFont();
    /// Moves the keyboard on: from the editor to the console, the prompt, and back.
    Q_INVOKABLE void goToNextPane();
    /// Find, find next and so on, by the "tag" of \a item.
    Q_INVOKABLE void performTextFinderAction(QObject *item);

public: // what is remembered of it: place, size, and how editor and console share it
    void saveLayout() const;
    void restoreLayout();

Q_SIGNALS:
    void saveRefused();
    void becameKey();
    /// The window is being closed; it is hidden after this.
    void closing();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void setUpToolBar();
    void setUpMenus();
    void connectTextCommands();

    std::unique_ptr<Ui::VXMacroWindow_11> m_ui;
    runebook::SnippetsPopup *m_snippetsPopup;
    std::function<bool()> m_saveHandler;
    runebook::MessageBar *m_messageBar;
    runebook::RunIndicator *m_runIndicator;
};
