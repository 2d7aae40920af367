#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <vector>

namespace runebook {

/// What has the focus in a window, and the text that it edits: what can be done to that, and doing it. Menus,
/// which take the focus for a moment, do not count.
class FocusedText : public QObject
{
    Q_OBJECT
public:
    explicit FocusedText(QWidget &window);

    /// What has the focus; null before anything had it.
    QWidget *widget() const { return m_widget; }
    /// The text that it edits; null when it edits none.
    QWidget *text() const;
    bool canUndo() const;
    bool canRedo() const;
    bool canCopy() const;
    bool canCut() const;
    bool canDelete() const;
    bool canPaste() const;
    bool canSelect() const;
    /// Has the text, or a list that has the focus, do an operation by its name, such as "paste".
    void perform(const char *operation) const;

Q_SIGNALS:
    /// What can be done may be something else now.
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void focusHasChanged(QWidget *now);

    QWidget &m_window;
    QPointer<QWidget> m_widget;
    std::vector<QMetaObject::Connection> m_connections;
};

} // namespace runebook
