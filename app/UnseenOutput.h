#pragma once

#include <QObject>
#include <QString>

class VXMacroWindowController;

namespace runebook {

/// Tells in the front window what a script wrote while the macro panel was not there to show it: a script of
/// the menu that fails behind a closed panel would look like one that did its work. Says it once for all that
/// comes in a row, and an error before anything else.
class UnseenOutput : public QObject
{
    Q_OBJECT
public:
    /// \a panel must outlive this.
    UnseenOutput(VXMacroWindowController &panel, QObject *parent);

private:
    void noteOutput(const QString &text);
    void noteError(const QString &text);
    void tellLater();
    void tell();

    VXMacroWindowController &m_panel;
    QString m_printed; ///< the beginning of it, where what matters stands
    QString m_error; ///< the end of it, where errors are named
    bool m_isPending = false;
};

} // namespace runebook
