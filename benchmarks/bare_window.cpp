// The least that a Qt program needs to show a table: what the program's own start is measured against.
#include <QAbstractTableModel>
#include <QApplication>
#include <QMainWindow>
#include <QTableView>
#include <QTimer>

namespace {

class EmptyModel : public QAbstractTableModel
{
public:
    int rowCount(const QModelIndex &) const override { return 0; }
    int columnCount(const QModelIndex &) const override { return 8; }
    QVariant data(const QModelIndex &, int) const override { return {}; }
};

/// Ends the program when its window was painted.
class Window : public QMainWindow
{
protected:
    void paintEvent(QPaintEvent *event) override
    {
        QMainWindow::paintEvent(event);
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    }
};

} // namespace

int main(int argc, char *argv[])
{
    const QApplication app(argc, argv);
    EmptyModel model;
    Window window;
    auto *view = new QTableView(&window);
    view->setModel(&model);
    window.setCentralWidget(view);
    window.resize(1240, 760);
    window.show();
    return QApplication::exec();
}
