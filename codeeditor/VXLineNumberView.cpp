#include "codeeditor/VXLineNumberView.h"

#include "codeeditor/CodeColors.h"
#include "codeeditor/KeywordTable.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

constexpr qreal kMinimumThickness = 22;
constexpr qreal kThicknessTolerance = 1;

/// So many digits are made room for in a text of \a lineCount lines.
int reservedDigits(qsizetype lineCount)
{
    const int digits = lineCount > 0 ? int(std::floor(std::log10(double(lineCount)))) + 1 : 0;
    if (digits < 3)
        return 2;
    return std::min(digits, 7);
}

template <typename Value> QVariant toVariant(const std::optional<Value> &value)
{
    return value ? QVariant::fromValue(*value) : QVariant();
}

template <typename Value> std::optional<Value> fromVariant(const QVariant &variant)
{
    if (variant.metaType() == QMetaType::fromType<Value>())
        return variant.value<Value>();
    return std::nullopt;
}

} // namespace

VXLineNumberView::VXLineNumberView(QAbstractScrollArea *scrollView) : QWidget(scrollView)
{
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(tr("Line numbers"));
    setClientView(scrollView);
}

VXLineNumberView::~VXLineNumberView() = default;

QPlainTextEdit *VXLineNumberView::clientView() const
{
    return m_clientView;
}

void VXLineNumberView::setClientView(QWidget *clientView)
{
    auto *text = qobject_cast<QPlainTextEdit *>(clientView);
    if (m_clientView == text)
        return;
    disconnect(m_textConnection);
    if (m_clientView)
        m_clientView->disconnect(this);
    m_clientView = text;
    if (text) {
        m_textConnection = connect(text->document(), &QTextDocument::contentsChange, this,
                                   &VXLineNumberView::textStorageDidProcessEditing);
        connect(text, &QPlainTextEdit::updateRequest, this, &VXLineNumberView::followView);
        invalidateLineIndicesFromCharacterIndex(0);
    }
    update();
}

void VXLineNumberView::textStorageDidProcessEditing(int from, int removed, int added)
{
    Q_UNUSED(removed)
    const qsizetype before = m_lines.starts().size();
    m_lines.noteEdit(from, added, m_clientView->document()->characterCount() - 1);
    // What is drawn follows the view, which says what it draws anew. Of a line appended at the end it draws
    // that row alone, so the count is looked at here.
    if (isVisible() && lineIndices().size() != before)
        update();
}

/// The view scrolled by \a dy, or draws \a area anew: where rows moved that is all of it. A part alone is the
/// text of some rows, or the caret, which leaves the numbers where they are.
void VXLineNumberView::followView(const QRect &area, int dy)
{
    if (dy != 0 || area.contains(m_clientView->viewport()->rect()))
        update();
}

void VXLineNumberView::invalidateLineIndicesFromCharacterIndex(int index)
{
    m_lines.invalidateFrom(index);
}

QList<int> VXLineNumberView::lineIndices()
{
    if (m_lines.isStale())
        calculateLines();
    return m_lines.starts();
}

void VXLineNumberView::calculateLines()
{
    if (!m_clientView)
        return;
    m_lines.recount(*m_clientView->document());
    applyRequiredThickness();
}

int VXLineNumberView::lineNumberForCharacterIndexInText(int index, const QString &text)
{
    Q_UNUSED(text)
    return LineTable::lineContaining(lineIndices(), index);
}

QRect VXLineNumberView::firstRowOfLine(int start) const
{
    QTextCursor cursor(m_clientView->document());
    cursor.setPosition(start);
    const QRect row = m_clientView->cursorRect(cursor);
    const QPoint top = mapFromGlobal(m_clientView->viewport()->mapToGlobal(row.topLeft()));
    return QRect(QPoint(0, top.y()), QSize(width(), row.height()));
}

std::optional<int> VXLineNumberView::lineNumberForLocation(qreal location)
{
    if (!m_clientView)
        return std::nullopt;
    const QList<int> starts = lineIndices();
    if (starts.isEmpty())
        return std::nullopt;
    const int line = lineAt(QPoint(0, qRound(location)));
    const QRect row = firstRowOfLine(starts[line]);
    if (location < row.top() || location >= row.top() + row.height())
        return std::nullopt;
    return line + 1;
}

qreal VXLineNumberView::requiredThickness()
{
    const QString widest(reservedDigits(lineIndices().size()), u'8');
    const qreal width = QFontMetricsF(font()).horizontalAdvance(widest);
    return std::ceil(std::max(m_leftMargin + width + m_rightMargin, kMinimumThickness));
}

void VXLineNumberView::setRuleThickness(qreal thickness)
{
    if (thickness == m_ruleThickness)
        return;
    m_ruleThickness = thickness;
    updateGeometry();
    Q_EMIT ruleThicknessChanged(thickness);
}

void VXLineNumberView::applyRequiredThickness()
{
    const qreal required = requiredThickness();
    if (std::abs(required - m_ruleThickness) > kThicknessTolerance)
        setRuleThickness(required);
}

void VXLineNumberView::setLeftMargin(int margin)
{
    m_leftMargin = margin;
    applyRequiredThickness();
    update();
}

void VXLineNumberView::setRightMargin(int margin)
{
    m_rightMargin = margin;
    update();
}

void VXLineNumberView::setFont(const std::optional<QFont> &font)
{
    m_font = font;
    applyRequiredThickness();
    update();
}

void VXLineNumberView::setTextColor(const std::optional<QColor> &color)
{
    m_textColor = color;
    update();
}

void VXLineNumberView::setBackgroundColor(const std::optional<QColor> &color)
{
    m_backgroundColor = color;
    update();
}

void VXLineNumberView::setAlignment(Qt::Alignment alignment)
{
    m_alignment = alignment;
    update();
}

QFont VXLineNumberView::defaultFont() const
{
    return QApplication::font("QLabel");
}

QColor VXLineNumberView::defaultTextColor() const
{
    return secondaryLabelColor(palette());
}

QColor VXLineNumberView::defaultAlternateTextColor() const
{
    return palette().color(QPalette::Text);
}

QVariantMap VXLineNumberView::textAttributes() const
{
    return {{fontAttributeName, font()}, {foregroundColorAttributeName, textColor()}};
}

// ---- archives

QVariantMap VXLineNumberView::encodeWithCoder() const
{
    return {{u"font"_s, toVariant(m_font)},
            {u"textColor"_s, toVariant(m_textColor)},
            {u"alternateTextColor"_s, toVariant(m_alternateTextColor)},
            {u"backgroundColor"_s, toVariant(m_backgroundColor)},
            {u"drawsDivider"_s, m_drawsDivider}};
}

void VXLineNumberView::initWithCoder(const QVariantMap &archive)
{
    m_textColor = fromVariant<QColor>(archive.value(u"textColor"_s));
    m_alternateTextColor = fromVariant<QColor>(archive.value(u"alternateTextColor"_s));
    m_backgroundColor = fromVariant<QColor>(archive.value(u"backgroundColor"_s));
    m_drawsDivider = archive.value(u"drawsDivider"_s).toBool();
    setFont(fromVariant<QFont>(archive.value(u"font"_s)));
}

void VXLineNumberView::encodeWithCoder(QDataStream &archive) const
{
    archive << toVariant(m_font) << toVariant(m_textColor) << toVariant(m_alternateTextColor)
            << toVariant(m_backgroundColor) << m_drawsDivider;
}

void VXLineNumberView::initWithCoder(QDataStream &archive)
{
    QVariant font;
    QVariant text;
    QVariant alternate;
    QVariant background;
    bool divider = true;
    archive >> font >> text >> alternate >> background >> divider;
    if (archive.status() != QDataStream::Ok)
        return;
    m_textColor = fromVariant<QColor>(text);
    m_alternateTextColor = fromVariant<QColor>(alternate);
    m_backgroundColor = fromVariant<QColor>(background);
    m_drawsDivider = divider;
    setFont(fromVariant<QFont>(font));
}

// ---- drawing

void VXLineNumberView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    lineIndices(); // the first count also finds the thickness
}

void VXLineNumberView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    if (m_backgroundColor)
        painter.fillRect(event->rect(), *m_backgroundColor);
    if (m_clientView)
        drawHashMarksAndLabels(painter, event->rect());
}

/// The labels of the lines that begin in \a area.
void VXLineNumberView::drawHashMarksAndLabels(QPainter &painter, const QRect &area)
{
    const QList<int> starts = lineIndices();
    const QWidget *view = m_clientView->viewport();
    const int offset = mapFromGlobal(view->mapToGlobal(QPoint())).y();
    const QRect visible = area.translated(0, -offset) & view->rect();
    const int firstVisible = m_clientView->cursorForPosition(QPoint(0, visible.top())).position();
    painter.setFont(font());
    painter.setPen(textColor());
    const QFontMetricsF metrics(font());
    const qreal height = metrics.height();

    for (int line = LineTable::lineContaining(starts, firstVisible); line < starts.size(); ++line) {
        const int start = starts[line];
        if (start < firstVisible)
            continue; // a wrapped line that begins above the area
        const QRect row = firstRowOfLine(start);
        if (row.top() > area.bottom())
            break;
        const QString label = QString::number(line + 1);
        const qreal labelWidth = metrics.horizontalAdvance(label);
        const qreal x = m_alignment & Qt::AlignRight ? width() - labelWidth - m_rightMargin : m_leftMargin;
        qreal y = row.top() + row.height() - height;
        if (std::abs(height - 19.0) < 0.1)
            y += 2; // labels of this one height sit too high
        painter.drawText(QPointF(x, y + metrics.ascent()), label);
    }
}

// ---- selecting lines

int VXLineNumberView::lineAt(const QPoint &position)
{
    const QPoint inView = m_clientView->viewport()->mapFromGlobal(mapToGlobal(position));
    const int index = m_clientView->cursorForPosition(QPoint(0, inView.y())).position();
    return lineNumberForCharacterIndexInText(index);
}

void VXLineNumberView::selectLines(int first, int last)
{
    const QList<int> starts = lineIndices();
    const auto startOf = [&](int line) {
        return line < starts.size() ? starts[line] : m_clientView->document()->characterCount() - 1;
    };
    // The caret goes to the side of the line that was reached last.
    QTextCursor cursor = m_clientView->textCursor();
    cursor.setPosition(last >= first ? startOf(first) : startOf(first + 1));
    cursor.setPosition(last >= first ? startOf(last + 1) : startOf(last), QTextCursor::KeepAnchor);
    m_clientView->setTextCursor(cursor);
}

void VXLineNumberView::mousePressEvent(QMouseEvent *event)
{
    if (!m_clientView || event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    m_clientView->setFocus(Qt::MouseFocusReason);
    const int line = lineAt(event->position().toPoint());
    if (m_anchorLine < 0 || !(event->modifiers() & Qt::ShiftModifier))
        m_anchorLine = line;
    selectLines(m_anchorLine, line);
}

void VXLineNumberView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_clientView && (event->buttons() & Qt::LeftButton) && m_anchorLine >= 0)
        selectLines(m_anchorLine, lineAt(event->position().toPoint()));
}

void VXLineNumberView::wheelEvent(QWheelEvent *event)
{
    if (m_clientView)
        QApplication::sendEvent(m_clientView->viewport(), event);
}
