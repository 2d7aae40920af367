#pragma once

#include <QObject>

class QPalette;

namespace runebook {

/// Light or dark: as the desktop has it, or as the user chose under View. Kept in the defaults.
class Appearance : public QObject
{
    Q_OBJECT
public:
    enum Choice { System, Light, Dark };
    Q_ENUM(Choice)

    static Appearance &shared();
    Choice choice() const;
    void setChoice(Choice choice);
    /// Gives the application the palette of the choice. To be called once at the start.
    void apply();

Q_SIGNALS:
    void changed();

private:
    Appearance();
};

/// Whether a palette is a dark one: light text on it.
bool isDarkMode(const QPalette &palette);

} // namespace runebook
