#pragma once

#include <QFont>
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QRectF>

/// One tab of a bar: what it shows of its item, where it stands and what the pointer does with it. The bar
/// makes and owns one cell for each item and keeps both in the same order.
class PSMTabBarCell : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY contentChanged)
    Q_PROPERTY(QObject *representedObject READ representedObject CONSTANT)
    Q_PROPERTY(bool isInOverflowMenu READ isInOverflowMenu)
    Q_PROPERTY(bool isCloseButtonSuppressed READ isCloseButtonSuppressed)
public:
    /// What changes the look of a tab from moment to moment.
    enum StateFlag {
        Selected = 1,
        Hovered = 2,
        Pressed = 4,
        CloseHovered = 8,
        ClosePressed = 16,
        Held = 32, ///< Follows the pointer: layout gives it a place but does not move it there.
        TornOff = 64, ///< Shown in a window of its own: the bar leaves a gap.
    };
    Q_DECLARE_FLAGS(State, StateFlag)

    /// Observes the properties "title" and "icon" of \a item, which the cell does not own. A title is
    /// followed when its property has a notify signal.
    PSMTabBarCell(QObject *item, QObject *parent);

public: // content
    QObject *representedObject() const { return m_item; }
    QString title() const { return m_title; }
    QIcon icon() const { return m_icon; }
    /// The title on one line, without control characters and cut where nobody could read on.
    QString displayTitle() const { return m_displayTitle; }
    /// Points the display title takes in \a font; measured once for each title and font.
    qreal titleWidth(const QFont &font) const;
    /// Stands for the close button where an object is needed: the accessibility tree.
    QObject *closeButton();

public: // state
    State state() const { return m_state; }
    bool is(StateFlag flag) const { return m_state.testFlag(flag); }
    /// Answers whether that made a difference.
    bool setState(StateFlag flag, bool on);
    bool isInOverflowMenu() const { return m_isInOverflowMenu; }
    void setIsInOverflowMenu(bool overflow) { m_isInOverflowMenu = overflow; }
    bool isCloseButtonSuppressed() const { return m_isCloseButtonSuppressed; }
    void setIsCloseButtonSuppressed(bool suppressed) { m_isCloseButtonSuppressed = suppressed; }

public: // place, in the bar's coordinates
    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF &frame) { m_frame = frame; }
    /// Where layout wants the cell; it may still be on its way.
    QRectF targetFrame() const { return m_targetFrame; }
    /// Sets the target and remembers the present frame as the start of the way there.
    void setTargetFrame(const QRectF &target);
    /// Puts the cell at \a progress (0 to 1) of its way. A held cell stays with the pointer.
    void advance(qreal progress);

Q_SIGNALS:
    void contentChanged();

private Q_SLOTS:
    void readItem();

private:
    QPointer<QObject> m_item;
    QString m_title;
    QString m_displayTitle;
    QIcon m_icon;
    QRectF m_frame;
    QRectF m_startFrame;
    QRectF m_targetFrame;
    State m_state;
    bool m_isInOverflowMenu = false;
    bool m_isCloseButtonSuppressed = false;
    QObject *m_closeButton = nullptr;
    mutable QFont m_measuredFont;
    mutable qreal m_titleWidth = -1;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(PSMTabBarCell::State)

/// The close button of a cell, as an object to be found by assistive technology. A child of its cell.
class PSMTabCloseButton : public QObject
{
    Q_OBJECT
public:
    explicit PSMTabCloseButton(PSMTabBarCell *cell) : QObject(cell) { }
    PSMTabBarCell *cell() const { return static_cast<PSMTabBarCell *>(parent()); }
};
