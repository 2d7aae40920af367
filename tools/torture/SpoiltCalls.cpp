// Every single call that a save makes fails in every way, or is the last that the process ever makes.
#include "tools/torture/Torture.h"

#include "platform/documents/RescueFiles.h"

#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <sys/wait.h>

namespace torture {

using namespace Qt::StringLiterals;

namespace {

/// A save to be spoilt: what is there before, and what shall be there.
struct Case {
    const char *name;
    QByteArray old; ///< empty: no file yet
    QByteArray fresh;
};

QList<Case> cases()
{
    return {{"a longer text", textOf(1, 90'000), textOf(2, 200'000)},
            {"a shorter text", textOf(1, 200'000), textOf(2, 5'000)},
            {"a text as long", textOf(1, 150'000), textOf(2, 150'000)},
            {"a text of many blocks", textOf(1, 300'000), textOf(2, 900'000)},
            {"next to nothing", textOf(1, 100'000), textOf(2, 1)},
            {"a new file", {}, textOf(2, 100'000)},
            {"a new file of one line", {}, textOf(2, 1)}};
}

std::vector<int> errorsOf(Call kind)
{
    switch (kind) {
    case Call::Write:
    case Call::Sync:
    case Call::Close:
        return {EIO, ENOSPC, EDQUOT, EINTR};
    case Call::Reserve:
        return {EIO, ENOSPC, EDQUOT, EINTR, EOPNOTSUPP};
    case Call::Rename:
        return {EIO, ENOSPC, EDQUOT, EINVAL};
    case Call::Open:
        return {EIO, ENOSPC, EDQUOT, EMFILE};
    default:
        return {EIO, EINTR, EROFS};
    }
}

QString describe(const Case &spoilt, const Fault &fault, Call kind)
{
    return u"%1, call %2 (%3), action %4, %5"_s.arg(QString::fromLatin1(spoilt.name))
        .arg(fault.place)
        .arg(QChar::fromLatin1(char(kind)))
        .arg(int(fault.action))
        .arg(QString::fromLocal8Bit(std::strerror(fault.error)));
}

QString prepare(Bench &bench, const Case &spoilt)
{
    const QString path = bench.freshFolder() + "/data.xml"_L1;
    if (!spoilt.old.isEmpty())
        write(path, spoilt.old);
    return path;
}

QString rootOf(const QString &path)
{
    return QFileInfo(QFileInfo(path).path()).path() + u'/';
}

/// The kinds of the calls of a save that nothing disturbs.
QByteArray callsOf(Bench &bench, const Case &undisturbed, Figures &figures)
{
    const QString path = prepare(bench, undisturbed);
    QString error;
    arm(rootOf(path), {});
    const bool isSaved = save(path, undisturbed.fresh, &error);
    const QByteArray calls = disarm();
    if (!isSaved || calls.isEmpty())
        figures.violations << u"an undisturbed save failed, or made no calls: "_s + error;
    return calls;
}

void checkMessage(Figures &figures, const QString &what, const QString &path, const QString &error)
{
    const QStringList sentences = error.split(u'\n');
    bool tells =
        sentences.value(0).contains(path) && !sentences.value(1).isEmpty() && !sentences.value(2).isEmpty();
    const QStringList rescues = rescueFiles(path);
    if (!rescues.isEmpty())
        tells &= std::any_of(rescues.begin(), rescues.end(),
                             [&error](const QString &rescue) { return error.contains(rescue); });
    if (tells)
        ++figures.told;
    else
        figures.violations << what + ": the message does not tell enough: "_L1 + error;
}

/// Afterwards everything must be as if nothing had happened.
void checkSavingAgain(Figures &figures, const QString &what, const QString &path)
{
    const QByteArray next = textOf(3, 60'000);
    QString error;
    if (!save(path, next, &error) || contentOf(path) != next)
        figures.violations << what + ": the next save failed: "_L1 + error;
}

void failOnce(Bench &bench, Figures &figures, const Case &spoilt, const Fault &fault, Call kind)
{
    const QString path = prepare(bench, spoilt);
    const QString what = describe(spoilt, fault, kind);
    QString error;
    arm(rootOf(path), fault);
    const bool isSaved = save(path, spoilt.fresh, &error);
    disarm();
    judgeSave(figures, what, path, spoilt.old, spoilt.fresh, isSaved);
    // The text may look right and still never reach the disk.
    if (isSaved && kind == Call::Sync && fault.error != EINTR)
        figures.violations << what + ": the save said that it went well"_L1;
    if (!isSaved)
        checkMessage(figures, what, path, error);
    checkSavingAgain(figures, what, path);
}

} // namespace

Figures failEveryCall(Bench &bench)
{
    Figures figures {u"every call of a save fails"_s};
    for (const Case &spoilt : cases()) {
        const QByteArray calls = callsOf(bench, spoilt, figures);
        for (int i = 0; i < calls.size(); ++i) {
            const auto kind = static_cast<Call>(calls.at(i));
            for (const int code : errorsOf(kind)) {
                failOnce(bench, figures, spoilt, {Action::Fail, i + 1, code}, kind);
                // A write that a signal interrupts for ever would be no error but a hang.
                if (code != EINTR)
                    failOnce(bench, figures, spoilt, {Action::FailOn, i + 1, code}, kind);
            }
            if (kind == Call::Write)
                failOnce(bench, figures, spoilt, {Action::Short, i + 1}, kind);
        }
    }
    return figures;
}

Figures killAtEveryCall(Bench &bench)
{
    Figures figures {u"killed at every call of a save"_s};
    for (const Case &spoilt : cases()) {
        const QByteArray calls = callsOf(bench, spoilt, figures);
        for (int i = 0; i < calls.size(); ++i) {
            for (const Action action : {Action::Kill, Action::KillAfter}) {
                const Fault fault {action, i + 1};
                const QString path = prepare(bench, spoilt);
                const QString what = describe(spoilt, fault, static_cast<Call>(calls.at(i)));
                const int status = inChild([&] {
                    QString error;
                    arm(rootOf(path), fault);
                    return save(path, spoilt.fresh, &error) ? 0 : 1;
                });
                if (!WIFSIGNALED(status))
                    figures.violations << what + ": the process was not killed"_L1;
                judgeSave(figures, what, path, spoilt.old, spoilt.fresh, false);
                runebook::RescueFiles::leftFor(path);
                checkSavingAgain(figures, what, path);
            }
        }
    }
    return figures;
}

} // namespace torture
