// One step taken back and none behind it: either the document is as if that step had never been, or nothing
// happened and a sentence says why.
#include "document/VXDocument.h"
#include "platform/UndoManager.h"
#include "tests/Rounds.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <set>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// An edit as somebody would tell of it: records by number, places by the record in front.
struct Edit {
    enum Kind { Set, Insert, Remove, Reorder, TakeBack } kind;
    std::vector<int> records; ///< to be put in, taken out, set, or all in their order
    int value = 0; ///< that is set, the record in front, the step that is taken back
    QString key = {};
};
using Step = std::vector<Edit>;

/// The edits done in a plain list, those of \a skipped steps as if they had never been.
class Replay
{
public:
    explicit Replay(const std::vector<Step> &steps)
    {
        std::set<int> skipped;
        for (int i = int(steps.size()) - 1; i >= 0; --i) {
            const Step &step = steps[std::size_t(i)];
            if (step.front().kind == Edit::TakeBack && !skipped.contains(i))
                skipped.insert(step.front().value);
        }
        for (int i = 0; i < int(steps.size()); ++i) {
            for (const Edit &edit : steps[std::size_t(i)])
                perform(edit, skipped.contains(i));
        }
    }
    QString text() const
    {
        QString text;
        for (const int record : m_order) {
            if (!m_ghosts.contains(record))
                text += u"%1:%2:%3 "_s.arg(record).arg(m_values.value({record, u"category"_s}),
                                                       m_values.value({record, u"script"_s}));
        }
        return text;
    }

private:
    void perform(const Edit &edit, bool isSkipped)
    {
        const std::set<int> records(edit.records.begin(), edit.records.end());
        if (edit.kind == Edit::Insert) {
            const auto front = std::find(m_order.begin(), m_order.end(), edit.value);
            m_order.insert(front == m_order.end() ? m_order.begin() : front + 1, edit.records.begin(),
                           edit.records.end());
            if (isSkipped)
                m_ghosts.insert(records.begin(), records.end());
        } else if (!isSkipped && edit.kind == Edit::Set) {
            for (const int record : records)
                m_values[{record, edit.key}] = QString::number(edit.value);
        } else if (!isSkipped && edit.kind == Edit::Remove) {
            m_ghosts.insert(records.begin(), records.end());
        } else if (!isSkipped && edit.kind == Edit::Reorder) {
            m_order = edit.records;
        }
    }

    std::vector<int> m_order;
    std::set<int> m_ghosts; ///< not there; they hold the places of what was put in behind them
    QMap<std::pair<int, QString>, QString> m_values;
};

class Edited
{
public:
    explicit Edited(QRandomGenerator &random) : m_random(random) { }

    QString text() const
    {
        QString text;
        for (const InfoPtr &info : m_document.infos())
            text += u"%1:%2:%3 "_s.arg(numberOf(*info)).arg(info->category(), info->script());
        return text;
    }
    static int numberOf(const VXGlyphInfo &info) { return info.name().mid(1).toInt(); }
    VXDocument &document() { return m_document; }
    int below(qsizetype count) { return int(m_random.bounded(qMax<qsizetype>(1, count))); }

    Step doStep()
    {
        const UndoGroup group(m_document.undoManager(), u"step"_s);
        Step step;
        for (int i = m_random.bounded(4) == 0 ? 3 : 1; i > 0; --i)
            step.push_back(doEdit());
        return step;
    }

private:
    Edit doEdit()
    {
        const InfoList all = m_document.infos();
        switch (const int choice = m_random.bounded(all.size() < 4 ? 2 : 12)) {
        case 0:
        case 1:
            return insert(all, choice);
        case 2:
            return reorder(all);
        case 3:
        case 4:
            return remove(some(all), choice);
        default:
            return set(some(all), choice % 2 ? u"category"_s : u"script"_s);
        }
    }
    InfoList some(const InfoList &all)
    {
        InfoList chosen;
        for (const InfoPtr &info : all) {
            if (m_random.bounded(qsizetype(6)) == 0)
                chosen.push_back(info);
        }
        return chosen.empty() ? InfoList {all[std::size_t(below(std::ssize(all)))]} : chosen;
    }
    static std::vector<int> numbers(const InfoList &infos)
    {
        std::vector<int> numbers;
        for (const InfoPtr &info : infos)
            numbers.push_back(numberOf(*info));
        return numbers;
    }
    Edit insert(const InfoList &all, int choice)
    {
        InfoList fresh;
        for (int i = below(3); i >= 0; --i) {
            fresh.push_back(VXGlyphInfo::init());
            fresh.back()->setName(u"n%1"_s.arg(++m_last));
        }
        const qsizetype place = below(std::ssize(all) + 1);
        const int front = place == 0 ? 0 : numberOf(*all[std::size_t(place - 1)]);
        if (place == std::ssize(all) && choice)
            m_document.addInfos(fresh);
        else if (fresh.size() == 1)
            m_document.insertObjectInInfosAtIndex(fresh.front(), place);
        else
            m_document.insertObjectsInInfosAtIndexes(fresh, IndexSet::run(place, fresh.size()));
        return {Edit::Insert, numbers(fresh), front};
    }
    Edit remove(const InfoList &infos, int choice)
    {
        std::vector<qsizetype> places;
        for (const InfoPtr &info : infos)
            places.push_back(m_document.indexOfObjectInInfos(info));
        if (infos.size() == 1 && choice == 3)
            m_document.removeObjectFromInfosAtIndex(places.front());
        else
            m_document.removeObjectsFromInfosAtIndexes(IndexSet(places));
        return {Edit::Remove, numbers(infos)};
    }
    Edit reorder(InfoList all)
    {
        std::swap(all.front(), all[std::size_t(below(std::ssize(all)))]);
        m_document.reorderInfos(all);
        return {Edit::Reorder, numbers(all)};
    }
    Edit set(const InfoList &infos, const QString &key)
    {
        const int value = below(1000);
        for (const InfoPtr &info : infos)
            info->setValueForKey(QString::number(value), key);
        return {Edit::Set, numbers(infos), value, key};
    }

    QRandomGenerator &m_random;
    VXDocument m_document;
    int m_last = 0;
};

} // namespace

class UndoOnlyTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void takesBackWhatWouldNeverHaveBeen()
    {
        int taken = 0;
        int refused = 0;
        for (quint32 seed = 0; seed < quint32(rounds(60)); ++seed) {
            QRandomGenerator random(seed);
            Edited edited(random);
            UndoManager &history = *edited.document().undoManager();
            std::vector<Step> steps; // those that were undone last
            for (int i = 0; i < 40; ++i) {
                const int choice = random.bounded(8);
                if (choice == 0) {
                    history.undo();
                } else if (choice == 1) {
                    history.redo();
                } else if (choice < 5 && history.canUndo()) {
                    const int step = edited.below(history.stack()->index());
                    const QString before = edited.text();
                    const int count = history.stack()->index();
                    Error error;
                    if (edited.document().undoOnlyStep(step, &error)) {
                        ++taken;
                        steps.resize(std::size_t(count));
                        steps.push_back({{Edit::TakeBack, {}, step}});
                        QCOMPARE(history.stack()->undoText(),
                                 u"Take Back “%1”"_s.arg(history.stack()->text(step)));
                    } else {
                        ++refused;
                        QCOMPARE(edited.text(), before);
                        QCOMPARE(history.stack()->index(), count);
                        QVERIFY2(!error.description.isEmpty(), "refused without a word");
                    }
                } else {
                    const auto done = std::size_t(history.stack()->index());
                    const Step step = edited.doStep();
                    steps.resize(done);
                    steps.push_back(step);
                }
                const Replay replay({steps.begin(), steps.begin() + history.stack()->index()});
                QVERIFY2(edited.text() == replay.text(),
                         qPrintable(u"seed %1, edit %2:\n%3\n%4"_s.arg(seed).arg(i).arg(edited.text(),
                                                                                        replay.text())));
            }
            history.goToStep(0);
            QCOMPARE(edited.text(), QString());
            history.goToStep(int(steps.size()));
            QCOMPARE(edited.text(), Replay(steps).text());
        }
        QVERIFY2(taken > rounds(60) && refused > rounds(60), "chance has not tried both");
    }

    /// What is in the way is named, by its step and its record.
    void saysWhatIsInTheWay()
    {
        VXDocument document;
        UndoManager &history = *document.undoManager();
        const auto step = [&](const QString &name, const std::function<void()> &edit) {
            const UndoGroup group(&history, name);
            edit();
        };
        const auto answer = [&](int number) {
            Error error;
            return document.undoOnlyStep(number, &error) ? QString() : error.description;
        };
        InfoList infos;
        for (const QString &name : {u"a"_s, u"b"_s, u"c%1%2"_s}) {
            infos.push_back(VXGlyphInfo::init());
            infos.back()->setName(name);
        }
        document.setInfos(infos);
        step(u"One"_s, [&] { infos[2]->setCategory(u"Mark"_s); });
        step(u"Two %2"_s, [&] { infos[2]->setCategory(u"Letter"_s); });
        QCOMPARE(answer(0),
                 u"“One” cannot be taken back alone: “Two %2” later changed the Category of c%1%2."_s);
        step(u"Out"_s, [&] { document.removeObjectsFromInfosAtIndexes({2}); });
        QCOMPARE(answer(1),
                 u"“Two %2” cannot be taken back alone: “Out” later put in, moved or removed c%1%2."_s);
        step(u"In"_s, [&] { document.insertObjectInInfosAtIndex(VXGlyphInfo::init(), 2); });
        QCOMPARE(
            answer(2),
            u"“Out” cannot be taken back alone: “In” later changed the order of the list at the same places."_s);
        QCOMPARE(answer(3), QString());
        step(u"Script"_s, [&] { infos[0]->setScript(u"latin"_s); });
        step(u"Strange"_s, [&] { history.registerUndo([] {}); });
        QCOMPARE(
            answer(5),
            u"“Script” cannot be taken back alone: “Strange” came later, and not all that it changed is known."_s);
        QCOMPARE(answer(6), u"“Strange” cannot be taken back alone: not all that it changed is known."_s);
        QCOMPARE(answer(7), u"There is no such step that could be taken back."_s);
        history.undo();
        document.setInfos({infos[1]}); // which is no step
        QCOMPARE(
            answer(5),
            u"“Script” cannot be taken back alone: records that it changed are no longer in the document."_s);
    }
};

RUNEBOOK_TEST_MAIN(UndoOnlyTest)
#include "UndoOnlyTest.moc"
