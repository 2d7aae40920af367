#pragma once

#include <QWidget>

/// An area in the background colour of controls that show content, white in light mode.
class VXWhiteView : public QWidget
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit VXWhiteView(QWidget *parent = nullptr) : QWidget(parent)
    {
        setBackgroundRole(QPalette::Base);
        setAutoFillBackground(true);
    }
};
