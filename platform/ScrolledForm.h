#pragma once

#include <QScrollArea>

namespace runebook {

/// A form that scrolls up and down where there is not enough room for it, without a frame; it is never
/// narrower than its controls.
class ScrolledForm : public QScrollArea
{
    Q_OBJECT
public:
    /// \a form is filled already, and becomes its own.
    ScrolledForm(QWidget *form, QWidget *parent);
};

} // namespace runebook
