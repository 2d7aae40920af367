#pragma once

#include <QToolButton>

class QMenu;

namespace runebook {

/// A button with a menu of code snippets.
class SnippetsPopup : public QToolButton
{
    Q_OBJECT
public:
    explicit SnippetsPopup(QWidget *parent = nullptr);

    /// The menu with an entry for each snippet; it stands for its code.
    Q_INVOKABLE QMenu *menu() const { return QToolButton::menu(); }
    Q_INVOKABLE int numberOfItems() const;
    Q_INVOKABLE QStringList itemTitles() const;
    /// The entry at \a index, from 0; null beyond the ends.
    Q_INVOKABLE QObject *itemAtIndex(int index) const;
    /// Empties the menu.
    Q_INVOKABLE void removeAllItems();
    /// Appends an entry; what is chosen is told by chosen().
    QAction *addSnippet(const QString &title, const QString &code);

Q_SIGNALS:
    void chosen(QObject *item);
};

} // namespace runebook
