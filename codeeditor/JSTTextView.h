#pragma once

#include "codeeditor/ClosingPairs.h"
#include "codeeditor/EditableCode.h"
#include "codeeditor/LineCommands.h"
#include "codeeditor/TextRange.h"
#include "codeeditor/WordCommands.h"

#include <QPlainTextEdit>
#include <QPointer>

class JSTTextViewDelegate;
class VXCodeTextStorage;
class VXLineNumberView;

namespace runebook {
class BraceMarks;
class CodeCompleter;
} // namespace runebook

Q_MOC_INCLUDE("codeeditor/VXCodeTextStorage.h")
Q_MOC_INCLUDE("codeeditor/VXLineNumberView.h")

/// The view in which Python code is edited: indents new lines, comments and shifts lines, moves by the parts
/// of dotted names, matches braces, completes words and shows line numbers. Each of these is a part of its
/// own that asks of the view what EditableCode says. Positions and ranges are UTF-16 units of string(). Main
/// thread only.
class JSTTextView : public QPlainTextEdit, private runebook::EditableCode
{
    Q_OBJECT
    Q_PROPERTY(qreal headIndent READ headIndent WRITE setHeadIndent NOTIFY headIndentChanged)
public:
    explicit JSTTextView(QWidget *parent = nullptr);
    ~JSTTextView() override;

public: // the text
    Q_INVOKABLE QString string() const;
    /// Replaces everything, as no undoable step.
    Q_INVOKABLE void setString(const QString &text);
    Q_INVOKABLE runebook::TextRange selectedRange() const override;
    /// Clamped to the text.
    Q_INVOKABLE void setSelectedRange(runebook::TextRange range) override;
    /// Replaces the selection as if \a text had been typed: undoable, and only if the delegate agrees.
    Q_INVOKABLE void insertText(const QString &text) { EditableCode::insertText(text); }
    /// True when the view can be edited and the delegate has nothing against the change.
    Q_INVOKABLE bool shouldChangeTextInRangeReplacementString(runebook::TextRange range,
                                                              const QString &replacement) override;
    Q_INVOKABLE VXCodeTextStorage *textStorage() const override;

public: // delegate and line numbers
    /// Told of changes, asked for completions (JSTTextViewDelegate). Not owned; may go.
    Q_INVOKABLE QObject *delegate() const { return m_delegate; }
    Q_INVOKABLE void setDelegate(QObject *delegate);
    /// None before setupLineNumberview().
    Q_INVOKABLE VXLineNumberView *lineNumberView() const { return m_lineNumberView; }
    Q_INVOKABLE void setupLineNumberview();
    Q_INVOKABLE void disableLineNumbers();

public: // looks
    /// By how much wrapped lines hang, in pixels.
    qreal headIndent() const { return m_headIndent; }
    Q_INVOKABLE void setHeadIndent(qreal headIndent);
    /// Flashes the characters of \a range, when they can be seen.
    Q_INVOKABLE void showFindIndicatorForRange(runebook::TextRange range);

    /// A fine line behind so many characters; 0: none.
    Q_INVOKABLE void setWrapColumn(int column);
    int wrapColumn() const { return m_wrapColumn; }

public: // typing
    /// What the Tab key writes, and Backspace takes away at once.
    using Indentation = runebook::LineCommands::Indentation;
    void setIndentation(Indentation indentation) { m_lines.setIndentation(indentation); }
    /// Whether brackets and quotes bring their other half along, which is typed over then.
    Q_INVOKABLE void setClosesBrackets(bool closes) { m_pairs.setEnabled(closes); }

public: // completion
    /// The name before the caret, with the dotted names in front of it; empty at the caret when there is
    /// none.
    Q_INVOKABLE runebook::TextRange rangeForUserCompletion() const;
    Q_INVOKABLE QStringList completionsForPartialWordRange(runebook::TextRange range, int *selectedIndex);

public:
    /// Always gives the keyboard away, without the base view's leave-taking.
    Q_INVOKABLE bool resignFirstResponder() { return true; }

public Q_SLOTS: // editing actions
    void copy();
    void insertNewline();
    Q_INVOKABLE void deleteWordForward() { m_words.deleteForward(); }
    Q_INVOKABLE void deleteWordBackward() { m_words.deleteBackward(); }
    void commentSelection() { m_lines.comment(); }
    void shiftSelectedLinesRight() { m_lines.shiftRight(); }
    void shiftSelectedLinesLeft() { m_lines.shiftLeft(); }
    void duplicateSelectedLines() { m_lines.duplicate(); }
    void moveSelectedLinesUp() { m_lines.moveUp(); }
    void moveSelectedLinesDown() { m_lines.moveDown(); }
    /// Of one line and the next where no more are selected.
    void joinSelectedLines() { m_lines.join(); }
    /// Offers completions for the name before the caret.
    void complete();

Q_SIGNALS:
    void headIndentChanged(qreal headIndent);
    void findIndicatorShown(runebook::TextRange range);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    QTextCursor caret() const override { return textCursor(); }
    void setCaret(const QTextCursor &caret) override { setTextCursor(caret); }
    void showCaret() override { ensureCursorVisible(); }
    bool mayBeEdited() const override { return !isReadOnly(); }
    bool isTyping() const override { return m_isTyping; }
    bool isInStringOrComment(int index) const override;

    void textViewDidChangeSelection();
    void selectBracePair();
    void flashOpeningBrace(int closingBrace);
    bool handleEditingKey(QKeyEvent *event);
    void placeLineNumberView();
    void dropRestOfScrolling();
    JSTTextViewDelegate *delegateInterface() const;

    VXCodeTextStorage *m_storage;
    QPointer<QObject> m_delegate;
    VXLineNumberView *m_lineNumberView = nullptr; // owned as a child
    runebook::CodeCompleter *m_completer; // owned as a child
    runebook::BraceMarks *m_braces; // owned as a child
    runebook::LineCommands m_lines;
    runebook::WordCommands m_words;
    runebook::ClosingPairs m_pairs;
    runebook::TextRange m_lastSelection;
    bool m_isTyping = false;
    bool m_doubleClicked = false;
    bool m_showsLineNumbers = false;
    qreal m_headIndent = 0;
    int m_wrapColumn = 0;
};
