#pragma once

#include "document/VXDocument.h"

#include <QRandomGenerator>
#include <QTest>
#include <functional>
#include <set>

// A document's list beside a plain one, on which scans answer what the look-ups of the document do.

namespace runebook {

using namespace Qt::StringLiterals;

inline InfoPtr named(const QString &name)
{
    InfoPtr info = VXGlyphInfo::init();
    info->setName(name);
    return info;
}

/// The list as its definition has it: a vector, scans, and for every operation the operation that undoes it.
class PlainDocument
{
public:
    using Step = std::vector<std::function<void()>>;

    void add(const InfoList &infos)
    {
        m_open.push_back([=, this] { remove(infos); });
        list.insert(list.end(), infos.begin(), infos.end());
    }
    void remove(const InfoList &infos)
    {
        m_open.push_back([=, this] { add(infos); });
        std::erase_if(list, [&](const InfoPtr &info) {
            return std::find(infos.begin(), infos.end(), info) != infos.end();
        });
    }
    void insertAt(const InfoList &infos, const IndexSet &indexes)
    {
        IndexSet places;
        for (std::size_t i = 0; i < infos.size(); ++i) {
            places.push_back(qMin(indexes[i], std::ssize(list)));
            list.insert(list.begin() + places.back(), infos[i]);
        }
        m_open.push_back([=, this] { removeAt(places); });
    }
    void removeAt(const IndexSet &indexes)
    {
        InfoList infos;
        IndexSet places;
        for (const qsizetype index : indexes) {
            if (index < std::ssize(list)) {
                infos.push_back(list[std::size_t(index)]);
                places.push_back(index);
            }
        }
        if (places.empty())
            return;
        m_open.push_back([=, this] { insertAt(infos, places); });
        for (auto place = places.rbegin(); place != places.rend(); ++place)
            list.erase(list.begin() + *place);
    }
    void set(const InfoPtr &info, const QString &key, const QString &value)
    {
        m_open.push_back([=, this, old = values[info.get()].value(key)] { set(info, key, old); });
        values[info.get()][key] = value;
    }
    void reorder(const InfoList &infos)
    {
        m_open.push_back([=, this, old = list] { reorder(old); });
        list = infos;
    }
    void close()
    {
        if (m_open.empty())
            return;
        undoSteps.push_back(std::exchange(m_open, {}));
        redoSteps.clear();
    }
    void move(std::vector<Step> &from, std::vector<Step> &to)
    {
        if (from.empty())
            return;
        const Step step = std::move(from.back());
        from.pop_back();
        for (auto operation = step.rbegin(); operation != step.rend(); ++operation)
            (*operation)();
        to.push_back(std::exchange(m_open, {}));
    }

    InfoPtr first(const QString &key, const QString &value) const
    {
        for (const InfoPtr &info : list) {
            if (values.value(info.get()).value(key) == value)
                return info;
        }
        return nullptr;
    }
    InfoList all(const QString &key, const QStringList &wanted) const
    {
        InfoList found;
        for (const InfoPtr &info : list) {
            if (wanted.contains(values.value(info.get()).value(key)))
                found.push_back(info);
        }
        return found;
    }

    InfoList list;
    QHash<const VXGlyphInfo *, QHash<QString, QString>> values;
    std::vector<Step> undoSteps;
    std::vector<Step> redoSteps;

private:
    Step m_open;
};

/// A list kept by the announcements alone, as a table of the window keeps its rows.
class Follower : public QObject
{
public:
    explicit Follower(VXDocument &document) : m_document(document)
    {
        connect(&document, &VXDocument::infosInserted, this, [this](const IndexSet &indexes) {
            for (const qsizetype index : indexes)
                list.insert(list.begin() + index, m_document.objectInInfosAtIndex(index));
        });
        connect(&document, &VXDocument::infosRemoved, this, [this](const IndexSet &indexes) {
            for (auto index = indexes.rbegin(); index != indexes.rend(); ++index)
                list.erase(list.begin() + *index);
        });
        connect(&document, &VXDocument::infoReplaced, this, [this](qsizetype index) {
            list[static_cast<std::size_t>(index)] = m_document.objectInInfosAtIndex(index);
        });
        connect(&document, &VXDocument::infosReset, this, [this] { list = m_document.infos(); });
    }
    InfoList list;

private:
    VXDocument &m_document;
};

/// Does the same to both, at random.
class Rivals
{
public:
    explicit Rivals(quint32 seed, bool repeatsRecords)
        : m_random(seed), m_follower(document), m_repeatsRecords(repeatsRecords)
    {
    }

    void step();
    void check();

    VXDocument document;

private:
    qsizetype below(std::size_t count) { return m_random.bounded(int(qMax<std::size_t>(1, count))); }
    /// Few, so that records share them; sometimes one of many, so that the look-ups grow.
    QString someText()
    {
        return QString(
            QChar(m_random.bounded(6) ? u'a' + m_random.bounded(12) : u'\u4e00' + m_random.bounded(400)));
    }
    InfoPtr someRecord() { return m_plain.list[std::size_t(below(m_plain.list.size()))]; }
    InfoPtr newRecord();
    IndexSet someIndexes(std::size_t limit, int count);
    void edit();
    void change();

    QRandomGenerator m_random;
    PlainDocument m_plain;
    Follower m_follower;
    bool m_repeatsRecords;
};

inline InfoPtr Rivals::newRecord()
{
    if (m_repeatsRecords && !m_plain.list.empty() && m_random.bounded(3) == 0)
        return someRecord();
    InfoPtr info = VXGlyphInfo::init();
    auto &values = m_plain.values[info.get()];
    values.clear();
    values[u"name"_s] = someText();
    info->setName(values[u"name"_s]);
    return info;
}

inline IndexSet Rivals::someIndexes(std::size_t limit, int count)
{
    std::set<qsizetype> places;
    for (int i = 0; i < count; ++i)
        places.insert(below(limit));
    return {places.begin(), places.end()};
}

inline void Rivals::edit()
{
    const InfoPtr info = someRecord();
    const QString text = m_random.bounded(8) ? someText() : QString();
    switch (m_random.bounded(4)) {
    case 0:
    case 1:
        document.objectInInfosAtIndex(document.indexOfObjectInInfos(info))->setName(text);
        m_plain.set(info, u"name"_s, text);
        break;
    case 2:
        info->setUnicode(text);
        m_plain.set(info, u"unicode"_s, text.toUpper());
        break;
    default:
        info->setProduction(text);
        m_plain.set(info, u"production"_s, text);
    }
}

inline void Rivals::change()
{
    const std::size_t size = m_plain.list.size();
    switch (size ? m_random.bounded(11) : m_random.bounded(4)) {
    case 0: {
        const InfoPtr info = newRecord();
        document.addInfo(info);
        m_plain.add({info});
        break;
    }
    case 1: {
        const InfoList infos {newRecord(), newRecord()};
        document.addInfos(infos);
        m_plain.add(infos);
        break;
    }
    case 2: {
        if (m_repeatsRecords)
            break; // undone by its index, it would take the document from another place of the record
        const InfoPtr info = newRecord();
        const qsizetype place = below(size + 1);
        document.insertObjectInInfosAtIndex(info, place);
        m_plain.insertAt({info}, {place});
        break;
    }
    case 3: {
        const IndexSet places = someIndexes(size + 1, 4);
        InfoList infos;
        for (std::size_t i = 0; i < places.size(); ++i)
            infos.push_back(newRecord());
        document.insertObjectsInInfosAtIndexes(infos, places);
        m_plain.insertAt(infos, places);
        break;
    }
    case 4: {
        const InfoPtr info = someRecord();
        document.removeInfo(info);
        m_plain.remove({info});
        break;
    }
    case 5: {
        InfoList infos {someRecord(), someRecord()};
        if (!m_repeatsRecords && infos[0] == infos[1])
            infos.pop_back(); // undone, it would stand in the list twice
        document.removeInfos(infos);
        m_plain.remove(infos);
        break;
    }
    case 6: {
        const IndexSet places = someIndexes(size, 4);
        document.removeObjectsFromInfosAtIndexes(places);
        m_plain.removeAt(places);
        break;
    }
    case 7: {
        if (m_repeatsRecords)
            break; // the record would keep no document, and its changes no step
        const qsizetype place = below(size);
        document.removeObjectFromInfosAtIndex(place);
        m_plain.removeAt({place});
        break;
    }
    case 8: {
        InfoList infos = m_plain.list;
        std::reverse(infos.begin() + below(size), infos.end());
        document.reorderInfos(infos);
        m_plain.reorder(infos);
        break;
    }
    default:
        edit();
    }
}

inline void Rivals::step()
{
    const int choice = m_random.bounded(20);
    if (choice < 5) {
        document.undoManager()->undo();
        m_plain.move(m_plain.undoSteps, m_plain.redoSteps);
    } else if (choice < 9) {
        document.undoManager()->redo();
        m_plain.move(m_plain.redoSteps, m_plain.undoSteps);
    } else if (choice == 9 && m_random.bounded(20) == 0) {
        // Records that nobody holds any more go now.
        document.undoManager()->removeAllActions();
        m_plain.undoSteps.clear();
        m_plain.redoSteps.clear();
    } else {
        const UndoGroup group(document.undoManager());
        for (int i = m_random.bounded(1, 4); i > 0; --i)
            change();
        m_plain.close();
    }
}

inline void Rivals::check()
{
    QVERIFY(document.infos() == m_plain.list);
    QVERIFY(m_follower.list == m_plain.list);
    QCOMPARE(document.undoManager()->canUndo(), !m_plain.undoSteps.empty());
    QCOMPARE(document.undoManager()->canRedo(), !m_plain.redoSteps.empty());
    for (const InfoPtr &info : m_plain.list) {
        const auto &values = m_plain.values[info.get()];
        QCOMPARE(info->name(), values.value(u"name"_s));
        QCOMPARE(info->unicode(), values.value(u"unicode"_s));
        QCOMPARE(info->document(), &document);
    }
    const QString text = someText();
    QCOMPARE(document.infoForName(text), m_plain.first(u"name"_s, text));
    QCOMPARE(document.infoForUnicode(text.toUpper()), m_plain.first(u"unicode"_s, text.toUpper()));
    for (const QString &key : {u"name"_s, u"production"_s, u"unicode"_s}) {
        const QStringList wanted {someText(), someText().toUpper(), someText()};
        const std::optional<InfoList> found =
            document.infoForKeyValues(key, {wanted[0], wanted[1], wanted[2]});
        const InfoList expected = m_plain.all(key, wanted);
        QCOMPARE(found.has_value(), !expected.empty());
        QVERIFY(found.value_or(InfoList()) == expected);
    }
    if (!m_plain.list.empty()) {
        const InfoPtr info = someRecord();
        QCOMPARE(document.indexOfObjectInInfos(info),
                 std::find(m_plain.list.begin(), m_plain.list.end(), info) - m_plain.list.begin());
    }
    QCOMPARE(document.indexOfObjectInInfos(named(u"stray"_s)), -1);
}

} // namespace runebook
