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
    void oneTurnIsOneStep()
    {
        Text t;
        t.append(u"ab"_s);
        QVERIFY(t.manager.canUndo());
        QCoreApplication::processEvents();
        t.append(u"c"_s);
        QCoreApplication::processEvents();
        QCOMPARE(t.manager.stack()->count(), 2);
        t.manager.undo();
        QCOMPARE(t.text, u"ab"_s);
        t.manager.undo();
        QCOMPARE(t.text, u""_s);
        QVERIFY(!t.manager.canUndo());
        t.manager.redo();
        QCOMPARE(t.text, u"ab"_s);
        t.manager.redo();
        QCOMPARE(t.text, u"abc"_s);
        QVERIFY(!t.manager.canRedo());
    }

    void groupsAreSteps()
    {
        Text t;
        t.append(u"a"_s);
        {
            const UndoGroup group(&t.manager);
            t.append(u"b"_s);
            QCoreApplication::processEvents(); // a progress dialog turns the loop while a command runs
            t.append(u"c"_s);
        }
        t.append(u"d"_s);
        QStringList texts;
        while (t.manager.canUndo()) {
            t.manager.undo();
            texts << t.text;
        }
        QCOMPARE(texts.join(u'|'), u"abc|a|"_s);
        const UndoGroup nowhere(nullptr);
    }

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

    void groupsInsideGroups()
    {
        Text t;
        t.manager.beginUndoGrouping();
        t.append(u"a"_s);
        t.manager.beginUndoGrouping();
        t.append(u"b"_s);
        t.manager.endUndoGrouping();
        QCOMPARE(t.manager.groupingLevel(), 1);
        t.append(u"c"_s);
        t.manager.endUndoGrouping();
        QCOMPARE(t.manager.stack()->count(), 1);
        t.manager.undo();
        QCOMPARE(t.text, u""_s);
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

    void endsWithoutBeginDoNothing()
    {
        Text t;
        t.manager.endUndoGrouping();
        t.append(u"a"_s);
        t.manager.endUndoGrouping();
        QCOMPARE(t.manager.groupingLevel(), 0);
        t.append(u"b"_s);
        t.manager.undo();
        QCOMPARE(t.text, u""_s);
    }

    void anEmptyGroupIsNoStep()
    {
        Text t;
        t.manager.beginUndoGrouping();
        t.manager.setActionName(u"Nothing"_s);
        t.manager.endUndoGrouping();
        QVERIFY(!t.manager.canUndo());
        QVERIFY(t.manager.isClean());
        t.append(u"a"_s);
        t.manager.undo();
        QCOMPARE(t.manager.stack()->redoText(), u""_s);
    }

    void namesSteps()
    {
        Text t;
        {
            const UndoGroup group(&t.manager, u"Paste"_s);
            t.append(u"a"_s);
            t.manager.setActionName(u"Other"_s);
        }
        t.append(u"b"_s);
        t.manager.setActionName(u"Typing"_s);
        QCoreApplication::processEvents();
        QCOMPARE(t.manager.stack()->undoText(), u"Typing"_s);
        t.manager.undo();
        QCOMPARE(t.manager.stack()->undoText(), u"Paste"_s);
        QCOMPARE(t.manager.stack()->redoText(), u"Typing"_s);
    }

    void tellsCleanOnce()
    {
        Text t;
        QSignalSpy told(&t.manager, &UndoManager::cleanChanged);
        t.append(u"ab"_s);
        t.append(u"c"_s);
        QCoreApplication::processEvents();
        t.append(u"d"_s);
        t.manager.setClean();
        t.manager.setClean();
        t.append(u"e"_s);
        t.manager.undo();
        QList<bool> states;
        for (const QList<QVariant> &arguments : told)
            states << arguments.first().toBool();
        QCOMPARE(states, QList<bool>({false, true, false, true}));
        t.manager.resetClean();
        QVERIFY(!t.manager.isClean());
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

    void agreesWithAListOfTexts()
    {
        QRandomGenerator random(4);
        Text t;
        QStringList texts {u""_s};
        qsizetype place = 0;
        qsizetype cleanPlace = 0;
        for (int round = 0; round < rounds(5'000); ++round) {
            switch (random.bounded(6)) {
            case 0:
            case 1: {
                const UndoGroup group(&t.manager);
                for (int i = random.bounded(1, 4); i > 0; --i) {
                    if (t.text.isEmpty() || random.bounded(3))
                        t.append(QChar(u'a' + random.bounded(26)));
                    else
                        t.chop();
                }
                if (cleanPlace > place)
                    cleanPlace = -1;
                texts.resize(++place);
                texts << t.text;
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
                    texts.resize(place + 1);
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
        }
    }
};

RUNEBOOK_TEST_MAIN(UndoManagerTest)
#include "UndoManagerTest.moc"
