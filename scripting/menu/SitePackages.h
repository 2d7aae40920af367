#pragma once

#include <QObject>
#include <QString>

class QProcess;

namespace runebook {

/// The folder of Python packages that scripts can import, and what installs some into it: the pip of the
/// Python that is in use. Main thread only.
class SitePackages : public QObject
{
    Q_OBJECT
public:
    explicit SitePackages(QObject *parent = nullptr);
    ~SitePackages() override;

    /// "Scripts/site-packages" in the user's folder for scripts.
    static QString folder();
    /// Makes the folder, and lets scripts import from it at once; false when it cannot be made.
    static bool makeUsable();
    /// The program beside the interpreter's library \a libraryPath that runs modules such as pip; empty when
    /// there is none.
    static QString pythonProgram(const QString &libraryPath);

    /// Installs what pip understands by \a requirement, a name or the path of a package. Does not wait.
    /// Nothing happens while another is being installed.
    void install(const QString &requirement, const QString &libraryPath);
    bool isInstalling() const { return m_process != nullptr; }

Q_SIGNALS:
    /// What pip prints, as it comes.
    void printed(const QString &text);
    /// \a message says how it ended, and what to do when it failed.
    void finished(bool isInstalled, const QString &message);

private:
    void end(bool isInstalled, const QString &message);

    QProcess *m_process = nullptr; // owned as a child
    QString m_output;
};

} // namespace runebook
