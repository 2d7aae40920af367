#include "CompletionPopup.h"

#include "codeeditor/CodeColors.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollBar>

namespace runebook {

namespace {

constexpr int visibleRows = 10;
constexpr int narrowest = 160;
constexpr int widest = 480;

} // namespace

CompletionPopup::CompletionPopup(QWidget *editor) : QListWidget(editor)
{
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideMiddle);
    setAccessibleName(tr("Completions"));
    connect(this, &QListWidget::itemClicked, this, [this](const QListWidgetItem *item) {
        hide();
        Q_EMIT accepted(item->text());
    });
}

void CompletionPopup::popUp(const QStringList &words, int selected, const QRect &caret)
{
    if (words.isEmpty()) {
        hide();
        return;
    }
    takeLooksOf(*parentWidget());
    clear();
    addItems(words);
    choose(std::clamp(selected, 0, count() - 1));
    place(caret);
    show();
}

void CompletionPopup::takeLooksOf(const QWidget &editor)
{
    setFont(editor.font());
    QPalette colors = editor.palette();
    colors.setColor(QPalette::WindowText, tertiaryLabelColor(colors)); // the frame
    // A list without the focus draws its choice greyed out; this one works without ever having it.
    for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText})
        colors.setBrush(QPalette::Inactive, role, colors.brush(QPalette::Active, role));
    setPalette(colors);
}

void CompletionPopup::place(const QRect &caret)
{
    const int frame = 2 * frameWidth();
    const int bar = count() > visibleRows ? verticalScrollBar()->sizeHint().width() : 0;
    const int width = std::clamp(sizeHintForColumn(0) + frame + bar + 12, narrowest, widest);
    const int height = std::min(count(), visibleRows) * sizeHintForRow(0) + frame;
    QRect box(caret.bottomLeft() + QPoint(0, 2), QSize(width, height));
    if (const QScreen *screen = QGuiApplication::screenAt(caret.center())) {
        const QRect available = screen->availableGeometry();
        if (box.bottom() > available.bottom())
            box.moveBottom(caret.top() - 2);
        box.moveRight(std::min(box.right(), available.right()));
        box.moveLeft(std::max(box.left(), available.left()));
    }
    setGeometry(box);
}

void CompletionPopup::choose(int row)
{
    setCurrentRow(row);
    scrollToItem(currentItem());
}

bool CompletionPopup::handleKey(const QKeyEvent &event)
{
    if (!isVisible() || (event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return false;
    const int last = count() - 1;
    const int row = currentRow();
    switch (event.key()) {
    case Qt::Key_Up:
        choose(row > 0 ? row - 1 : last);
        return true;
    case Qt::Key_Down:
        choose(row < last ? row + 1 : 0);
        return true;
    case Qt::Key_PageUp:
        choose(std::max(0, row - visibleRows + 1));
        return true;
    case Qt::Key_PageDown:
        choose(std::min(last, row + visibleRows - 1));
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        const QString word = currentItem()->text();
        hide();
        Q_EMIT accepted(word);
        return true;
    }
    case Qt::Key_Escape:
        hide();
        return true;
    default:
        return false;
    }
}

} // namespace runebook
