#include "app/LastWindow.h"
#include "platform/DocumentController.h"
#include "tests/app/AppMain.h"

#include <QTimer>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

DocumentController &controller()
{
    return DocumentController::shared();
}

QWidget *front()
{
    return controller().documentList().front()->windowController();
}

} // namespace

/// When the program ends by itself.
class LastWindowTest : public QObject
{
    Q_OBJECT
public:
    explicit LastWindowTest(VXAppDelegate &delegate) : m_delegate(delegate) { }

private Q_SLOTS:
    void cleanup()
    {
        controller().releaseAll();
        for (QWidget *window : QApplication::topLevelWidgets())
            window->hide();
    }
    void endsWithItsLastWindow_data()
    {
        QTest::addColumn<int>("documents");
        QTest::addColumn<bool>("showsPreferences");
        QTest::addColumn<bool>("opensAnother");
        QTest::addColumn<bool>("ends");
        QTest::newRow("one window of two closed") << 2 << false << false << false;
        QTest::newRow("the only window closed") << 1 << false << false << true;
        QTest::newRow("only the preferences are left") << 1 << true << false << true;
        QTest::newRow("another document opened in its place") << 1 << false << true << false;
    }
    void endsWithItsLastWindow()
    {
        QFETCH(int, documents);
        QFETCH(bool, showsPreferences);
        QFETCH(bool, opensAnother);
        QFETCH(bool, ends);
        constexpr int kEnded = 0;
        constexpr int kStillThere = 1;
        constexpr int kWaitMs = 500;
        const LastWindow lastWindow;
        for (int i = 0; i < documents; ++i)
            controller().openUntitledDocumentAndDisplay(true);
        if (showsPreferences)
            m_delegate.showMainPreferences();
        QTimer::singleShot(0, this, [opensAnother] {
            front()->close();
            if (opensAnother)
                controller().openUntitledDocumentAndDisplay(true);
        });
        QTimer stillThere;
        stillThere.callOnTimeout([] { QCoreApplication::exit(kStillThere); });
        stillThere.start(ends ? 20 * kWaitMs : kWaitMs);
        QCOMPARE(QApplication::exec(), ends ? kEnded : kStillThere);
    }

private:
    VXAppDelegate &m_delegate;
};

RUNEBOOK_APP_TEST_MAIN(LastWindowTest)
#include "LastWindowTest.moc"
