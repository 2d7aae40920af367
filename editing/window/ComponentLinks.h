#pragma once

#include "editing/window/WindowParts.h"
#include "model/VXGlyphInfo.h"

#include <QObject>

class QLineEdit;

namespace runebook {

/// The names of other records in decompositions, accents and alternate names lead to these: by a click with
/// Ctrl in the table or the pane, and by a command.
class ComponentLinks : public QObject
{
    Q_OBJECT
public:
    ComponentLinks(const WindowParts &parts, QObject *parent);

    /// Goes to the one that the caret stands in, else to the only one of the selected record, else offers
    /// all.
    void goToComponent();

Q_SIGNALS:
    void showRequested(const InfoPtr &info);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    InfoPtr recordInTable(const QPoint &place) const;
    InfoPtr recordAt(const QString &text, qsizetype place) const;
    QLineEdit *lineWithCaret() const;
    void offer(const VXGlyphInfo &info);

    WindowParts m_parts;
    bool m_hasPressed = false; ///< so that the release is nobody else's
};

} // namespace runebook
