#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

class VXCompareDataWindow;

/// What belongs to the program as a whole: its kinds of documents, the windows there is one of, and what
/// happens at the start and at the end.
class VXAppDelegate : public QObject
{
    Q_OBJECT
public:
    explicit VXAppDelegate(QObject *parent = nullptr);
    ~VXAppDelegate() override;

    /// Registers what classes need before anything is opened: the value transformers under their names.
    static void initialize();
    static QString applicationName();

    Q_INVOKABLE void applicationDidFinishLaunching();
    /// Opens the files, or a new document when there are none.
    void openAtStart(const QStringList &paths);
    Q_INVOKABLE void showCompareWindow();
    /// The one compare window, made on first use.
    Q_INVOKABLE QObject *compareWindow();
    Q_INVOKABLE void showAbout(QWidget *window);
    /// Asks about unsaved changes everywhere, then quits.
    Q_INVOKABLE void terminate();

private:
    void registerDocuments();
    void contributeToMenus();
    void introduceToScripts();
    void presentErrors();

    QPointer<VXCompareDataWindow> m_compareWindow;
    bool m_isTerminating = false;
};
