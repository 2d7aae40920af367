// Steps, groups, the clean state, and what happens to changes made between them.
#include "platform/UndoManager.h"
#include "tests/Rounds.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// A text that is edited through a manager in the plainest way.
struct Text {
    void append(QChar character)
    {
        manager.registerUndo([this] { chop(); });
        text += character;
    }
    void chop()
    {
        manager.registerUndo([this, last = text.back()] { append(last); });
        text.chop(1);
    }
    void append(const QString &characters)
    {
        for (const QChar character : characters)
            append(character);
    }
    QString text;
    UndoManager manager;
};

} // namespace

class UndoManagerTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void closesAnOpenGroupToUndo()
    {
        Text t;
        t.manager.beginUndoGrouping();
        t.append(u"ab"_s);
        t.manager.undo();
        QCOMPARE(t.text, u""_s);
        QCOMPARE(t.manager.groupingLevel(), 1);
        t.manager.redo();
        QCOMPARE(t.text, u"ab"_s);
        t.append(u"c"_s);
        t.manager.endUndoGrouping();
        QCOMPARE(t.manager.groupingLevel(), 0);
        t.manager.undo();
        QCOMPARE(t.text, u"ab"_s);
    }

    void ignoresGroupsWhileUndoing()
    {
        Text t;
        bool wasUndoing = false;
        t.manager.registerUndo([&] {
            const UndoGroup group(&t.manager);
            wasUndoing = t.manager.isUndoing();
            t.append(u"x"_s);
            t.manager.undo(); // asked for by a listener: nothing happens
        });
        t.manager.undo();
        QVERIFY(wasUndoing && !t.manager.isUndoing());
        QCOMPARE(t.text, u"x"_s);
        QCOMPARE(t.manager.groupingLevel(), 0);
        t.manager.redo();
        QCOMPARE(t.text, u""_s);
    }

    void forgetsEverything()
    {
        Text t;
        QSignalSpy told(&t.manager, &UndoManager::cleanChanged);
        t.append(u"a"_s);
        t.manager.removeAllActions();
        QVERIFY(!t.manager.canUndo() && !t.manager.canRedo());
        // What was changed stays changed, and nobody hears otherwise even for a moment.
        QVERIFY(!t.manager.isClean());
        QCOMPARE(told.size(), 1);
        t.manager.undo();
        QCOMPARE(t.text, u"a"_s);
        QCoreApplication::processEvents();
        t.append(u"b"_s);
        QCoreApplication::processEvents();
        QCOMPARE(t.manager.stack()->count(), 1);
        QCOMPARE(told.size(), 1);
    }

    void registersNothingWhileDisabled()
    {
        Text t;
        t.manager.setRegistrationEnabled(false);
        t.append(u"a"_s);
        QVERIFY(!t.manager.canUndo());
        QVERIFY(t.manager.isClean());
        QVERIFY(!t.manager.lastOperation());
        t.manager.setRegistrationEnabled(true);
        t.append(u"b"_s);
        QVERIFY(t.manager.lastOperation());
        t.manager.undo();
        QCOMPARE(t.text, u"a"_s);
    }

    /// Steps are made in each way there is: by a turn of the loop, by groups, by groups inside groups.
    void agreesWithAListOfTexts()
    {
        QRandomGenerator random(4);
        Text t;
        QStringList texts {u""_s};
        QStringList names {QString()};
        qsizetype place = 0;
        qsizetype cleanPlace = 0;
        bool isClean = true;
        QSignalSpy told(&t.manager, &UndoManager::cleanChanged);
        const UndoGroup nowhere(nullptr);
        for (int round = 0; round < rounds(5'000); ++round) {
            switch (random.bounded(6)) {
            case 0:
            case 1: {
                const int depth = random.bounded(3);
                const int count = depth == 0 ? random.bounded(1, 4) : random.bounded(4); // none: no step
                t.manager.endUndoGrouping(); // of nothing
                for (int i = 0; i < depth; ++i)
                    t.manager.beginUndoGrouping();
                QCOMPARE(t.manager.groupingLevel(), depth);
                for (int i = count; i > 0; --i) {
                    if (t.text.isEmpty() || random.bounded(3))
                        t.append(QChar(u'a' + random.bounded(26)));
                    else
                        t.chop();
                    if (depth > 0 && random.bounded(3) == 0)
                        QCoreApplication::processEvents(); // a progress dialog turns the loop while a command
                                                           // runs
                }
                const QString name =
                    random.bounded(3) ? QString(QChar(u'A' + random.bounded(26))) : QString();
                t.manager.setActionName(name);
                if (!name.isEmpty())
                    t.manager.setActionName(u"later"_s); // the first name counts
                for (int i = 0; i < depth; ++i)
                    t.manager.endUndoGrouping();
                QCoreApplication::processEvents();
                if (count == 0)
                    break;
                if (cleanPlace > place)
                    cleanPlace = -1;
                texts.resize(++place);
                texts << t.text;
                names.resize(place);
                names << name;
                break;
            }
            case 2:
                t.manager.undo();
                place = qMax<qsizetype>(0, place - 1);
                break;
            case 3:
                t.manager.redo();
                place = qMin(texts.size() - 1, place + 1);
                break;
            case 4: { // rarely, or there were no history
                const qsizetype back = random.bounded(10) == 0 ? random.bounded(4) : 0;
                const bool isForgotten = place == texts.size() - 1;
                t.manager.takeBackToStep(int(place - back));
                place = qMax<qsizetype>(0, place - back);
                if (isForgotten)
                    texts.resize(place + 1), names.resize(place + 1);
                if (cleanPlace >= texts.size())
                    cleanPlace = -1;
                break;
            }
            default:
                if (random.bounded(10) == 0) {
                    t.manager.setClean();
                    cleanPlace = place;
                }
            }
            QCOMPARE(t.text, texts[place]);
            QCOMPARE(t.manager.isClean(), place == cleanPlace);
            QCOMPARE(t.manager.canUndo(), place > 0);
            QCOMPARE(t.manager.canRedo(), place < texts.size() - 1);
            QCOMPARE(t.manager.stack()->undoText(), names[place]);
            QCOMPARE(t.manager.stack()->redoText(), names.value(place + 1));
            // Of the clean state every change is told, and nothing else.
            for (const QList<QVariant> &arguments :
                 std::exchange(static_cast<QList<QList<QVariant>> &>(told), {}))
                QCOMPARE(arguments.first().toBool(), !std::exchange(isClean, !isClean));
            QCOMPARE(isClean, place == cleanPlace);
        }
    }
};

RUNEBOOK_TEST_MAIN(UndoManagerTest)
#include "UndoManagerTest.moc"
