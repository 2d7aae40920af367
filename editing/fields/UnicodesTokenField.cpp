#include "editing/fields/UnicodesTokenField.h"

#include "editing/fields/CodePointTokens.h"
#include "editing/fields/ErrorBubble.h"
#include "editing/fields/SignalColors.h"
#include "editing/fields/VXUnicodeFormatter.h"
#include "model/FieldValue.h"
#include "model/StringHelpers.h"

#include <QHelpEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <algorithm>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// A token reaches so far beyond its digits; the gap between two tokens is what the blank leaves.
constexpr int kTokenPadding = 4;
constexpr int kTokenGap = 4;
constexpr qreal kTokenRadius = 2;

bool completesToken(const QString &text)
{
    return text == ","_L1 || text == ";"_L1 || text == " "_L1;
}

/// A key with Ctrl is a command, with Ctrl and Alt it is the third level of a keyboard.
bool isTyping(const QKeyEvent &event)
{
    return !(event.modifiers() & Qt::ControlModifier) || event.modifiers() & Qt::AltModifier;
}

} // namespace

UnicodesTokenField::UnicodesTokenField(QWidget *parent)
    : QLineEdit(parent), m_formatter(new VXUnicodeFormatter(this))
{
    setMaxLength(std::numeric_limits<int>::max());
    setTextMargins(kTokenPadding, 0, kTokenPadding, 0);
    setAccessibleName(tr("Code points"));
    setAccessibleDescription(tr("Hexadecimal code points, with blanks between them"));
    connect(this, &QLineEdit::textChanged, this, &UnicodesTokenField::spaceTokens);
    connect(this, &QLineEdit::textEdited, this, [this] { m_isTouched = true; });
}

void UnicodesTokenField::setTokens(const QStringList &tokens)
{
    m_isMixed = false;
    m_tokens = tokens;
    setPlaceholderText({});
    revert();
}

void UnicodesTokenField::setMultipleValues()
{
    m_isMixed = true;
    m_tokens.clear();
    setPlaceholderText(tr("Multiple values"));
    revert();
}

QStringList UnicodesTokenField::tokens() const
{
    return codePointsOfText(text()).kept;
}

QString UnicodesTokenField::stringValue() const
{
    return tokens().join(kListSeparator);
}

void UnicodesTokenField::setObjectValue(const QStringList &tokens)
{
    showTokens(normalizedCodePointTokens(tokens));
    m_isTouched = true;
}

void UnicodesTokenField::setStringValue(const QString &text)
{
    setObjectValue(codePointTokensInText(text));
}

void UnicodesTokenField::revert()
{
    m_isTouched = false;
    showTokens(m_tokens);
}

void UnicodesTokenField::showTokens(const QStringList &tokens)
{
    setText(tokens.join(u' '));
}

/// Unlike setText() something that the user can undo.
void UnicodesTokenField::replaceText(const QString &replacement)
{
    if (replacement == text())
        return;
    selectAll();
    insert(replacement);
}

QString UnicodesTokenField::settle()
{
    if (!m_isTouched)
        return {};
    const CodePointText typed = codePointsOfText(text());
    if (typed.kept != text().split(u' ', Qt::SkipEmptyParts))
        replaceText(typed.kept.join(u' '));
    return typed.remark();
}

void UnicodesTokenField::commitEditing()
{
    if (!m_isTouched)
        return;
    const CodePointText text = codePointsOfText(QLineEdit::text());
    m_isTouched = false;
    const QStringList typed = text.kept;
    ErrorBubble::remark(this, text.remark());
    // Nothing typed over several values is no wish to empty them all.
    if (typed == m_tokens || (m_isMixed && typed.isEmpty())) {
        showTokens(m_tokens);
        return;
    }
    m_tokens = typed;
    m_isMixed = false;
    showTokens(m_tokens);
    Q_EMIT tokensCommitted(m_tokens);
}

/// Makes the blanks between tokens as wide as what the tokens need; those of a placeholder are none.
void UnicodesTokenField::spaceTokens()
{
    const int gap = 2 * kTokenPadding + kTokenGap - fontMetrics().horizontalAdvance(u' ');
    const int spacing = text().isEmpty() ? 0 : gap;
    if (font().wordSpacing() == spacing)
        return;
    QFont spaced; // nothing but the gaps is the field's own
    spaced.setWordSpacing(spacing);
    setFont(spaced);
}

// Typing

/// Brings what stands there into its final form and puts the cursor behind the token it was in.
void UnicodesTokenField::completeTokens()
{
    const QString typed = text();
    CodePointText before = codePointsOfText(typed.left(cursorPosition()));
    const CodePointText behind = codePointsOfText(typed.mid(cursorPosition()));
    QString all = before.kept.join(u' ');
    if (!before.kept.isEmpty())
        all += u' ';
    const auto cursor = static_cast<int>(all.size());
    // A blank on both sides: what is typed next is a token of its own.
    if (!behind.kept.isEmpty())
        all += u' ' + behind.kept.join(u' ');
    replaceText(all);
    setCursorPosition(cursor);
    m_isTouched = true;
    ErrorBubble::remark(this, CodePointText {{}, before.leftOut + behind.leftOut}.remark());
}

/// Whether what a key types was dealt with here: refused with a word because it makes the token it goes to
/// something else than a code point, or begun as a token of its own in front of a whole one.
bool UnicodesTokenField::takesTyped(const QString &typed)
{
    if (isReadOnly() || typed.isEmpty() || !typed.front().isPrint() || completesToken(typed))
        return false;
    constexpr qsizetype kWhole = 4;
    const auto isEdge = [](QChar character) { return character.isSpace() || character == u','; };
    const QString all = text();
    const int start = hasSelectedText() ? selectionStart() : cursorPosition();
    const int end = hasSelectedText() ? selectionEnd() : start;
    int headStart = start;
    while (headStart > 0 && !isEdge(all.at(headStart - 1)))
        --headStart;
    int tailEnd = end;
    while (tailEnd < all.size() && !isEdge(all.at(tailEnd)))
        ++tailEnd;
    const QString head = all.mid(headStart, start - headStart);
    const QString tail = all.mid(end, tailEnd - end);
    const bool isOwn = head.isEmpty() && tail.size() >= kWhole;
    const QString token = head + typed + (isOwn ? QString() : tail);
    QString reason;
    if (!m_formatter
             ->isPartialStringValidProposedSelectedRangeOriginalStringOriginalSelectedRangeErrorDescription(
                 token, nullptr, all, {}, &reason)) {
        m_formatter->controlDidFailToValidatePartialStringErrorDescription(this, token, reason);
        return true;
    }
    if (isOwn) {
        insert(typed + u' ');
        cursorBackward(false);
    }
    return isOwn;
}

void UnicodesTokenField::inputMethodEvent(QInputMethodEvent *event)
{
    // Composed letters come this way.
    if (takesTyped(event->commitString())) {
        QInputMethodEvent nothing;
        QLineEdit::inputMethodEvent(&nothing);
        return;
    }
    QLineEdit::inputMethodEvent(event);
}

bool UnicodesTokenField::removeTokenBeforeCursor()
{
    const QString all = text();
    int start = cursorPosition();
    if (hasSelectedText() || isReadOnly() || start == 0 || !all.at(start - 1).isSpace())
        return false;
    const int end = start;
    while (start > 0 && all.at(start - 1).isSpace())
        --start;
    while (start > 0 && !all.at(start - 1).isSpace())
        --start;
    setSelection(start, end - start);
    del();
    return true;
}

void UnicodesTokenField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_isTouched) {
        revert();
    } else if (!isReadOnly() && completesToken(event->text())) {
        if (hasSelectedText())
            del();
        completeTokens();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (m_isTouched)
            commitEditing();
        else
            QLineEdit::keyPressEvent(event);
    } else if (event->key() == Qt::Key_Backspace && event->modifiers() == Qt::NoModifier
               && removeTokenBeforeCursor()) {
        m_isTouched = true;
    } else if (isTyping(*event) && takesTyped(event->text())) {
        event->accept();
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

void UnicodesTokenField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        commitEditing();
}

// Looks

std::vector<UnicodesTokenField::Token> UnicodesTokenField::visibleTokens() const
{
    std::vector<Token> tokens;
    const QString all = text();
    for (int at = 0; at < all.size(); ++at) {
        if (all.at(at).isSpace())
            continue;
        const int start = at;
        while (at < all.size() && !all.at(at).isSpace())
            ++at;
        tokens.push_back({start, at - start});
    }
    return tokens;
}

/// Where a position of the text stands, the field scrolled as it is. Digits and blanks have no kerning.
int UnicodesTokenField::xOfPosition(int position) const
{
    const QString all = text();
    const QFontMetrics metrics = fontMetrics();
    const QRect cursor = inputMethodQuery(Qt::ImCursorRectangle).toRect(); // with room on both sides
    const int cursorX =
        cursor.x() + cursor.width() / 2 - metrics.horizontalAdvance(all.left(cursorPosition()));
    return cursorX + metrics.horizontalAdvance(all.left(position));
}

void UnicodesTokenField::paintToken(QPainter &painter, const Token &token) const
{
    const int left = xOfPosition(token.start);
    const int right = xOfPosition(token.start + token.length);
    const int height = fontMetrics().height() + 2;
    const QRectF box(left - kTokenPadding + 0.5, (QLineEdit::height() - height) / 2 + 0.5,
                     right - left + 2 * kTokenPadding, height - 1);
    QColor line = palette().color(QPalette::Text);
    QColor fill = palette().color(QPalette::Highlight);
    line.setAlpha(90);
    fill.setAlpha(isEnabled() ? 50 : 25);
    // The digits are there already and keep their contrast under either mode.
    painter.setCompositionMode(SignalColors::isDark(palette()) ? QPainter::CompositionMode_Lighten
                                                               : QPainter::CompositionMode_Multiply);
    painter.setPen(line);
    // What is still being typed is an outline.
    const bool isOpen = hasFocus() && m_isTouched && cursorPosition() >= token.start
        && cursorPosition() <= token.start + token.length;
    painter.setBrush(isOpen ? QBrush() : QBrush(fill));
    painter.drawRoundedRect(box, kTokenRadius, kTokenRadius);
}

void UnicodesTokenField::paintEvent(QPaintEvent *event)
{
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(contentsRect().adjusted(2, 1, -2, -1));
    for (const Token &token : visibleTokens())
        paintToken(painter, token);
}

QString UnicodesTokenField::tipAt(const QPoint &position) const
{
    const int at = const_cast<UnicodesTokenField *>(this)->cursorPositionAt(position);
    for (const Token &token : visibleTokens()) {
        if (at < token.start || at > token.start + token.length)
            continue;
        const QString digits = text().mid(token.start, token.length);
        // Anything else could be markup; of a single character nothing can come.
        if (!std::all_of(digits.begin(), digits.end(), isHexDigit))
            return {};
        const quint32 codePoint = hexStringToInt(digits);
        const QString tip = "U+"_L1 + digits;
        const bool isShown = codePoint <= 0x10FFFF && QChar::isPrint(codePoint);
        return isShown ? tip + u"\u2003"_s + stringWithChar(codePoint) : tip;
    }
    return {};
}

bool UnicodesTokenField::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        if (const QString tip = tipAt(help->pos()); !tip.isEmpty()) {
            QToolTip::showText(help->globalPos(), tip, this);
            return true;
        }
    }
    return QLineEdit::event(event);
}

} // namespace runebook
