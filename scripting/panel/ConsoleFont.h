#pragma once

#include <QFont>
#include <QObject>
#include <optional>

namespace runebook {

/// The font of the console and the prompt: the user's fixed-pitch font, as large as the setting
/// "MacroCodeFontSize" says.
class ConsoleFont : public QObject
{
    Q_OBJECT
public:
    explicit ConsoleFont(QObject *parent) : QObject(parent) { }

    /// Reads the size, and again whenever it changes.
    void followSetting();
    /// In points.
    int size() const { return m_size; }
    /// For the next font that is made.
    void setSize(int size) { m_size = size; }
    /// Made when it is first asked for.
    const QFont &font();

Q_SIGNALS:
    void changed();

private:
    int m_size = 0;
    std::optional<QFont> m_font;
};

} // namespace runebook
