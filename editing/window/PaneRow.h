#pragma once

#include "editing/fields/FieldEditing.h"

#include <QObject>
#include <functional>

class QGridLayout;
class QLineEdit;
class QPushButton;
class QToolButton;
class VXValidatingTextField;

namespace runebook {

/// One field of the detail pane: a caption and an editor of the kind that the table of fields gives it, with
/// room below for a remark and for the button that shows all of a long value. Knows no document: whoever has
/// one takes what was typed, and says what is wrong with it.
class PaneRow : public QObject
{
    Q_OBJECT
public:
    /// Stands in \a grid, in the lines of the \a place of the row.
    PaneRow(GlyphField field, QGridLayout &grid, int place, QObject *parent);
    /// The lines of a grid that each row takes.
    static constexpr int kGridLines = 3;

    GlyphField field() const { return m_field; }
    QWidget *editor() const { return m_editor; }
    /// The editor if it says while somebody types what is wrong; else null.
    VXValidatingTextField *validatingField() const;

    /// What stands in the editor.
    QString text() const { return m_text(); }
    /// Whether that is something else than was shown or taken last.
    bool isChanged() const { return text() != m_loaded; }
    /// The same, or something is typed that is no part of the text yet.
    bool hasPendingText() const;
    /// Makes what is typed a part of the text; a remark when some of it was dropped.
    QString settle();
    /// What stands there has gone to the records.
    void setTaken() { m_loaded = text(); }

    /// Of a value that is too long for the editor the beginning is shown, and cannot be edited.
    void show(const CommonValue &value);
    /// Has a button beside a list that adds entries to all records and removes some; it is there for several.
    void offerEntries(bool areSeveral);
    bool isCut() const { return m_isCut; }

Q_SIGNALS:
    /// The text changed, by show() too.
    void textChanged();
    /// The row is done with: another place has the keyboard, or a word was chosen.
    void left();
    /// Return was pressed.
    void entered();
    /// Escape was pressed while there was something to take back.
    void takeBackRequested();
    void wholeRequested();
    /// The whole is to be edited as this text, with the cursor there.
    void wholePasted(const QString &text, qsizetype caret);
    /// Entries are to be added to the lists of all records, or removed.
    void entriesRequested();
    /// The record that has the name in the editor is to be shown.
    void recordRequested();
    /// The row is as high as its remark wants now.
    void remarkChanged();

protected:
    bool eventFilter(QObject *editor, QEvent *event) override;

private:
    QWidget *makeEditor(QWidget *form);
    QWidget *makeWords(QWidget *form);
    QWidget *makeTokens(QWidget *form);
    QWidget *makeParagraphs(QWidget *form);
    QLineEdit *setUpLine(QLineEdit *line);
    void addRemark(VXValidatingTextField &field);
    void setReadOnly(bool isReadOnly);
    void offerWhole(qsizetype length);

    GlyphField m_field;
    QGridLayout &m_grid;
    int m_firstLine;
    std::function<QString()> m_text;
    std::function<void(const CommonValue &)> m_show;
    QWidget *m_editor;
    QToolButton *m_entries = nullptr; ///< beside a list; made when it is needed
    QPushButton *m_whole = nullptr; ///< shows the rest; made when it is needed
    QString m_loaded; ///< what the editor held after show()
    bool m_isCut = false;
};

} // namespace runebook
