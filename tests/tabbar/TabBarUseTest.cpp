// The bar in a user's hands: mouse, keys, menus and assistive technology.
#include "tests/tabbar/TabBarFixture.h"

#include "tabbar/PSMOverflowPopUpButton.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace {

void send(QWidget *widget, QEvent::Type type, QPointF point, Qt::MouseButton button, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, point, widget->mapToGlobal(point), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

QPoint middleOf(const PSMTabBarCell *cell)
{
    return cell->frame().center().toPoint();
}

QPoint closeButtonOf(const Panel &panel, const QString &title)
{
    return panel.bar->tabStyle()
        .closeButtonRect(panel.cell(title)->frame(), panel.bar->layoutDirection())
        .center()
        .toPoint();
}

/// Presses on the tab \a title and moves the pointer through \a offsets from there, without letting go.
QPointF carry(const Panel &panel, const QString &title, const QList<QPointF> &offsets)
{
    const QPointF start = middleOf(panel.cell(title));
    QPointF point = start;
    send(panel.bar, QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    for (const QPointF &offset : offsets) {
        point = start + offset;
        send(panel.bar, QEvent::MouseMove, point, Qt::NoButton, Qt::LeftButton);
    }
    return point;
}

/// Brings the window up with the pointer far from the bar.
void show(Panel &panel)
{
    panel.window.show();
    QVERIFY(QTest::qWaitForWindowActive(&panel.window));
    QCursor::setPos(panel.window.mapToGlobal(QPoint(250, 150)));
    QApplication::processEvents();
}

/// Whether nothing slides any more.
bool isPlaced(const Panel &panel)
{
    return std::ranges::all_of(
        panel.bar->cells(), [](const PSMTabBarCell *cell) { return cell->frame() == cell->targetFrame(); });
}

QString nameOf(QAccessibleInterface *object)
{
    return object->text(QAccessible::Name);
}

} // namespace

class TabBarUseTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void selectsOnRelease()
    {
        Panel panel(3);
        show(panel);
        QTest::mousePress(panel.bar, Qt::LeftButton, {}, middleOf(panel.cell(u"B"_s)));
        QCOMPARE(panel.picture(), u"[A] B C"_s);
        QTest::mouseRelease(panel.bar, Qt::LeftButton, {}, middleOf(panel.cell(u"C"_s)));
        QCOMPARE(panel.picture(), u"[A] B C"_s);
        QTest::mouseClick(panel.bar, Qt::LeftButton, {}, middleOf(panel.cell(u"B"_s)));
        QCOMPARE(panel.picture(), u"A [B] C"_s);
        QTest::mouseClick(panel.bar, Qt::RightButton, {}, middleOf(panel.cell(u"C"_s)));
        QCOMPARE(panel.picture(), u"A [B] C"_s);
        panel.bar->setSelectsTabsOnMouseDown(true);
        QTest::mousePress(panel.bar, Qt::LeftButton, {}, middleOf(panel.cell(u"C"_s)));
        QCOMPARE(panel.picture(), u"A B [C]"_s);
    }

    // setting: turned over from its default
    TABLE(closesByButtonAndMiddleClick, (const QByteArray &setting, const QString &victim, bool closes), {
        row("the selected tab", QByteArray(), "A", true);
        row("a background tab", QByteArray(), "B", true);
        row("closing is off", "disableTabClose", "A", false);
        row("background closing is off", "allowsBackgroundTabClosing", "B", false);
        row("background closing is off, selected", "allowsBackgroundTabClosing", "A", true);
        row("the delegate disables it", "delegate", "A", false);
    })
    {
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton}) {
            Panel panel(3);
            show(panel);
            if (setting == "delegate")
                panel.delegate.disablesClose = true;
            else if (!setting.isEmpty())
                panel.bar->setProperty(setting, !panel.bar->property(setting).toBool());
            panel.bar->update();
            const bool byButton = button == Qt::LeftButton;
            QTest::mouseClick(panel.bar, button, {},
                              byButton ? closeButtonOf(panel, victim) : middleOf(panel.cell(victim)));
            QCOMPARE(panel.item(victim) == nullptr, closes);
        }
    }

    void closeButtonNeedsBothPressAndRelease()
    {
        Panel panel(3);
        show(panel);
        const QPoint button = closeButtonOf(panel, u"B"_s);
        QTest::mousePress(panel.bar, Qt::LeftButton, {}, button);
        QTest::mouseRelease(panel.bar, Qt::LeftButton, {}, middleOf(panel.cell(u"B"_s)));
        QTest::mousePress(panel.bar, Qt::LeftButton, {}, closeButtonOf(panel, u"A"_s));
        QTest::mouseRelease(panel.bar, Qt::LeftButton, {}, button);
        QCOMPARE(panel.picture(), u"[A] B C"_s);
        // Nor is a tab carried by it.
        send(panel.bar, QEvent::MouseButtonPress, button, Qt::LeftButton, Qt::LeftButton);
        for (const int x : {20, 150, 300})
            send(panel.bar, QEvent::MouseMove, button + QPointF(x, 0), Qt::NoButton, Qt::LeftButton);
        send(panel.bar, QEvent::MouseButtonRelease, button + QPointF(300, 0), Qt::LeftButton, Qt::NoButton);
        QCOMPARE(panel.picture(), u"[A] B C"_s);
    }

    void showsWhereThePointerIs()
    {
        Panel panel(3);
        show(panel);
        const auto hovered = [&panel] {
            QString titles;
            for (const PSMTabBarCell *cell : panel.bar->cells()) {
                if (cell->is(PSMTabBarCell::Hovered))
                    titles += cell->title() + (cell->is(PSMTabBarCell::CloseHovered) ? u"x"_s : QString());
            }
            return titles;
        };
        const auto moveTo = [&](QPointF point) {
            send(panel.bar, QEvent::MouseMove, point, Qt::NoButton, Qt::NoButton);
            return hovered();
        };
        QCOMPARE(moveTo(middleOf(panel.cell(u"B"_s))), u"B"_s);
        QCOMPARE(moveTo(closeButtonOf(panel, u"B"_s)), u"Bx"_s);
        QCOMPARE(moveTo(middleOf(panel.cell(u"C"_s))), u"C"_s);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(panel.bar, &leave);
        QCOMPARE(hovered(), QString());
    }

    TABLE(switchesByKeys, (int key, int modifiers, const QString &visited), {
        row("Ctrl+Tab", int(Qt::Key_Tab), int(Qt::CTRL), "BCA");
        row("Ctrl+Shift+Tab", int(Qt::Key_Backtab), int(Qt::CTRL | Qt::SHIFT), "CBA");
        row("Ctrl+PgDown", int(Qt::Key_PageDown), int(Qt::CTRL), "BCA");
        row("Ctrl+PgUp", int(Qt::Key_PageUp), int(Qt::CTRL), "CBA");
        row("Right, in the bar", int(Qt::Key_Right), 0, "BCA");
        row("Left, in the bar", int(Qt::Key_Left), 0, "CBA");
        row("End, in the bar", int(Qt::Key_End), 0, "C");
    })
    {
        Panel panel(3);
        show(panel);
        if (modifiers == 0)
            panel.bar->setFocus();
        else
            panel.items.first()->view()->setFocus();
        for (const QChar title : visited) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
            QCOMPARE(panel.selectedTitle(), QString(title));
        }
    }

    void typingGoesOnInTheNextTab()
    {
        Panel panel(3);
        show(panel);
        panel.items.first()->view()->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(QApplication::focusWidget(), panel.items.at(1)->view());
        panel.bar->closeTabItem(panel.items.at(1));
        QCOMPARE(QApplication::focusWidget(), panel.items.at(0)->view());
        panel.bar->setFocus();
        QTest::keyClick(panel.bar, Qt::Key_Delete);
        QCOMPARE(panel.picture(), u"[C]"_s);
    }

    void movesTheSelectedTabByKeys()
    {
        Panel panel(3);
        show(panel);
        QSignalSpy moved(panel.bar, &VXTabBarControl::tabItemMoved);
        const auto press = [&panel](Qt::Key key) {
            QTest::keyClick(panel.items.first()->view(), key, Qt::ControlModifier | Qt::ShiftModifier);
            return panel.picture();
        };
        QCOMPARE(press(Qt::Key_PageDown), u"B [A] C"_s);
        QCOMPARE(press(Qt::Key_PageDown), u"B C [A]"_s);
        QCOMPARE(press(Qt::Key_PageDown), u"B C [A]"_s);
        QCOMPARE(press(Qt::Key_PageUp), u"B [A] C"_s);
        QCOMPARE(moved.size(), 3);
    }

    // by: points, from where it was taken
    TABLE(dragsToReorder,
          (Qt::LayoutDirection direction, const QString &carried, const QList<int> &by, QString expected), {
              using By = QList<int>;
              const auto ltr = Qt::LeftToRight;
              row("a trembling hand", ltr, "B", By {3}, "A[B]CD");
              row("not half a tab", ltr, "A", By {20, 48}, "[A]BCD");
              row("over half a tab", ltr, "A", By {20, 55}, "B[A]CD");
              row("in one leap", ltr, "A", By {20, 230}, "BC[A]D");
              row("beyond the end", ltr, "A", By {20, 900}, "BCD[A]");
              row("backwards", ltr, "D", By {-20, -160}, "A[D]BC");
              row("there and back", ltr, "A", By {20, 260, 5}, "[A]BCD");
              row("right to left", Qt::RightToLeft, "A", By {-20, -160}, "BC[A]D");
          })
    {
        Panel panel(4, 402);
        panel.bar->setLayoutDirection(direction);
        panel.bar->setUseFullWidth(true);
        show(panel);
        panel.bar->selectTabItem(panel.item(carried));
        QSignalSpy moved(panel.bar, &VXTabBarControl::tabItemMoved);
        const QString before = panel.picture();
        QList<QPointF> offsets;
        for (const int offset : by)
            offsets.append(QPointF(offset, 0));
        const QPointF end = carry(panel, carried, offsets);
        send(panel.bar, QEvent::MouseButtonRelease, end, Qt::LeftButton, Qt::NoButton);
        QCOMPARE(panel.picture().remove(u' '), expected);
        QCOMPARE(moved.size(), panel.picture() == before ? 0 : 1);
        // Everything slides to its place, in the order of the items.
        QTRY_VERIFY(isPlaced(panel));
        QString order = panel.picture().remove(QRegularExpression(u"[\\[\\] ]"_s));
        if (direction == Qt::RightToLeft)
            std::ranges::reverse(order);
        QCOMPARE(panel.shown(), order);
    }

    /// A narrow tab over a wide one: wherever the pointer stops, the order must not go to and fro.
    void dragsUnevenTabsSteadily()
    {
        Panel panel(2, 700);
        panel.bar->setSizeCellsToFit(true);
        panel.items.at(1)->setTitle(u"B, a tab with a title that goes on for a while"_s);
        show(panel);
        const QPointF start = middleOf(panel.bar->cells().first());
        carry(panel, u"A"_s, {QPointF(20, 0)});
        int changes = 0;
        QObject *first = panel.bar->tabItemAtIndex(0);
        for (int x = 20; x < 300; ++x) {
            for (int repeat = 0; repeat < 2; ++repeat) {
                send(panel.bar, QEvent::MouseMove, start + QPointF(x, 0), Qt::NoButton, Qt::LeftButton);
                changes += panel.bar->tabItemAtIndex(0) != std::exchange(first, panel.bar->tabItemAtIndex(0))
                    ? 1
                    : 0;
            }
        }
        QCOMPARE(changes, 1);
        QCOMPARE(panel.bar->indexOfTabItem(panel.items.first()), 1U);
    }

    void escapeTakesADragBack()
    {
        Panel panel(4, 402);
        panel.bar->setUseFullWidth(true);
        show(panel);
        carry(panel, u"A"_s, {QPointF(20, 0), QPointF(230, 0)});
        QCOMPARE(panel.picture(), u"B C [A] D"_s);
        QTest::keyClick(panel.bar, Qt::Key_Tab, Qt::ControlModifier); // shortcuts wait meanwhile
        QTest::keyClick(panel.bar, Qt::Key_Escape);
        QCOMPARE(panel.picture(), u"[A] B C D"_s);
        send(panel.bar, QEvent::MouseButtonRelease, QPointF(250, 10), Qt::LeftButton, Qt::NoButton);
        QCOMPARE(panel.picture(), u"[A] B C D"_s);
        // A later one goes back to its place just as well.
        QTRY_VERIFY(isPlaced(panel));
        carry(panel, u"C"_s, {QPointF(-20, 0), QPointF(-230, 0)});
        QCOMPARE(panel.picture(), u"C [A] B D"_s);
        panel.items.first()->view()->setFocus(); // wherever somebody types
        QTest::keyClick(panel.window.windowHandle(), Qt::Key_Escape);
        QCOMPARE(panel.picture(), u"[A] B C D"_s);
        send(panel.bar, QEvent::MouseMove, QPointF(10, 10), Qt::NoButton, Qt::LeftButton);
        QVERIFY(!panel.bar->cells().first()->is(PSMTabBarCell::Held));
    }

    void tearsOffAndComesBack()
    {
        Panel panel(3);
        panel.bar->setTearOffStyle(VXTabBarControl::TearOffMiniature);
        show(panel);
        QWidget *torn = nullptr;
        const auto dragWindows = [&panel, &torn] {
            int count = 0;
            for (QWidget *child : panel.bar->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
                if (child->inherits("PSMTabDragWindow") && child->isVisible())
                    torn = child, ++count;
            }
            return count;
        };
        const QPointF start = middleOf(panel.cell(u"A"_s));
        carry(panel, u"A"_s, {QPointF(20, 0), QPointF(40, 90)});
        QVERIFY(panel.cell(u"A"_s)->is(PSMTabBarCell::TornOff));
        QCOMPARE(dragWindows(), 1);
        // What the tab holds hangs below it.
        const QImage picture = torn->grab().toImage();
        const int top = panel.bar->height() + 2;
        const QImage content = picture.copy(2, top, picture.width() - 4, picture.height() - top - 2);
        QImage blank = content;
        blank.fill(content.pixelColor(0, 0));
        QVERIFY(content != blank);
        send(panel.bar, QEvent::MouseMove, start + QPointF(5, 0), Qt::NoButton, Qt::LeftButton);
        QVERIFY(!panel.cell(u"A"_s)->is(PSMTabBarCell::TornOff));
        QCOMPARE(dragWindows(), 0);
        send(panel.bar, QEvent::MouseMove, start + QPointF(5, 90), Qt::NoButton, Qt::LeftButton);
        send(panel.bar, QEvent::MouseButtonRelease, start + QPointF(5, 90), Qt::LeftButton, Qt::NoButton);
        QCOMPARE(panel.picture(), u"[A] B C"_s);
        QCOMPARE(dragWindows(), 0);
    }

    void dropsOnAnotherBar()
    {
        Panel source(3);
        Panel target(2);
        target.items.first()->setTitle(u"X"_s);
        target.items.last()->setTitle(u"Y"_s);
        const std::unique_ptr<QMimeData> dragged = source.bar->mimeDataForTabItem(source.items.first());
        QVERIFY(dragged->hasFormat(u"VXTabBarControlItemPBType"_s));
        QVERIFY(!source.bar->acceptDroppedTab(*dragged, QPointF(0, 0)));
        QVERIFY(target.bar->acceptDroppedTab(*dragged, middleOf(target.cell(u"Y"_s))));
        QCOMPARE(target.picture(), u"X [A] Y"_s);
        QCOMPARE(source.picture(), u"[B] C"_s);
        QVERIFY(!target.bar->acceptDroppedTab(*dragged, QPointF(0, 0))); // it has left the source
        QVERIFY(!target.bar->acceptDroppedTab(QMimeData(), QPointF(0, 0)));
    }

    void survivesTheEndOfADraggedItem()
    {
        Panel panel(3);
        show(panel);
        const QPointF point = carry(panel, u"A"_s, {QPointF(20, 0), QPointF(40, 90)});
        delete panel.items.takeFirst();
        send(panel.bar, QEvent::MouseMove, point + QPointF(5, 0), Qt::NoButton, Qt::LeftButton);
        send(panel.bar, QEvent::MouseButtonRelease, point, Qt::LeftButton, Qt::NoButton);
        QCOMPARE(panel.picture(), u"B C"_s);
    }

    void scrubs()
    {
        Panel panel(3);
        panel.bar->setAllowsScrubbing(true);
        show(panel);
        const QPointF end = carry(panel, u"A"_s, {QPointF(20, 0), QPointF(130, 0)});
        QCOMPARE(panel.picture(), u"A [B] C"_s);
        send(panel.bar, QEvent::MouseButtonRelease, end, Qt::LeftButton, Qt::NoButton);
        QCOMPARE(panel.picture(), u"A [B] C"_s);
    }

    void keepsPlacesUnderThePointer()
    {
        Panel panel(5);
        show(panel);
        QCOMPARE(panel.cell(u"B"_s)->frame().width(), 100);
        const QPoint button = closeButtonOf(panel, u"B"_s);
        QCursor::setPos(panel.bar->mapToGlobal(button));
        for (const QString &title : {u"B"_s, u"C"_s, u"D"_s}) {
            QCOMPARE(closeButtonOf(panel, title), button);
            QTest::mouseClick(panel.bar, Qt::LeftButton, {}, button);
            QVERIFY(!panel.item(title));
            const PSMTabBarCell *next = panel.bar->cellAtPoint(button); // which has slid under the pointer
            QTRY_VERIFY(isPlaced(panel) && next->is(PSMTabBarCell::CloseHovered));
        }
        QCOMPARE(panel.cell(u"E"_s)->frame().width(), 100);
        QCursor::setPos(panel.window.mapToGlobal(QPoint(250, 150)));
        QTRY_COMPARE(panel.cell(u"E"_s)->targetFrame().width(), 130);
    }

    void overflowMenuHoldsTheRest()
    {
        Panel panel(0, 528); // 500 points for tabs beside the button
        for (const QChar title : u"ABCDEFG"_s)
            panel.bar->addTabItem(panel.makeItem(title));
        panel.items.at(6)->setTitle(u"G & <b>"_s);
        show(panel);
        QCOMPARE(panel.shown(), u"ABCDE"_s);
        QVERIFY(panel.bar->overflowPopUpButton()->isVisible());
        QVERIFY(panel.cell(u"E"_s)->frame().right() <= panel.bar->overflowPopUpButton()->x());
        QVERIFY(panel.delegate.calls.contains(u"hidden F"_s));
        QCOMPARE(panel.bar->overflowPopUpButton()->toolTip(), u"More tabs: 2"_s);
        const auto isOffscreen = [&panel](const QString &title) {
            return QAccessible::queryAccessibleInterface(panel.cell(title))->state().offscreen == 1;
        };
        QVERIFY(isOffscreen(u"F"_s) && !isOffscreen(u"E"_s));
        QMenu *menu = panel.bar->overflowPopUpButton()->menu();
        QVERIFY(menu->isEmpty()); // filled only when it shows
        menu->popup(QPoint(0, 0));
        QCOMPARE(menu->actions().size(), 2);
        QCOMPARE(menu->actions().last()->text(), u"G && <b>"_s);
        menu->actions().first()->trigger();
        QCOMPARE(panel.selectedTitle(), u"F"_s);
        QVERIFY(panel.bar->overflowPopUpButton()->holdsSelection());
        menu->close();
        panel.delegate.enablesMenuItems = false;
        panel.bar->menuNeedsUpdate(menu);
        QVERIFY(!menu->actions().first()->isEnabled() && menu->actions().first()->isChecked());
        QMenu stranger(u"Glyph"_s);
        QTest::ignoreMessage(QtWarningMsg, "Warning: Unexpected menu delegate call for menu Glyph");
        panel.bar->menuNeedsUpdate(&stranger);
        QVERIFY(stranger.isEmpty());

        panel.delegate.calls.clear();
        panel.bar->closeTabItem(panel.item(u"A"_s));
        QVERIFY(panel.delegate.calls.contains(u"shown F"_s));
        panel.bar->setUseOverflowMenu(false);
        QVERIFY(panel.bar->overflowPopUpButton()->isHidden());
        QCOMPARE(panel.shown(), u"BCDEFG & <b>"_s);
    }

    void keepsTheSelectedTabInSight()
    {
        Panel panel(8, 528);
        show(panel);
        panel.bar->setAlwaysShowActiveTab(true);
        panel.bar->selectTabItemAtIndex(6);
        QCOMPARE(panel.shown(), u"ABCDG"_s);
        panel.bar->selectTabItemAtIndex(1);
        QCOMPARE(panel.shown(), u"ABCDE"_s);
        panel.window.resize(140, 200);
        QCOMPARE(panel.shown(), u"B"_s);
    }

    void hidesForASingleTab()
    {
        Panel panel(2);
        show(panel);
        const int height = panel.bar->height();
        panel.bar->setHideForSingleTab(true);
        QVERIFY(!panel.bar->isTabBarHidden());
        panel.bar->closeTabItem(panel.items.last());
        QVERIFY(panel.bar->isTabBarHidden());
        QCOMPARE(panel.bar->height(), 0);
        QCOMPARE(panel.delegate.calls.count(u"did hide"_s), 1);
        panel.bar->addTabItem(panel.makeItem(u"B"_s));
        QVERIFY(!panel.bar->isTabBarHidden());
        QCOMPARE(panel.bar->height(), height);
        // Keys reach tabs behind a bar that is folded away.
        panel.bar->hideTabBarAnimate(true, true);
        QVERIFY(panel.bar->height() > 0); // not at once
        QTRY_COMPARE(panel.delegate.calls.count(u"did hide"_s), 2);
        QTest::keyClick(panel.items.first()->view(), Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(panel.selectedTitle(), u"B"_s);
    }

    void tabsSlideButNotWhileTheWindowIsSized()
    {
        Panel panel(4, 700);
        panel.bar->setAutomaticallyAnimates(true);
        show(panel);
        const auto isRight = [&] {
            return std::ranges::all_of(panel.bar->cells(), [](const PSMTabBarCell *cell) {
                return cell->frame() == cell->targetFrame();
            });
        };
        panel.bar->removeTabItem(panel.item(u"A"_s));
        QVERIFY(!isRight());
        QTRY_VERIFY(isRight());
        panel.bar->removeTabItem(panel.item(u"B"_s));
        QVERIFY(!isRight());
        panel.window.resize(500, 200);
        QVERIFY(isRight());
        panel.bar->setAutomaticallyAnimates(false);
        panel.bar->removeTabItem(panel.item(u"C"_s));
        QVERIFY(isRight());
    }

    void foldingFeedsThePartner()
    {
        QWidget window;
        window.resize(400, 300);
        auto *bar = new VXTabBarControl(&window);
        auto *partner = new QWidget(&window);
        bar->resize(400, bar->height());
        const QRect below(0, bar->height(), 400, 300 - bar->height());
        partner->setGeometry(below);
        bar->setPartnerView(partner);
        bar->hideTabBarAnimate(true, false);
        QCOMPARE(partner->geometry(), QRect(0, 0, 400, 300));
        bar->hideTabBarAnimate(false, false);
        QCOMPARE(partner->geometry(), below);
    }

    void resizesByItsHandle()
    {
        Panel panel(2);
        panel.bar->setOrientation(Qt::Vertical);
        panel.bar->setAllowsResizing(true);
        show(panel);
        const int width = panel.bar->width();
        QCOMPARE(panel.cell(u"B"_s)->frame().top(), panel.cell(u"A"_s)->frame().bottom());
        QWidget *handle = panel.bar->childAt(width - 2, panel.bar->height() / 2);
        QVERIFY(handle);
        send(handle, QEvent::MouseButtonPress, QPointF(2, 5), Qt::LeftButton, Qt::LeftButton);
        send(handle, QEvent::MouseMove, QPointF(42, 5), Qt::NoButton, Qt::LeftButton);
        QCOMPARE(panel.bar->width(), width + 40);
        QCOMPARE(panel.cell(u"A"_s)->frame().width(), width + 40);
    }

    void asksForNewTabs()
    {
        Panel panel(2);
        show(panel);
        QVERIFY(panel.bar->addTabButton()->isHidden());
        panel.bar->setShowAddTabButton(true);
        QSignalSpy asked(panel.bar, &VXTabBarControl::addTabRequested);
        QTest::mouseClick(panel.bar->addTabButton(), Qt::LeftButton);
        QCOMPARE(asked.size(), 1);
        QCOMPARE(panel.bar->addTabButton()->x(), 260);
        panel.window.resize(150, 200);
        QVERIFY(panel.bar->overflowPopUpButton()->isVisible());
        QVERIFY(
            !panel.bar->addTabButton()->geometry().intersects(panel.bar->overflowPopUpButton()->geometry()));
        panel.bar->hideTabBarAnimate(true, false);
        QVERIFY(panel.bar->addTabButton()->isHidden());
    }

    void showsMenusAndToolTips()
    {
        Panel panel(2);
        show(panel);
        QMenu menu;
        menu.addAction(u"Rename"_s);
        const QPoint point = middleOf(panel.cell(u"B"_s));
        const auto ask = [&panel, point] {
            QContextMenuEvent event(QContextMenuEvent::Mouse, point, panel.bar->mapToGlobal(point));
            QApplication::sendEvent(panel.bar, &event);
        };
        ask(); // the delegate has none yet
        panel.delegate.menu = &menu;
        ask();
        QVERIFY(menu.isVisible());
        menu.close();

        panel.delegate.toolTip = u"<img src=x> & more"_s;
        QHelpEvent help(QEvent::ToolTip, point, panel.bar->mapToGlobal(point));
        QApplication::sendEvent(panel.bar, &help);
        QVERIFY2(QToolTip::text().contains(u"&lt;img src=x&gt; &amp; more"_s), qPrintable(QToolTip::text()));
    }

    void initTestCase()
    {
        // The first bar of all: its name must not bring up the interface of any widget.
        const VXTabBarControl bar;
        QCOMPARE(QAccessible::queryAccessibleInterface(const_cast<VXTabBarControl *>(&bar))->role(),
                 QAccessible::PageTabList);
    }

    void longMenusAreSearched()
    {
        Panel panel(0, 300);
        for (int index = 0; index < 30; ++index)
            panel.bar->addTabItem(panel.makeItem(u"Tab %1"_s.arg(index)));
        show(panel);
        QMenu *menu = panel.bar->overflowPopUpButton()->menu();
        panel.bar->menuNeedsUpdate(menu);
        auto *field = menu->findChild<QLineEdit *>();
        QVERIFY(field);
        const auto shown = [menu] { return std::ranges::count_if(menu->actions(), &QAction::isVisible); };
        QCOMPARE(shown(), 1 + 15 + 1); // the field, titles, and how many more there are
        QVERIFY(menu->actions().last()->text().endsWith(u" more"_s));
        QTest::keyClicks(field, u"tab 29"_s);
        QCOMPARE(shown(), 2); // the field and what it found
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(panel.selectedTitle(), u"Tab 29"_s);
    }

    void wheelSelects()
    {
        Panel panel(3);
        show(panel);
        const auto turn = [&](int delta) {
            QWheelEvent event(QPointF(5, 5), panel.bar->mapToGlobal(QPointF(5, 5)), {}, {0, delta}, {}, {},
                              Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(panel.bar, &event);
            return panel.selectedTitle();
        };
        QCOMPARE(turn(-60), u"A"_s);
        QCOMPARE(turn(-60), u"B"_s);
        QCOMPARE(turn(-360), u"C"_s); // not around the end
        QCOMPARE(turn(240), u"A"_s);
    }

    void heldUpdatesNest()
    {
        Panel panel(2);
        show(panel);
        panel.bar->setDisableUpdates(true);
        panel.bar->setDisableUpdates(true);
        panel.bar->addTabItem(panel.makeItem(u"C"_s));
        panel.bar->setDisableUpdates(false);
        QVERIFY(panel.cell(u"C"_s)->frame().isEmpty());
        panel.bar->setDisableUpdates(false);
        QVERIFY(!panel.cell(u"C"_s)->frame().isEmpty());
        // Whoever sets all at once holds them no longer than that; a place behind the end is the last.
        panel.bar->setViewControllers({panel.items.at(2), panel.items.at(0), panel.makeItem(u"D"_s)});
        QVERIFY(!panel.cell(u"D"_s)->frame().isEmpty());
        panel.bar->moveTabItemToIndex(panel.items.at(2), 99);
        QCOMPARE(panel.picture(), u"[A] D C"_s);
    }

    void isReachableByAssistiveTechnology()
    {
        Panel panel(3);
        show(panel);
        QAccessibleInterface *bar = QAccessible::queryAccessibleInterface(panel.bar);
        QCOMPARE(bar->role(), QAccessible::PageTabList);
        QCOMPARE(nameOf(bar), u"Tabs"_s);
        QVERIFY(bar->childCount() >= 3);
        QAccessibleInterface *tab = bar->child(1);
        QCOMPARE(tab->role(), QAccessible::PageTab);
        QCOMPARE(nameOf(tab), u"B"_s);
        QCOMPARE(tab->parent(), bar);
        QCOMPARE(bar->indexOfChild(tab), 1);
        QCOMPARE(bar->childAt(tab->rect().center().x(), tab->rect().center().y()), tab);
        QVERIFY(!tab->state().selected && bar->child(0)->state().selected);
        QVERIFY(tab->state().selectable && tab->state().focusable && !tab->state().invisible
                && !tab->state().offscreen);
        panel.bar->setFocus();
        QCOMPARE(bar->focusChild(), bar->child(0));
        QVERIFY(bar->child(0)->state().focused && !tab->state().focused);
        QCOMPARE(tab->actionInterface()->actionNames(),
                 QStringList {QAccessibleActionInterface::pressAction()});
        QCOMPARE(tab->rect(),
                 QRect(panel.bar->mapToGlobal(panel.cell(u"B"_s)->frame().topLeft().toPoint()),
                       panel.cell(u"B"_s)->frame().size().toSize()));
        tab->actionInterface()->doAction(u"no such action"_s);
        QCOMPARE(panel.picture(), u"[A] B C"_s);
        QCOMPARE(bar->indexOfChild(bar->child(bar->childCount() - 1)),
                 bar->childCount() - 1); // a button of the bar
        tab->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(panel.picture(), u"A [B] C"_s);
        QVERIFY(tab->state().selected);

        QAccessibleInterface *close = tab->child(0);
        QCOMPARE(close->role(), QAccessible::Button);
        QCOMPARE(nameOf(close), u"Close B"_s);
        QCOMPARE(close->parent(), tab);
        QCOMPARE(tab->indexOfChild(close), 0);
        const QString whole = u"a title "_s.repeated(50);
        panel.items.at(1)->setTitle(whole);
        QCOMPARE(nameOf(tab), whole);
        panel.items.at(1)->setTitle(u"B"_s);
        QVERIFY(!tab->child(1) && tab->indexOfChild(bar) == -1 && close->childCount() == 0);
        QVERIFY(tab->rect().contains(close->rect()));
        close->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(panel.picture(), u"[A] C"_s);
        for (int index = 0; index < bar->childCount(); ++index)
            QVERIFY2(!nameOf(bar->child(index)).isEmpty(), qPrintable(QString::number(index)));
        panel.bar->setDisableTabClose(true);
        QCOMPARE(bar->child(0)->childCount(), 0);
        panel.bar->hideTabBarAnimate(true, false);
        QVERIFY(bar->child(0)->state().invisible);
        panel.bar->hideTabBarAnimate(false, false);
        QVERIFY(!bar->child(0)->state().invisible);
        panel.bar->hide();
        QVERIFY(bar->child(0)->state().invisible);
    }
};

RUNEBOOK_TEST_MAIN(TabBarUseTest)
#include "TabBarUseTest.moc"
