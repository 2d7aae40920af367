#pragma once

#include <QObject>
#include <QPointer>

class QLineEdit;

namespace runebook {

class TabStrip;

/// The field in which the title of a tab is typed, in the place of the tab.
class TabTitleEditor : public QObject
{
    Q_OBJECT
public:
    /// For \a bar, whose widget owns this.
    explicit TabTitleEditor(TabStrip &bar);

    /// Selects the tab of \a item and lets the user type: Return and leaving the field end in edited, Escape
    /// in nothing.
    void edit(QObject *item);
    /// The tabs have other places.
    void followTab();

Q_SIGNALS:
    /// \a title is not empty.
    void edited(QObject *item, const QString &title);

private:
    enum class Ending { Takes, Leaves };
    void end(QLineEdit *field, Ending ending);

    TabStrip &m_bar;
    QPointer<QLineEdit> m_field; ///< while a title is being typed
    QPointer<QObject> m_item;
};

} // namespace runebook
