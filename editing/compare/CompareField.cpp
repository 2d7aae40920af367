#include "editing/compare/CompareField.h"

#include "editing/fields/SignalColors.h"
#include "platform/ShownText.h"

#include <QTextBlock>
#include <algorithm>
#include <cmath>

namespace runebook {

namespace {

/// What is shown before the first mark of a text that is cut.
constexpr qsizetype kLeadIn = 200;
constexpr int kMaxLines = 6;

} // namespace

CompareField::CompareField(QWidget *parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    document()->setDocumentMargin(2);
    setMinimumWidth(120);
}

void CompareField::setValue(const QString &text, const std::vector<TextPart> &marks)
{
    const qsizetype firstMark = marks.empty() ? 0 : marks.front().begin;
    const bool isCut = text.size() > kMostInField;
    const qsizetype begin =
        isCut ? std::clamp<qsizetype>(firstMark - kLeadIn, 0, text.size() - kMostInField) : 0;
    const qsizetype end = isCut ? begin + kMostInField : text.size();
    const QString lead = begin > 0 ? QStringLiteral("…") : QString();
    const QString shown = isCut
        ? lead + text.mid(begin, end - begin) + (end < text.size() ? QStringLiteral("…") : QString())
        : text;

    m_marks.clear();
    for (const TextPart &mark : marks) {
        const qsizetype from = std::max(mark.begin, begin);
        const qsizetype to = std::min(mark.begin + mark.length, end);
        if (from < to)
            m_marks.push_back({from - begin + lead.size(), to - from});
    }
    if (shown != m_shown) {
        m_shown = shown;
        setPlainText(shown);
        textHasNewLines();
    }
    paintMarks();
}

void CompareField::paintMarks()
{
    QList<QTextEdit::ExtraSelection> selections;
    for (const TextPart &mark : m_marks) {
        QTextEdit::ExtraSelection selection;
        selection.cursor = QTextCursor(document());
        // Line breaks of two characters are one here.
        const qsizetype last = document()->characterCount() - 1;
        selection.cursor.setPosition(static_cast<int>(std::min(mark.begin, last)));
        selection.cursor.setPosition(static_cast<int>(std::min(mark.begin + mark.length, last)),
                                     QTextCursor::KeepAnchor);
        selection.format.setBackground(SignalColors::removed(palette()));
        // Not by colour alone.
        selection.format.setFontUnderline(true);
        selections << selection;
    }
    setExtraSelections(selections);
}

int CompareField::wantedHeight() const
{
    const int lines = std::clamp(lineCount(), 1, kMaxLines);
    const double margins = 2 * document()->documentMargin() + 2 * frameWidth();
    return static_cast<int>(std::ceil(lines * QFontMetricsF(font()).lineSpacing() + margins));
}

int CompareField::lineCount() const
{
    return static_cast<int>(std::ceil(document()->size().height()));
}

/// A scroll bar only where there is something to scroll: a height rounded down shall not bring one.
void CompareField::textHasNewLines()
{
    setVerticalScrollBarPolicy(lineCount() > kMaxLines ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    Q_EMIT wantedHeightChanged();
}

void CompareField::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    if (event->oldSize().width() != event->size().width())
        textHasNewLines();
}

void CompareField::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        paintMarks();
    else if (event->type() == QEvent::FontChange)
        textHasNewLines();
}

} // namespace runebook
