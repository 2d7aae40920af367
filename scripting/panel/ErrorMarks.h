#pragma once

#include <QFont>
#include <QTextCharFormat>
#include <QTextCursor>
#include <optional>

class QPlainTextEdit;

namespace runebook {

struct ConsoleText;
struct FileLink;

/// How errors and links stand out in a console: in which formats, and which class names at the end of
/// tracebacks, which may be anybody's.
class ErrorMarks
{
public:
    /// \a view must live as long.
    explicit ErrorMarks(QPlainTextEdit *view);

    /// The font of error names; none leaves them unmarked. True when it is another one.
    bool setFont(const std::optional<QFont> &font);
    bool marksErrors() const { return m_font.has_value(); }
    QTextCharFormat errorFormat() const;
    QTextCharFormat linkFormat(const FileLink &link) const;
    /// Gives what is marked already the colours and the font of today.
    void restyle();

    /// \a newText was written at the end.
    void follow(QStringView newText);
    /// The console was emptied.
    void forget();

private:
    QPlainTextEdit *m_view;
    std::optional<QFont> m_font;
    QTextCursor m_scanned; ///< up to where classes have been looked for
    bool m_isInTraceback = false;
};

} // namespace runebook
