#pragma once

#include "platform/Error.h"

#include <QWidget>
#include <memory>

namespace Ui {
class PythonPane;
}

namespace runebook {

class SitePackages;

/// Preferences: the installation of Python that scripts run with, from the next start on, and the packages
/// that they can import.
class PythonPane : public QWidget
{
    Q_OBJECT
public:
    explicit PythonPane(QWidget *parent = nullptr);
    ~PythonPane() override;

    /// Tries the shared library \a path out, without waiting for it, and makes it the choice when it comes
    /// up.
    void addInstallation(const QString &path);

Q_SIGNALS:
    /// An installation was tried out.
    void tried(bool isUsable);

private:
    void fillList();
    void choose(int row);
    void askForLibrary();
    void take(const QString &path, const runebook::Error &problem);
    void showStatus(const QString &text);
    void setUpPackages();
    void installPackage();
    void openFolder();

    std::unique_ptr<Ui::PythonPane> m_ui;
    SitePackages *m_packages; // owned as a child
};

} // namespace runebook
