#include "scripting/panel/ErrorMarks.h"

#include "scripting/panel/ConsoleFormats.h"

#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTextBlock>

using namespace Qt::StringLiterals;

namespace runebook {

ErrorMarks::ErrorMarks(QPlainTextEdit *view) : m_view(view), m_scanned(view->document())
{
    m_scanned.setKeepPositionOnInsert(true);
}

bool ErrorMarks::setFont(const std::optional<QFont> &font)
{
    if (font == m_font)
        return false;
    m_font = font;
    return true;
}

QTextCharFormat ErrorMarks::errorFormat() const
{
    return console::emphasisFormat(*m_font, m_view->palette());
}

QTextCharFormat ErrorMarks::linkFormat(const FileLink &link) const
{
    return console::linkFormat(link, m_view->palette());
}

void ErrorMarks::forget()
{
    m_isInTraceback = false;
    m_scanned.movePosition(QTextCursor::Start);
}

/// The class at the end of a traceback is found by its place: the first line that is not indented.
/// Interpreters write such a line in pieces, so only the document has all of it.
void ErrorMarks::follow(QStringView newText)
{
    constexpr auto kTraceback = "Traceback (most recent call last):"_L1;
    if (!m_isInTraceback && !newText.contains(kTraceback)) {
        m_scanned.movePosition(QTextCursor::End);
        return;
    }
    static const QRegularExpression className(u"^(?:\\w+\\.)*([^\\W\\d]\\w*)(?=:|$)"_s,
                                              QRegularExpression::UseUnicodePropertiesOption);
    QTextBlock block = m_scanned.block();
    for (; block.next().isValid(); block = block.next()) {
        const QString line = block.text();
        if (line.contains(kTraceback)) {
            m_isInTraceback = true;
        } else if (m_isInTraceback && !line.startsWith("  "_L1)) {
            m_isInTraceback = false;
            const QRegularExpressionMatch found = className.match(line);
            if (!found.hasMatch() || !m_font)
                continue;
            QTextCursor name(block);
            name.setPosition(block.position() + static_cast<int>(found.capturedStart(1)));
            name.setPosition(block.position() + static_cast<int>(found.capturedEnd(1)),
                             QTextCursor::KeepAnchor);
            name.setCharFormat(errorFormat());
        }
    }
    m_scanned.setPosition(block.position());
}

void ErrorMarks::restyle()
{
    QTextDocument *document = m_view->document();
    struct Styled {
        int position;
        int length;
        QTextCharFormat format;
    };
    QList<Styled> styled;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
            const QTextFragment fragment = piece.fragment();
            const QTextCharFormat format = fragment.charFormat();
            if (const auto link = console::linkOf(format))
                styled << Styled {fragment.position(), fragment.length(), linkFormat(*link)};
            else if (console::isEmphasis(format) && m_font)
                styled << Styled {fragment.position(), fragment.length(), errorFormat()};
        }
    }
    QTextCursor cursor(document);
    cursor.beginEditBlock();
    for (const Styled &piece : std::as_const(styled)) {
        cursor.setPosition(piece.position);
        cursor.setPosition(piece.position + piece.length, QTextCursor::KeepAnchor);
        cursor.setCharFormat(piece.format);
    }
    cursor.endEditBlock();
}

} // namespace runebook
