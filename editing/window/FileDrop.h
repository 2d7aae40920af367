#pragma once

#include <QObject>

class QWidget;

namespace runebook {

/// Opens the files that are dropped onto a window, whose child it becomes.
class FileDrop : public QObject
{
    Q_OBJECT
public:
    explicit FileDrop(QWidget &window);
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace runebook
