#pragma once

#include <QObject>
#include <QRect>
#include <QString>
#include <QTextBlock>
#include <QTextCursor>
#include <functional>

class QPainter;
class QPlainTextEdit;

namespace runebook {

class ConsoleLines;

/// Lines of a console that are too long to be shown at once: their beginning stands there, with what shows or
/// copies all of it.
class FoldedLines : public QObject
{
    Q_OBJECT
public:
    /// Where a block stands in the viewport.
    using PlaceOf = std::function<QRectF(const QTextBlock &block)>;
    /// For \a view, which owns this.
    FoldedLines(QPlainTextEdit *view, const ConsoleLines &lines, PlaceOf placeOf);

    /// Draws what stands at the end of folded lines, from the block \a first down.
    void paint(QPainter &painter, const QTextBlock &first) const;
    /// The line under \a position; not valid where none is folded.
    QTextBlock lineAt(const QPoint &position) const;
    /// Whether a click there shows or copies a line.
    bool isOnCommand(const QPoint &position) const;
    bool click(const QPoint &position);
    void showWhole(const QTextBlock &head);
    void copyWhole(const QTextBlock &head) const;

private:
    /// What stands at the end of a folded line, in the viewport.
    struct Fold {
        QString text;
        QRect label, show, copy;
    };

    Fold foldOf(const QTextBlock &head) const;
    void measureShownLine(QTextCursor from);

    QPlainTextEdit *m_view;
    const ConsoleLines &m_lines;
    PlaceOf m_placeOf;
};

} // namespace runebook
