#include "scripting/panel/ConsoleView.h"

#include "codeeditor/CodeColors.h"
#include "platform/Appearance.h"
#include "platform/PlainLabel.h"
#include "scripting/panel/ConsoleFormats.h"
#include "scripting/panel/PanelSettings.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QMimeData>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextBlock>
#include <algorithm>
#include <malloc.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kFrameMs = 16;
constexpr qint64 kBudgetMs = 8;
constexpr qint64 kNoBudget = std::numeric_limits<qint64>::max();
/// Units of a line that are laid out together.
constexpr int kLongestBlock = 4096;
/// Units after which memory is given back.
constexpr qsizetype kMuchOutput = 8'000'000;
constexpr int kInsetWidth = 15;
constexpr int kInsetHeight = 7;

bool endsBlock(QChar character)
{
    return character == u'\n' || character == u'\r' || character == QChar::ParagraphSeparator;
}

} // namespace

ConsoleView::ConsoleView(QWidget *parent)
    : QPlainTextEdit(parent),
      m_storage(new ConsoleTextStorage(*this)),
      m_droppedNote(plainLabel({}, this)),
      m_classScan(document())
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setLineWrapMode(WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setAccessibleName(tr("Console"));
    // The document's own margin is the same on all sides.
    document()->setDocumentMargin(kInsetHeight);
    setViewportMargins(kInsetWidth - kInsetHeight, 0, kInsetWidth - kInsetHeight, 0);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    viewport()->setMouseTracking(true);
    m_droppedNote->setForegroundRole(QPalette::PlaceholderText);
    m_droppedNote->setIndent(kInsetWidth);
    m_droppedNote->hide();

    m_classScan.setKeepPositionOnInsert(true);
    m_frame.setSingleShot(true);
    m_frame.setInterval(kFrameMs);
    connect(&m_frame, &QTimer::timeout, this, &ConsoleView::showPending);
    Settings::kConsoleLineLimit.registerFallback();
    Settings::kConsoleLineLimit.onChange(this, [this] { readLineLimit(); });
    readLineLimit();
}

ConsoleView::~ConsoleView() = default;

// Writing

void ConsoleView::append(const QString &text, Kind kind)
{
    const QString shown = m_escapes.filtered(text);
    noteDropped(m_pending.append(kind == Kind::Error ? cleanupErrorMessage(shown) : shown, m_limits));
    m_unitsWritten += text.size();
    showSoon();
}

void ConsoleView::continueWrite(const QString &text)
{
    noteDropped(m_pending.continueWrite(m_escapes.filtered(text), m_limits));
    m_unitsWritten += text.size();
    showSoon();
}

void ConsoleView::showSoon()
{
    if (hasPending() && !m_frame.isActive())
        m_frame.start();
}

void ConsoleView::showPending()
{
    showPendingFor(kBudgetMs);
}

void ConsoleView::showPendingFor(qint64 milliseconds)
{
    if (!hasPending())
        return;
    QScrollBar *bar = verticalScrollBar();
    const bool wasAtEnd = bar->value() >= bar->maximum();
    const QTextBlock firstShown = firstVisibleBlock();
    const int lineInBlock = bar->value() - firstShown.firstLineNumber();
    const int firstNumber = firstShown.blockNumber();
    QTextCursor kept = textCursor();
    const int selectionEnd = kept.selectionEnd();
    const bool endsAtEnd = kept.hasSelection() && selectionEnd == document()->characterCount() - 1;
    const int selectionStart = kept.selectionStart();

    QElapsedTimer clock;
    clock.start();
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.movePosition(QTextCursor::End);
    do {
        insert(cursor, m_pending.take());
    } while (hasPending() && clock.elapsed() < milliseconds);
    if (endsAtEnd) {
        // What is added behind a selection does not belong to it.
        kept.setPosition(selectionStart);
        kept.setPosition(selectionEnd, QTextCursor::KeepAnchor);
    }
    const int dropped = dropOldest();
    cursor.endEditBlock();
    if (endsAtEnd)
        setTextCursor(kept);
    if (wasAtEnd) {
        bar->setValue(bar->maximum());
    } else {
        const QTextBlock block = document()->findBlockByNumber(std::max(0, firstNumber - dropped));
        bar->setValue(block.firstLineNumber() + (firstNumber >= dropped ? lineInBlock : 0));
    }
    if (hasPending())
        m_frame.start();
    else
        giveBackMemory();
}

/// Much output leaves room in the heap between what is kept, which nobody needs now.
void ConsoleView::giveBackMemory()
{
    if (m_unitsWritten < kMuchOutput)
        return;
    m_unitsWritten = 0;
    ::malloc_trim(0);
}

void ConsoleView::insert(QTextCursor &cursor, const ConsoleText &text)
{
    struct Mark {
        UnitRange range;
        const FileLink *link;
    };
    QList<Mark> marks;
    if (m_emphasisFont) {
        for (const UnitRange &range : text.emphasised)
            marks << Mark {range, nullptr};
    }
    for (const FileLink &link : text.links)
        marks << Mark {link.range, &link};
    std::ranges::sort(marks, {}, [](const Mark &mark) { return mark.range.location; });

    const QStringView all(text.text);
    qsizetype place = 0;
    for (const Mark &mark : std::as_const(marks)) {
        if (mark.range.location < place)
            continue; // the name of an error in the text of a link
        insertRun(cursor, all.sliced(place, mark.range.location - place), {});
        insertRun(cursor, all.sliced(mark.range.location, mark.range.length),
                  mark.link ? linkFormat(*mark.link) : emphasisFormat());
        place = mark.range.location + mark.range.length;
    }
    insertRun(cursor, all.sliced(place), {});
    markErrorClasses(text.text);
}

/// Marks the class at the end of a traceback, which may be anybody's, by its place: the first line that is
/// not indented. Interpreters write such a line in pieces, so only the document has all of it.
void ConsoleView::markErrorClasses(QStringView newText)
{
    constexpr auto kTraceback = "Traceback (most recent call last):"_L1;
    if (!m_isInTraceback && !newText.contains(kTraceback)) {
        m_classScan.movePosition(QTextCursor::End);
        return;
    }
    static const QRegularExpression className(u"^(?:\\w+\\.)*([^\\W\\d]\\w*)(?=:|$)"_s,
                                              QRegularExpression::UseUnicodePropertiesOption);
    QTextBlock block = m_classScan.block();
    for (; block.next().isValid(); block = block.next()) {
        const QString line = block.text();
        if (line.contains(kTraceback)) {
            m_isInTraceback = true;
        } else if (m_isInTraceback && !line.startsWith("  "_L1)) {
            m_isInTraceback = false;
            const QRegularExpressionMatch found = className.match(line);
            if (!found.hasMatch() || !m_emphasisFont)
                continue;
            QTextCursor name(block);
            name.setPosition(block.position() + static_cast<int>(found.capturedStart(1)));
            name.setPosition(block.position() + static_cast<int>(found.capturedEnd(1)),
                             QTextCursor::KeepAnchor);
            name.setCharFormat(emphasisFormat());
        }
    }
    m_classScan.setPosition(block.position());
}

/// Inserts as much at once as the document ends its blocks by itself.
void ConsoleView::insertRun(QTextCursor &cursor, QStringView text, const QTextCharFormat &format)
{
    qsizetype begin = 0;
    qsizetype column = cursor.positionInBlock();
    const auto flush = [&](qsizetype end) {
        const QTextBlock block = cursor.block();
        if (end > begin)
            cursor.insertText(text.sliced(begin, end - begin).toString(), format);
        if (!block.isVisible())
            hideBlock(block); // its layout counts its lines again
        begin = end;
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        const bool isPair = character == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
        if (character == u'\r' && !isPair) {
            flush(i);
            begin = i + 1;
            m_isReturned = true;
            continue;
        }
        if (std::exchange(m_isReturned, false) && !isPair && character != u'\n') {
            beginLineAnew(cursor);
            column = 0;
        }
        if (character == u'\n') {
            ++m_lines;
            column = 0;
        } else if (endsBlock(character)) {
            flush(i);
            endBlock(cursor, isPair ? BlockEnd::ReturnLineFeed : BlockEnd::ParagraphSeparator);
            i += isPair ? 1 : 0;
            begin = i + 1;
            column = 0;
        } else if (++column > kLongestBlock && !character.isLowSurrogate()) {
            flush(i);
            endBlock(cursor, BlockEnd::Cut);
            column = 1;
        }
    }
    flush(text.size());
}

void ConsoleView::endBlock(QTextCursor &cursor, BlockEnd end)
{
    m_hasOddEnds = true;
    if (end != BlockEnd::Cut)
        ++m_lines;
    cursor.insertBlock({}, {});
    QTextBlock before = cursor.block().previous();
    before.setUserState(static_cast<int>(end));
    cursor.block().setUserState(static_cast<int>(BlockEnd::LineFeed));
    // A long line is folded at its first cut; whoever has it shown sees what comes, too.
    if (end == BlockEnd::Cut && (lineStart(before) == before || !before.isVisible()))
        hideBlock(cursor.block());
    else
        cursor.block().setVisible(true);
}

void ConsoleView::beginLineAnew(QTextCursor &cursor)
{
    QTextBlock line = lineStart(cursor.block());
    cursor.setPosition(line.position(), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    line = cursor.block();
    line.setUserState(static_cast<int>(BlockEnd::LineFeed));
    line.setVisible(true);
}

/// Removes what is too much from the top; answers how many blocks that were.
int ConsoleView::dropOldest()
{
    qsizetype units = document()->characterCount();
    QTextBlock block = document()->begin();
    int blocks = 0;
    const qsizetype linesBefore = m_lines;
    while (block.next().isValid() && (m_lines > m_limits.lines || units > m_limits.units)) {
        if (block.userState() != static_cast<int>(BlockEnd::Cut))
            --m_lines;
        units -= block.length();
        block = block.next();
        ++blocks;
    }
    if (blocks > 0) {
        QTextCursor top(document());
        const int state = block.userState();
        top.setPosition(block.position(), QTextCursor::KeepAnchor);
        top.removeSelectedText();
        document()->begin().setUserState(state);
        document()->begin().setVisible(true);
        noteDropped(linesBefore - m_lines);
    }
    return blocks;
}

void ConsoleView::noteDropped(qsizetype lines)
{
    if (lines == 0)
        return;
    m_dropped += lines;
    m_droppedNote->setText(tr("The first %1 lines were dropped.").arg(locale().toString(m_dropped)));
    if (m_droppedNote->isHidden()) {
        m_droppedNote->show();
        setViewportMargins(kInsetWidth - kInsetHeight, m_droppedNote->sizeHint().height(),
                           kInsetWidth - kInsetHeight, 0);
    }
    placeDroppedNote();
}

void ConsoleView::placeDroppedNote()
{
    m_droppedNote->setGeometry(frameWidth(), frameWidth(), viewport()->width() + 2 * kInsetWidth,
                               m_droppedNote->sizeHint().height());
}

void ConsoleView::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    placeDroppedNote();
}

void ConsoleView::clearText()
{
    m_pending.clear();
    clear();
    m_lines = 0;
    m_dropped = 0;
    m_isReturned = m_isInTraceback = m_hasOddEnds = false;
    m_escapes = {};
    m_classScan.movePosition(QTextCursor::Start);
    if (!m_droppedNote->isHidden()) {
        m_droppedNote->hide();
        setViewportMargins(kInsetWidth - kInsetHeight, 0, kInsetWidth - kInsetHeight, 0);
    }
}

void ConsoleView::setString(const QString &text)
{
    clearText();
    append(text, Kind::Output);
}

void ConsoleView::setLineLimit(int lines)
{
    m_limits.lines = std::max(1, lines);
    showPendingFor(kNoBudget);
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    dropOldest();
    cursor.endEditBlock();
}

void ConsoleView::readLineLimit()
{
    setLineLimit(Settings::kConsoleLineLimit.value());
}

// Reading

QString ConsoleView::string()
{
    showPendingFor(kNoBudget);
    return textBetween(0, document()->characterCount() - 1);
}

int ConsoleView::length()
{
    showPendingFor(kNoBudget);
    return indexOfPosition(document()->characterCount() - 1);
}

/// The text between two positions of the document as it was written.
QString ConsoleView::textBetween(int from, int to) const
{
    QString text;
    text.reserve(to - from);
    for (QTextBlock block = document()->findBlock(from); block.isValid() && block.position() <= to;
         block = block.next()) {
        const QString line = block.text();
        const int begin = std::max(0, from - block.position());
        const int end = std::min<int>(static_cast<int>(line.size()), to - block.position());
        text += QStringView(line).sliced(begin, std::max(0, end - begin));
        if (to <= block.position() + line.size())
            break;
        switch (static_cast<BlockEnd>(block.userState())) {
        case BlockEnd::Cut:
            break;
        case BlockEnd::ReturnLineFeed:
            text += "\r\n"_L1;
            break;
        case BlockEnd::ParagraphSeparator:
            text += QChar(QChar::ParagraphSeparator);
            break;
        case BlockEnd::LineFeed:
            text += u'\n';
        }
    }
    return text;
}

/// How much longer the end of a block is in the text than the one unit it has in the document.
static int extraLength(const QTextBlock &block)
{
    constexpr int kCut = 0, kReturnLineFeed = 1;
    return block.userState() == kCut ? -1 : block.userState() == kReturnLineFeed ? 1 : 0;
}

int ConsoleView::indexOfPosition(int position) const
{
    int index = position;
    if (m_hasOddEnds) {
        for (QTextBlock block = document()->begin();
             block.isValid() && block.position() + block.length() <= position; block = block.next())
            index += extraLength(block);
    }
    return index;
}

int ConsoleView::positionOfIndex(int index) const
{
    int position = index;
    if (m_hasOddEnds) {
        for (QTextBlock block = document()->begin();
             block.isValid() && block.position() + block.length() <= position; block = block.next())
            position -= extraLength(block);
    }
    return std::clamp(position, 0, document()->characterCount() - 1);
}

TextRange ConsoleView::selectedRange()
{
    const QTextCursor cursor = textCursor();
    const int start = indexOfPosition(cursor.selectionStart());
    return {start, indexOfPosition(cursor.selectionEnd()) - start};
}

void ConsoleView::setSelectedRange(TextRange range)
{
    const TextRange inside = range.clampedTo(length());
    QTextCursor cursor = textCursor();
    cursor.setPosition(positionOfIndex(inside.location));
    cursor.setPosition(positionOfIndex(inside.end()), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

QVariantMap ConsoleView::attributesAtIndex(int index, TextRange *effectiveRange)
{
    if (index < 0 || index >= length())
        return {};
    const int position = positionOfIndex(index);
    const QTextBlock block = document()->findBlock(position);
    QTextCharFormat format;
    TextRange range {index, 1};
    for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
        const QTextFragment fragment = piece.fragment();
        if (!fragment.contains(position))
            continue;
        format = fragment.charFormat();
        range = {indexOfPosition(fragment.position()), fragment.length()};
    }
    if (effectiveRange)
        *effectiveRange = range;
    return console::attributesOf(format, *this);
}

QVariantMap ConsoleTextStorage::attributesAtIndexEffectiveRange(int index, TextRange *effectiveRange)
{
    return m_view.attributesAtIndex(index, effectiveRange);
}

QMimeData *ConsoleView::createMimeDataFromSelection() const
{
    const QTextCursor cursor = textCursor();
    auto *mime = new QMimeData;
    mime->setText(textBetween(cursor.selectionStart(), cursor.selectionEnd()));
    return mime;
}

// Looks

QTextCharFormat ConsoleView::emphasisFormat() const
{
    return console::emphasisFormat(*m_emphasisFont, palette());
}

QTextCharFormat ConsoleView::linkFormat(const FileLink &link) const
{
    return console::linkFormat(link, palette());
}

void ConsoleView::setEmphasisFont(const std::optional<QFont> &font)
{
    if (font == m_emphasisFont)
        return;
    m_emphasisFont = font;
    restyle();
}

void ConsoleView::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        restyle();
}

/// Gives what is marked already the colours and the font of today.
void ConsoleView::restyle()
{
    struct Styled {
        int position;
        int length;
        QTextCharFormat format;
    };
    QList<Styled> styled;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
            const QTextFragment fragment = piece.fragment();
            const QTextCharFormat format = fragment.charFormat();
            if (const auto link = console::linkOf(format))
                styled << Styled {fragment.position(), fragment.length(), linkFormat(*link)};
            else if (console::isEmphasis(format) && m_emphasisFont)
                styled << Styled {fragment.position(), fragment.length(), emphasisFormat()};
        }
    }
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    for (const Styled &piece : std::as_const(styled)) {
        cursor.setPosition(piece.position);
        cursor.setPosition(piece.position + piece.length, QTextCursor::KeepAnchor);
        cursor.setCharFormat(piece.format);
    }
    cursor.endEditBlock();
}

} // namespace runebook
