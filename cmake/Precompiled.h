// The headers that nearly every source takes: compiled once for each library.
#pragma once
#include <QApplication>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariant>
#include <QWidget>
#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <vector>
