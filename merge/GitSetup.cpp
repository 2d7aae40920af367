#include "merge/GitSetup.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(GitSetup)
};

bool refuse(Error *error, int code, const QString &sentence)
{
    return fail(error, {u"GitError"_s, code, sentence, {}, {}});
}

/// As a word of a shell, by which git starts drivers.
QString shellWord(QString path)
{
    return u'\'' + path.replace(u'\'', "'\\''"_L1) + u'\'';
}

QList<std::pair<QString, QString>> settings(const QString &program)
{
    const QString word = shellWord(program);
    return {
        {u"merge.runebook.name"_s, u"glyph data, record by record"_s},
        {u"merge.runebook.driver"_s, word + " --merge %O %A %B --output %A --marker-size %L --path %P"_L1},
        // An ancestor that git makes up itself must be one that can be read.
        {u"merge.runebook.recursive"_s, u"binary"_s},
        {u"mergetool.runebook.cmd"_s, word + R"( --mergetool "$BASE" "$LOCAL" "$REMOTE" "$MERGED")"_L1},
        {u"mergetool.runebook.trustExitCode"_s, u"true"_s},
        {u"diff.runebook.textconv"_s, word + " --textconv"_L1},
        // The record that a change stands in.
        {u"diff.runebook.xfuncname"_s, u"^[^ <].*$"_s},
    };
}

} // namespace

std::optional<GitAnswer> runGit(const QStringList &arguments)
{
    const QString git = QStandardPaths::findExecutable(u"git"_s);
    if (git.isEmpty())
        return {};
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(git, arguments);
    constexpr int kForever = -1;
    if (!process.waitForFinished(kForever) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return GitAnswer {process.exitCode(), process.readAllStandardOutput(),
                      QString::fromUtf8(process.readAllStandardError()).trimmed()};
}

bool setUpGit(const QString &program, GitScope scope, Error *error)
{
    const std::optional<GitAnswer> inside = runGit({u"rev-parse"_s, u"--git-dir"_s});
    if (!inside)
        return refuse(error, 1, Texts::tr("There is no git on this computer."));
    if (scope == GitScope::Repository && inside->status != 0)
        return refuse(error, 2,
                      Texts::tr("This folder is in no git repository. “--global” sets git up for all of "
                                "yours."));
    const QString where = scope == GitScope::User ? u"--global"_s : u"--local"_s;
    for (const auto &[key, value] : settings(program)) {
        const auto set = runGit({u"config"_s, where, u"--replace-all"_s, key, value});
        if (!set || set->status != 0)
            return refuse(
                error, 3,
                Texts::tr("git did not take the setting “%1”. %2").arg(key, set ? set->errors : QString()));
    }
    return true;
}

QString gitAttributeLines()
{
    return u"*.xml merge=runebook\n*.xml diff=runebook\n"_s;
}

} // namespace runebook
