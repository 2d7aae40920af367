#pragma once

#include "tests/TestMain.h"

#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QWidget>

/// The main function of a test that looks at what the screen shows: on a display of its own. Where there is
/// no Xvfb it stays offscreen, where windows keep what was painted too.
#define RUNEBOOK_SCREEN_TEST_MAIN(TestClass)                                                                 \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        static const QTemporaryDir home; /* static: see TestMain.h */                                        \
        runebook::useTestHome(home.path());                                                                  \
        runebook::TestDisplay display;                                                                       \
        QApplication app(argc, argv);                                                                        \
        QApplication::setCursorFlashTime(0);                                                                 \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }

namespace runebook {

/// An X server that lives as long as this, made the display of the program.
class TestDisplay
{
public:
    TestDisplay()
    {
        const QString server = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        if (server.isEmpty())
            return;
        m_server.setProcessChannelMode(QProcess::SeparateChannels);
        m_server.setStandardErrorFile(QProcess::nullDevice());
        m_server.start(server,
                       {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                        QStringLiteral("0"), QStringLiteral("1600x1000x24")});
        if (!m_server.waitForReadyRead())
            return;
        qputenv("DISPLAY", ":" + m_server.readLine().trimmed());
        qputenv("QT_QPA_PLATFORM", "xcb");
    }
    ~TestDisplay()
    {
        m_server.kill();
        m_server.waitForFinished();
    }

private:
    QProcess m_server;
};

/// Lets everything that is to be painted be painted.
inline void letPaint()
{
    for (int turn = 0; turn < 8; ++turn) {
        QCoreApplication::processEvents();
        QTest::qSleep(2); // a window may keep what it has to show for some milliseconds
    }
}

/// What the screen shows in the place of \a widget, which lies inside its window.
inline QImage screenOf(const QWidget &widget)
{
    const QWidget *window = widget.window();
    const QPixmap shown = widget.screen()->grabWindow(window->winId());
    const QRect place(widget.mapTo(window, QPoint()), widget.size());
    const qreal ratio = widget.devicePixelRatio();
    return shown.toImage()
        .copy(QRect(place.topLeft() * ratio, place.size() * ratio))
        .convertToFormat(QImage::Format_RGB32);
}

/// The smallest rectangle around what differs; empty when nothing does.
inline QRect differenceOf(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return QRect(QPoint(), a.size().expandedTo(b.size()));
    QRect around;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y))
                around |= QRect(x, y, 1, 1);
        }
    }
    return around;
}

} // namespace runebook
