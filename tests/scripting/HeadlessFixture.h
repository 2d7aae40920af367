#pragma once

#include "tests/Files.h"

#include <QProcess>

namespace runebook {

using namespace Qt::StringLiterals;

/// How a process ended.
struct Ended {
    int status = -1;
    QString output;
    QString errors;
};

inline QString source(const QString &path)
{
    return QStringLiteral(RUNEBOOK_SOURCE_DIR "/") + path;
}

inline QString content(const QString &path)
{
    return QString::fromUtf8(contentOf(path));
}

/// The program without windows, started as users start it, on a copy of the sample in a folder of its own.
class HeadlessFixture
{
protected:
    void setUp()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_program = u"runebook_headless_test"_s;
        m_environment.clear();
        m_file = m_folder->filePath(u"sample.xml"_s);
        QVERIFY(QFile::copy(source(u"resources/sample.xml"_s), m_file));
        QFile::setPermissions(m_file, QFile::ReadOwner | QFile::WriteOwner);
    }

    QString write(const QString &name, const QString &text)
    {
        return runebook::write(m_folder->filePath(name), text.toUtf8());
    }

    Ended run(const QStringList &arguments, const QString &library = {})
    {
        QProcess process;
        start(process, arguments, library);
        if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit)
            return {-1, QString::fromUtf8(process.readAllStandardOutput()), u"did not end by itself"_s};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    /// Runs one of the scripts of checks/: every test that it has ran, and well.
    Ended check(const QString &name, const QStringList &files, const QString &library = {})
    {
        const QString script = source(u"tests/scripting/checks/%1.py"_s.arg(name));
        Ended ended = run(QStringList {u"--run"_s, script} + files, library);
        if (ended.status != 0
            || !ended.output.endsWith(u"\nchecked %1\n"_s.arg(content(script).count(u"\n    def test_"_s))))
            QTest::qFail(qPrintable(ended.output + ended.errors), __FILE__, __LINE__);
        return ended;
    }

    void start(QProcess &process, const QStringList &arguments, const QString &library = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"DISPLAY"_s);
        environment.remove(u"QT_QPA_PLATFORM"_s);
        environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder->path());
        environment.insert(
            u"RUNEBOOK_DEFAULTS"_s,
            write(u"defaults.ini"_s,
                  library.isEmpty() ? QString() : "[General]\nVXPythonFrameworkPath="_L1 + library));
        for (const auto &[name, value] : m_environment.asKeyValueRange())
            environment.insert(name, value);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/") + m_program, arguments);
        QVERIFY(process.waitForStarted());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
    QString m_program; ///< what is started, in the build tree
    QHash<QString, QString> m_environment; ///< what it finds there besides
};

} // namespace runebook
