// The headers that nearly every source takes: compiled once, with the library that all others stand on.
#pragma once
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariant>
#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <vector>
