#pragma once

#include "tests/TestMain.h"

#include <QProcess>
#include <cstdio>
#include <unistd.h>

namespace runebook {

/// Another process in the same folders: the test program started anew. It does one of its works and then
/// stays as it is until it is killed. No fork: that has none of the threads, but waits for them, be it only
/// to wake them.
class OtherProcess
{
public:
    /// Something that the program can do as another process, by its name.
    struct Work {
        const char *name;
        void (*run)(const QString &argument);
    };
    enum class End { Dies, Stays };

    /// Comes back when the work is done.
    OtherProcess(End end, const char *work, const QString &argument = {})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(),
                        {QString::fromLatin1(kOption), QString::fromLatin1(work), argument});
        if (!m_process.waitForReadyRead(-1))
            qFatal("the other process failed");
        if (end == End::Dies)
            die();
    }
    ~OtherProcess() { die(); }
    OtherProcess(const OtherProcess &) = delete;
    OtherProcess &operator=(const OtherProcess &) = delete;
    void die()
    {
        m_process.kill();
        m_process.waitForFinished(-1);
    }

    /// In the main function: whether this is the other process. Then it does what is asked for, and does not
    /// come back.
    template <std::size_t Count> static void runIfMeant(int argc, char *argv[], const Work (&works)[Count])
    {
        if (argc < 4 || qstrcmp(argv[1], kOption) != 0)
            return;
        const TestApplication app(argc, argv);
        for (const Work &work : works) {
            if (qstrcmp(argv[2], work.name) == 0) {
                work.run(QString::fromLocal8Bit(argv[3]));
                std::puts("done");
                std::fflush(stdout);
                ::pause();
            }
        }
        qFatal("no such work");
    }

private:
    static constexpr const char *kOption = "--other-process";

    QProcess m_process;
};

} // namespace runebook

/// RUNEBOOK_TEST_MAIN for a program with works (an array of OtherProcess::Work).
#define RUNEBOOK_TEST_MAIN_WITH(TestClass, works)                                                            \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        runebook::OtherProcess::runIfMeant(argc, argv, works);                                               \
        static const QTemporaryDir home; /* static: see TestMain.h */                                        \
        runebook::useTestHome(home.path());                                                                  \
        runebook::TestApplication app(argc, argv);                                                           \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
