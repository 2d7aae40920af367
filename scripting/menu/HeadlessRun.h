#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

namespace runebook {

/// A script run on files without windows.
struct HeadlessOptions {
    QString script; ///< path of a script file, "-" for the standard input; or
    QString code; ///< code as the macro panel runs it, when there is no script
    bool savesFiles = false; ///< write the files that the script has changed
    QStringList files; ///< opened before the run, the first one frontmost
    QHash<QString, QString> answers = {}; ///< to what the script asks, by the key of the question
    QStringList arguments = {}; ///< what the script finds behind its name in sys.argv
    QString requiredPython = {}; ///< "3.10": at least that; empty for any
    std::function<void()> prepare = {}; ///< called when Python is up, before the run; may be empty
    bool losesValues = false; ///< write files even where they cannot hold all values
};

/// The exit statuses of a headless run; scripts may end with others.
namespace HeadlessStatus {
inline constexpr int kSuccess = 0;
inline constexpr int kScriptFailed = 1; ///< also: a changed file or the output could not be written
inline constexpr int kWrongInput = 2;
inline constexpr int kNoPython = 3;
} // namespace HeadlessStatus

/// While it lives, an application object that is made takes the platform that needs no display, whatever the
/// environment says: a display that is named may be dead, and Qt aborts then. Programs that scripts start
/// later find the environment as it was.
class HeadlessPlatform
{
public:
    HeadlessPlatform();
    ~HeadlessPlatform();
    HeadlessPlatform(const HeadlessPlatform &) = delete;
    HeadlessPlatform &operator=(const HeadlessPlatform &) = delete;

private:
    std::optional<QByteArray> m_chosen;
};

/// The application object of a run without windows.
template <typename Application> std::unique_ptr<Application> makeHeadless(int &argc, char **argv)
{
    const HeadlessPlatform platform;
    return std::make_unique<Application>(argc, argv);
}

/// Opens the files, runs the script with the process's own output as its console, saves what was asked for,
/// and answers the exit status. Needs an application object and the document controller set up with types
/// and factory. Files are saved only when the script did not fail.
int runHeadless(const HeadlessOptions &options);

} // namespace runebook
