#pragma once

#include <QObject>

namespace runebook {

/// Ends the program once its last window has gone, as long as it lives. Windows without WA_QuitOnClose, such
/// as the macro panel, keep nothing open. Not Qt's own rule: that one knows only windows that are closed, not
/// those that go with their document, and it would end the program between the closing of one document and
/// the opening of the next.
class LastWindow : public QObject
{
    Q_OBJECT
public:
    explicit LastWindow(QObject *parent = nullptr);

private:
    void look();
};

} // namespace runebook
