#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QRect>
#include <QString>

namespace runebook {

/// A text field that has an error badge at its right end, as what draws the badge sees it.
class BadgedField
{
public:
    virtual QString errorHint() const = 0;
    /// Whether the user is in the field; the badge is not shown then.
    virtual bool isEditing() const = 0;
    virtual QAbstractButton *extraButton() const = 0;
    virtual bool isExtraButtonVisible() const = 0;
    /// The fill of the badge.
    virtual QColor backgroundColor() const = 0;
    /// The inside of the field, without its border.
    virtual QRect interior() const = 0;
    /// Points that the whole text of the field takes, with room for the caret.
    virtual int textWidth() const = 0;

protected:
    ~BadgedField() = default;
};

} // namespace runebook

Q_DECLARE_INTERFACE(runebook::BadgedField, "runebook.BadgedField")
