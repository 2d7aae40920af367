#pragma once

#include "codeeditor/TextRange.h"

#include <QPlainTextEdit>
#include <QPointer>
#include <optional>

class JSTTextViewDelegate;
class VXCodeTextStorage;
class VXLineNumberView;

namespace runebook {
class CompletionSession;
struct LineEdit;
} // namespace runebook

Q_MOC_INCLUDE("codeeditor/VXCodeTextStorage.h")
Q_MOC_INCLUDE("codeeditor/VXLineNumberView.h")

/// The view in which Python code is edited: indents new lines, comments and shifts lines, moves by the parts
/// of dotted names, matches braces, completes words and shows line numbers. Positions and ranges are UTF-16
/// units of string(). Main thread only.
class JSTTextView : public QPlainTextEdit
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
    Q_INVOKABLE runebook::TextRange selectedRange() const;
    /// Clamped to the text.
    Q_INVOKABLE void setSelectedRange(runebook::TextRange range);
    /// Replaces the selection as if \a text had been typed: undoable, and only if the delegate agrees.
    Q_INVOKABLE void insertText(const QString &text);
    /// True when the view can be edited and the delegate has nothing against the change.
    Q_INVOKABLE bool shouldChangeTextInRangeReplacementString(runebook::TextRange range,
                                                              const QString &replacement);
    Q_INVOKABLE VXCodeTextStorage *textStorage() const;

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
    enum class Indentation { AsTheText, Tab, Blanks };
    Q_ENUM(Indentation)
    void setIndentation(Indentation indentation) { m_indentation = indentation; }
    /// Whether brackets and quotes bring their other half along, which is typed over then.
    Q_INVOKABLE void setClosesBrackets(bool closes) { m_closesBrackets = closes; }

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
    void deleteWordForward();
    void deleteWordBackward();
    void commentSelection();
    void shiftSelectedLinesRight();
    void shiftSelectedLinesLeft();
    void duplicateSelectedLines();
    void moveSelectedLinesUp();
    void moveSelectedLinesDown();
    /// Of one line and the next where no more are selected.
    void joinSelectedLines();
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
    /// What the user is doing while the selection changes.
    enum class UserEvent { None, KeyDown, DoubleClickUp };

    void textViewDidChangeSelection();
    /// The brace in \a searched that belongs to the one at \a index; the text is read piece by piece.
    std::optional<runebook::TextRange> matchingBrace(int index, runebook::TextRange searched) const;
    runebook::TextRange wholeText() const;
    void followBraces();
    void markBraces();
    bool typePair(QChar typed);
    bool deletePair();
    void forgetClosers();
    void apply(const runebook::LineEdit &change);
    QString indentStep() const;
    bool insertIndent();
    bool deleteIndent();
    void selectBracePair();
    void flashOpeningBrace(int closingBrace);
    bool handleEditingKey(QKeyEvent *event);
    bool handleWordKey(QKeyEvent *event);
    void moveByWord(QTextCursor::MoveOperation operation, QTextCursor::MoveMode mode);
    void deleteRange(runebook::TextRange range);
    bool selectionSpansLines() const;
    void setUpCompletions();
    enum class Typing { Adds, Erases };
    void updateCompletions(const QString &typed, Typing typing);
    bool wantsNoCompletions(runebook::TextRange range, const QString &partial) const;
    enum class Completing { OnRequest, ByItself };
    void showCompletions(Completing completing);
    void acceptCompletion(const QString &word);
    void placeLineNumberView();
    void dropRestOfScrolling();
    JSTTextViewDelegate *delegateInterface() const;

    VXCodeTextStorage *m_storage;
    QPointer<QObject> m_delegate;
    VXLineNumberView *m_lineNumberView = nullptr; // owned as a child
    runebook::CompletionSession *m_completions; // owned as a child
    runebook::TextRange m_lastSelection;
    runebook::TextRange m_markedSelection; ///< the one that the marked braces belong to
    runebook::TextRange m_completedRange;
    QString m_partialWord; // what stood there
    UserEvent m_userEvent = UserEvent::None;
    bool m_doubleClicked = false;
    bool m_showsLineNumbers = false;
    qreal m_headIndent = 0;
    int m_wrapColumn = 0;
    Indentation m_indentation = Indentation::AsTheText;
    bool m_closesBrackets = false;
    QList<QTextCursor> m_closers; // those that came by themselves and were not reached yet, outermost first
};
