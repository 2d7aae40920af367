// Spoils saving and autosaving in every way that can be thought of, and counts what comes of it.
#include "tools/torture/Torture.h"

#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <dlfcn.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace torture;

namespace {

/// Starts this program anew with the library of faults in front of all others.
void preload(char *argv[])
{
    if (::dlsym(RTLD_DEFAULT, "torture_arm"))
        return;
    ::setenv("LD_PRELOAD", TORTURE_LIBRARY, 1);
    ::setenv("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0", 0);
    ::execv("/proc/self/exe", argv);
    qFatal("cannot start again with the library of faults");
}

void print(const Figures &figures)
{
    std::printf("%-52s %6d %6d %6d %6d %6d %6d  %s\n", qPrintable(figures.name), figures.runs, figures.kept,
                figures.renewed, figures.rescued, figures.told, int(figures.violations.size()),
                figures.skipped.isEmpty() ? "" : qPrintable("(skipped: "_L1 + figures.skipped + u')'));
    constexpr qsizetype kShown = 10;
    for (const QString &violation : figures.violations.mid(0, kShown))
        std::printf("    %s\n", qPrintable(violation));
    std::fflush(stdout);
}

} // namespace

/// torture [SECONDS [SEED]]: the seconds are for what is left to chance; the lists of cases take what they
/// take.
int main(int argc, char *argv[])
{
    preload(argv);
    const double seconds = argc > 1 ? std::atof(argv[1]) : 60;
    const auto seed = argc > 2 ? static_cast<quint32>(std::atoll(argv[2])) : std::random_device()();
    static const QTemporaryDir home; // static: see TestMain.h
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("RUNEBOOK_DEFAULTS", QFile::encodeName(home.filePath(u"defaults.ini"_s)));
    QFile::setPermissions(home.path(), QFile::Permissions(0x7755));
    Bench bench(home.path(), seed);

    std::printf("seed %u\n%-52s %6s %6s %6s %6s %6s %6s\n", seed, "", "runs", "old", "new", "rescue", "told",
                "wrong");
    qsizetype wrong = 0;
    for (const auto &torture : std::initializer_list<std::function<Figures()>> {
             [&] { return failEveryCall(bench); }, [&] { return killAtEveryCall(bench); },
             [&] { return fillDisk(bench); }, [&] { return spoilPlace(bench); },
             [&] { return changeFromOutside(bench); }, [&] { return killCycles(bench, seconds); }}) {
        const Figures figures = torture();
        print(figures);
        wrong += figures.violations.size() + (figures.runs == 0 && figures.skipped.isEmpty());
    }
    return wrong == 0 ? 0 : 1;
}
