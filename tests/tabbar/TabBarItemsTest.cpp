// Items, selection, closing, delegate, notifications and archive: what needs no pointer and no keys.
#include "tests/Rounds.h"
#include "tests/tabbar/TabBarFixture.h"

#include "tabbar/PSMOverflowPopUpButton.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/// Has the one operation it needs, and one whose form is wrong.
class SmallDelegate : public QObject
{
    Q_OBJECT
public:
    QStringList closed;
    Q_INVOKABLE void tabBarDidCloseTabItem(VXTabBarControl *, QObject *item)
    {
        closed.append(item->property("title").toString());
    }
    Q_INVOKABLE int tabBarShouldCloseTabItem(VXTabBarControl *, QObject *) { return 0; }
};

class TabBarItemsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void startsWithTheDefaults()
    {
        const VXTabBarControl bar;
        QCOMPARE(bar.selectionIndex(), VXTabBarControl::NotFound);
        QCOMPARE(bar.orientation(), Qt::Horizontal);
        QCOMPARE(bar.cellMinWidth(), 100);
        QCOMPARE(bar.cellMaxWidth(), 280);
        QCOMPARE(bar.cellOptimumWidth(), 130);
        QVERIFY(bar.useOverflowMenu() && bar.allowsBackgroundTabClosing());
        for (const char *off :
             {"canCloseOnlyTab", "disableTabClose", "hideForSingleTab", "sizeCellsToFit", "allowsResizing",
              "selectsTabsOnMouseDown", "alwaysShowActiveTab", "allowsScrubbing", "automaticallyAnimates"})
            QVERIFY2(!bar.property(off).toBool() && bar.property(off).isValid(), off);
        QVERIFY(bar.overflowPopUpButton()->isHidden());
    }

    void addsWithoutSelecting()
    {
        Panel panel;
        QSignalSpy posted(panel.bar, &VXTabBarControl::notificationPosted);
        Item *item = panel.makeItem(u"A"_s);
        panel.bar->addTabItem(item);
        panel.bar->addTabItem(item);
        panel.bar->addTabItem(nullptr);
        QCOMPARE(panel.picture(), u"A"_s);
        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.first().at(0).toString(), u"TabDidOpenNotification"_s);
        QCOMPARE(posted.first().at(1).value<QObject *>(), item);
        QCOMPARE(item->view()->size(), panel.content->size());
        panel.bar->insertTabItemAtIndex(panel.makeItem(u"Z"_s), 99);
        QCOMPARE(panel.picture(), u"A Z"_s);
    }

    void showsTheSelectedViewAlone()
    {
        Panel panel(3);
        panel.window.show();
        for (const uint index : {2U, 0U, 1U}) {
            panel.bar->selectTabItemAtIndex(index);
            const auto views = panel.content->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
            QCOMPARE(views, QList<QWidget *> {panel.items.at(index)->view()});
            QApplication::processEvents();
            QCOMPARE(views.first()->geometry(), panel.content->rect());
            QVERIFY(views.first()->isVisible());
        }
    }

    void tellsOfSelecting()
    {
        Panel panel(3);
        QSignalSpy restorable(panel.bar, &VXTabBarControl::restorableStateChanged);
        QSignalSpy selected(panel.bar, &VXTabBarControl::selectionChanged);
        panel.bar->selectTabItemAtIndex(1);
        QCOMPARE(panel.delegate.takeCalls(), (QStringList {u"will unselect A"_s, u"did select B"_s}));
        QCOMPARE(selected.takeLast().first().toInt(), 1);
        QCOMPARE(panel.bar->previousTabItem(), panel.item(u"A"_s));
        QCOMPARE(restorable.size(), 1);
        panel.bar->selectTabItemAtIndex(1);
        panel.bar->selectTabItemAtIndex(7);
        QCOMPARE(panel.delegate.takeCalls(), QStringList());
    }

    void closesTheOnlyTabOnRequest()
    {
        Panel panel(1);
        panel.bar->closeTabItem(panel.items.first());
        QCOMPARE(panel.picture(), u"[A]"_s);
        QVERIFY(panel.cell(u"A"_s)->isCloseButtonSuppressed());
        panel.bar->setCanCloseOnlyTab(true);
        QVERIFY(!panel.cell(u"A"_s)->isCloseButtonSuppressed());
        panel.bar->closeTabItem(panel.items.first());
        QCOMPARE(panel.picture(), u""_s);
        QCOMPARE(panel.bar->selectionIndex(), VXTabBarControl::NotFound);
        QVERIFY(panel.content->findChildren<QWidget *>().isEmpty());
    }

    void asksBeforeClosing()
    {
        Panel panel(2);
        QSignalSpy posted(panel.bar, &VXTabBarControl::notificationPosted);
        panel.delegate.allowsClosing = false;
        panel.bar->closeTabItem(panel.items.last());
        QCOMPARE(panel.delegate.takeCalls(), QStringList {u"should close B"_s});
        QCOMPARE(posted.size(), 0);
        panel.delegate.allowsClosing = true;
        panel.bar->closeTabItem(panel.items.last());
        QCOMPARE(panel.delegate.takeCalls(),
                 (QStringList {u"should close B"_s, u"will close B"_s, u"did close B"_s}));
        QCOMPARE(posted.size(), 1);
        QCOMPARE(posted.first().at(0).toString(), u"TabWillCloseNotification"_s);
    }

    void callsOnlyWhatADelegateHas()
    {
        Panel panel(3);
        SmallDelegate small;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"does not call tabBarShouldCloseTabItem"_s));
        panel.bar->setDelegate(&small);
        panel.bar->closeTabItem(panel.items.at(1));
        QCOMPARE(small.closed, QStringList {u"B"_s});
        {
            FullDelegate shortLived;
            panel.bar->setDelegate(&shortLived);
        }
        panel.bar->closeTabItem(panel.items.at(0));
        QCOMPARE(panel.picture(), u"[C]"_s);
    }

    void survivesItemsThatDie()
    {
        Panel panel(3);
        panel.bar->selectTabItemAtIndex(1);
        delete panel.items.takeAt(1);
        QCOMPARE(panel.picture(), u"A C"_s);
        QCOMPARE(panel.bar->selectionIndex(), VXTabBarControl::NotFound);
        // An observer that deletes what is about to close.
        panel.bar->selectTabItemAtIndex(0);
        panel.bar->addObserver(&panel.window, [&panel](const QString &, QObject *item) {
            delete panel.items.takeAt(panel.items.indexOf(item));
        });
        panel.bar->closeTabItem(panel.items.first());
        QCOMPARE(panel.picture(), u"C"_s);
    }

    void logsWhatObserversThrow()
    {
        Panel panel(1);
        QStringList heard;
        panel.bar->addObserver(&panel.window,
                               [](const QString &, QObject *) { throw std::runtime_error("no time"); });
        panel.bar->addObserver(&panel.window, [](const QString &, QObject *) { throw 5; });
        panel.bar->addObserver(&panel.window,
                               [&heard](const QString &name, QObject *) { heard.append(name); });
        QTest::ignoreMessage(QtWarningMsg, "Exception on 'TabDidOpenNotification': no time");
        QTest::ignoreMessage(QtWarningMsg, "Exception on 'TabDidOpenNotification': unknown");
        panel.bar->addTabItem(panel.makeItem(u"B"_s));
        QTest::ignoreMessage(QtWarningMsg, "Exception on 'TabWillCloseNotification': no time");
        QTest::ignoreMessage(QtWarningMsg, "Exception on 'TabWillCloseNotification': unknown");
        panel.bar->closeTabItem(panel.items.first());
        QCOMPARE(heard, (QStringList {u"TabDidOpenNotification"_s, u"TabWillCloseNotification"_s}));
        QCOMPARE(panel.picture(), u"[B]"_s);
    }

    void replacesItsItems()
    {
        Panel panel(3);
        panel.bar->selectTabItemAtIndex(2);
        panel.bar->setViewControllers({panel.makeItem(u"X"_s), panel.items.at(2), panel.items.at(0)});
        QCOMPARE(panel.picture(), u"X [C] A"_s);
        panel.bar->setViewControllers({});
        QCOMPARE(panel.bar->cells().size(), 0);
        QCOMPARE(panel.bar->selectionIndex(), VXTabBarControl::NotFound);
    }

    void followsTitles()
    {
        Panel panel(2);
        panel.bar->setSizeCellsToFit(true);
        const qreal before = panel.bar->cells().first()->frame().width();
        panel.items.first()->setTitle(u"A much longer title than before"_s);
        QCOMPARE(panel.bar->cells().first()->title(), u"A much longer title than before"_s);
        QVERIFY(panel.bar->cells().first()->frame().width() > before);
        panel.items.first()->setProperty("icon", QIcon(QPixmap(8, 8)));
        panel.items.first()->setTitle(u"two\nlines\u2028and\u2029more"_s + QString(1'000'000, u'x'));
        const QString shown = panel.bar->cells().first()->displayTitle();
        QVERIFY(shown.startsWith(u"two lines and more"_s) && shown.size() <= 200);
        QVERIFY(!panel.bar->cells().first()->icon().isNull());
    }

    /// A list and a selected item are all there is to know of a bar.
    void randomUseKeepsOrderAndSelection()
    {
        QRandomGenerator random(3);
        Panel panel;
        panel.bar->setCanCloseOnlyTab(true);
        QList<QObject *> model;
        QObject *selected = nullptr;
        QObject *previous = nullptr;
        for (int step = 0; step < runebook::rounds(3000); ++step) {
            const int action = random.bounded(5);
            QObject *item = model.isEmpty() ? nullptr : model.at(random.bounded(int(model.size())));
            if (action == 0 || !item) {
                QObject *fresh = panel.makeItem(QString::number(step));
                const int index = random.bounded(int(model.size()) + 1);
                model.insert(index, fresh);
                panel.bar->insertTabItemAtIndex(fresh, uint(index));
            } else if (action == 1) {
                previous = item == selected ? previous : selected;
                selected = item;
                panel.bar->selectTabItem(item);
            } else if (action == 2) {
                const int index = random.bounded(int(model.size()));
                model.move(model.indexOf(item), index);
                panel.bar->moveTabItemToIndex(item, uint(index));
            } else {
                const qsizetype closed = model.indexOf(item);
                const qsizetype from = model.indexOf(selected);
                model.removeOne(item);
                previous = previous == item ? nullptr : previous;
                if (item == selected) {
                    selected = previous ? previous
                                        : model.value(from == 0           ? 0
                                                          : from < closed ? from
                                                                          : from - 1);
                    previous = nullptr;
                }
                panel.bar->closeTabItem(item);
            }
            QCOMPARE(panel.bar->tabItems(), model);
            QCOMPARE(panel.bar->selectedTabItem(), selected);
            QCOMPARE(panel.bar->previousTabItem(), previous);
            for (qsizetype index = 0; index < model.size(); ++index) {
                const PSMTabBarCell *cell = panel.bar->cells().at(index);
                QCOMPARE(cell->representedObject(), model.at(index));
                QCOMPARE(cell->is(PSMTabBarCell::Selected), model.at(index) == selected);
            }
        }
    }

    void archivesUnderItsKeys()
    {
        Panel panel(2);
        panel.content->setObjectName(u"content"_s);
        panel.bar->setStyleNamed(u"BigSur"_s);
        panel.bar->setCellMinWidth(77);
        panel.bar->setAlwaysShowActiveTab(true);
        panel.bar->hideTabBarAnimate(true, false);
        const QVariantMap archive = panel.bar->archive();
        QCOMPARE(QSet<QString>(archive.keyBegin(), archive.keyEnd()), [] {
            const QStringList keys = VXTabBarControl::archiveKeys();
            return QSet<QString>(keys.begin(), keys.end());
        }());
        QCOMPARE(VXTabBarControl::archiveKeys().size(), 24);

        Panel other;
        other.content->setObjectName(u"content"_s);
        other.bar->setContentView(nullptr);
        QVariantMap older = archive;
        older[u"PSMuseFullWidth"_s] = true;
        other.bar->restoreFromArchive(older);
        QCOMPARE(other.bar->contentView(), other.content);
        QVERIFY(other.bar->useFullWidth());
        QVERIFY(other.bar->isTabBarHidden());
        QVERIFY(other.bar->cells().isEmpty());
        QVariantMap again = other.bar->archive();
        again[u"PSMcells"_s] = archive[u"PSMcells"_s];
        QCOMPARE(again, archive);
    }
};

RUNEBOOK_TEST_MAIN(TabBarItemsTest)
#include "TabBarItemsTest.moc"
