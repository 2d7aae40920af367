#pragma once

#include "codeeditor/TextRange.h"
#include "platform/WheelSteps.h"
#include "scripting/panel/ConsoleBuffer.h"
#include "scripting/panel/ConsoleLines.h"
#include "scripting/panel/ConsoleLinks.h"
#include "scripting/panel/ErrorMarks.h"
#include "scripting/panel/EscapeFilter.h"

#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>
#include <QVariantMap>
#include <optional>

class QLabel;

namespace runebook {

class ConsoleTextStorage;
class FoldedLines;

/// What scripts print: read-only, wrapped, references to lines of files as links. Output appears within a
/// frame of being written, however often it is written, and never takes the view away from someone who has
/// scrolled back. A carriage return begins the line anew, as in a terminal; its colours are left out. Of a
/// line of many thousand characters the beginning is shown until somebody asks for all of it. Indexes and
/// ranges are UTF-16 units of string(). Main thread only.
class ConsoleView : public QPlainTextEdit
{
    Q_OBJECT
public:
    enum class Kind { Output, Error };

    explicit ConsoleView(QWidget *parent = nullptr);
    ~ConsoleView() override;

public: // the text
    /// Adds one write; marks and links are found in it by itself. Error text loses its first ", in <module>".
    void append(const QString &text, Kind kind);
    /// More of a write of many megabytes: its marks count as those of one.
    void continueWrite(const QString &text);
    /// The whole text, what is not displayed yet included, long lines unbroken.
    Q_INVOKABLE QString string();
    Q_INVOKABLE int length();
    /// Replaces everything.
    Q_INVOKABLE void setString(const QString &text);
    Q_INVOKABLE void clearText();
    /// Inserts what was written since, for some 8 ms; the rest at the next call or in the next frame.
    void showPending();
    /// True while something was written that is not in the view.
    bool hasPending() const { return !m_pending.isEmpty(); }
    Q_INVOKABLE runebook::TextRange selectedRange();
    Q_INVOKABLE void setSelectedRange(runebook::TextRange range);
    /// The text and its attributes, for scripts.
    Q_INVOKABLE runebook::ConsoleTextStorage *textStorage() { return m_storage; }
    /// "NSFont", "NSColor" and, on a link, "NSLink" ([path, line]) and "NSToolTip" of the character at \a
    /// index; \a effectiveRange gets the piece around it, inside its line, that shares them. Empty outside of
    /// the text.
    QVariantMap attributesAtIndex(int index, TextRange *effectiveRange);

public: // looks
    QFont consoleFont() const { return font(); }
    void setConsoleFont(const QFont &font) { setFont(font); }
    /// The font of error names; none leaves them unmarked.
    void setEmphasisFont(const std::optional<QFont> &font);
    /// How many lines are kept, at least one.
    void setLineLimit(int lines);

public: // links
    /// Moves to the next link, or the one before, and selects it; false when there is none.
    bool selectLink(bool forward);
    /// Follows the link at the caret; false when there is none.
    bool activateLink();

Q_SIGNALS:
    /// The wheel was turned with Ctrl: larger for positive \a steps.
    void zoomRequested(int steps);
    /// \a line as it was printed, perhaps empty; \a path "<string>" is the code of the panel.
    void linkActivated(const QString &path, const QString &line);

protected:
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    QMimeData *createMimeDataFromSelection() const override;

private:
    void showSoon();
    void showPendingFor(qint64 milliseconds);
    void insert(QTextCursor &cursor, const ConsoleText &text);
    void insertRun(QTextCursor &cursor, QStringView text, const QTextCharFormat &format);
    int dropOldest();
    void noteDropped(qsizetype lines);
    void placeDroppedNote();
    void giveBackMemory();
    void readLineLimit();
    void follow(const FileLink &link) { Q_EMIT linkActivated(link.path, link.line); }

    ConsoleTextStorage *m_storage; // owned as a child
    QLabel *m_droppedNote; // owned as a child
    EscapeFilter m_escapes;
    ConsoleBuffer m_pending;
    ConsoleLimits m_limits;
    QTimer m_frame;
    ConsoleLines m_textLines;
    ConsoleLinks m_links;
    ErrorMarks m_marks;
    FoldedLines *m_folds; // owned as a child
    qsizetype m_lines = 0; ///< line ends in the document
    qsizetype m_unitsWritten = 0; ///< since memory was given back
    qsizetype m_dropped = 0; ///< lines, since the console was emptied
    bool m_isReturned = false; ///< the next text begins the last line anew
    WheelSteps m_wheel;
};

/// The text of a console for scripts.
class ConsoleTextStorage : public QObject
{
    Q_OBJECT
public:
    explicit ConsoleTextStorage(ConsoleView &view) : QObject(&view), m_view(view) { }
    Q_INVOKABLE QString string() { return m_view.string(); }
    Q_INVOKABLE int length() { return m_view.length(); }
    /// See ConsoleView::attributesAtIndex.
    Q_INVOKABLE QVariantMap attributesAtIndexEffectiveRange(int index, runebook::TextRange *effectiveRange);

private:
    ConsoleView &m_view;
};

} // namespace runebook
