#pragma once

#include <QList>
#include <QStringList>
#include <QVariantMap>
#include <optional>

class PSMTabBarCell;
class QWidget;

/// The settings of a tab bar, which are its properties, as a record under given keys. Views and delegate
/// stand in it by their object names.
namespace runebook::TabArchive {

/// In the order in which they are written.
QStringList keys();

/// What is written besides properties and never read.
struct Moment {
    bool isOverflowButtonHidden;
    bool isAwake;
    QVariantMap lastPress;
};
QVariantMap archived(const QWidget &bar, const QList<PSMTabBarCell *> &cells, const Moment &moment);

/// Sets the properties of \a bar; missing keys change nothing. Views and delegate are looked up in the bar's
/// window. Leaves out whether the bar is hidden, which isHidden() answers: nothing where it does not say.
void restore(QWidget &bar, const QVariantMap &archive);
std::optional<bool> isHidden(const QVariantMap &archive);

} // namespace runebook::TabArchive
