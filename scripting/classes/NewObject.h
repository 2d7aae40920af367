#pragma once

#include <QObject>

namespace runebook::bridge {

/// An object that an operation made for the script that called it: the script's own until it gets a parent.
struct NewObject {
    QObject *object = nullptr;
};

/// Lets such objects cross.
void registerNewObjects();

} // namespace runebook::bridge
