// The same for the libraries with widgets.
#pragma once
#include "cmake/Precompiled.h"

#include <QApplication>
#include <QWidget>
