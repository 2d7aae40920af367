#include "editing/compare/CompareSheet.h"

#include "platform/Appearance.h"
#include "platform/PlainText.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QToolButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kArrowsWidth = 52;
constexpr int kSpacing = 8;
constexpr int kRightMargin = 6;
/// With less for its values captions stand above them.
constexpr int kValueWidth = 160;

QString textOf(const FieldContent::Values &values)
{
    const QString text = values.texts.join(u'\n');
    return values.hasMore ? text + u'\n' + CompareSheet::tr("… and more") : text;
}

} // namespace

CompareSheet::CompareSheet(QWidget *parent) : QWidget(parent), m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(0, 4, kRightMargin, 8);
    m_grid->setHorizontalSpacing(kSpacing);
    m_grid->setVerticalSpacing(5);
    m_grid->setColumnStretch(1, 1);
    m_grid->setColumnMinimumWidth(2, kArrowsWidth); // so that nothing moves when they come and go
    m_grid->setColumnStretch(4, 1);
    m_rows.reserve(static_cast<std::size_t>(comparedFields().size()));
    for (const ComparedField &field : comparedFields())
        addRow(field);
    m_grid->setRowStretch(2 * static_cast<int>(m_rows.size()), 1);
    layOut(false);
}

void CompareSheet::addRow(const ComparedField &field)
{
    CompareRow row {&field, {}};
    row.arrowBox = new QWidget(this);
    for (const Side side : {Left, Right}) {
        CompareHalf &half = row.sides[side];
        half = CompareHalf::make(side, field, this);
        row.arrows[side] = makeArrow(side, field);
        if (half.value) {
            connect(half.value, &CompareField::wantedHeightChanged, this,
                    [this, field = field.field] { rowOf(field).adjustHeight(); });
        }
        half.shown()->installEventFilter(this);
    }
    auto *arrows = new QHBoxLayout(row.arrowBox);
    arrows->setContentsMargins(0, 0, 0, 0);
    arrows->setSpacing(2);
    arrows->addWidget(row.arrows[Left]);
    arrows->addWidget(row.arrows[Right]);
    m_rows.push_back(row);
}

// Where it stands

/// The least width with which captions stand beside the values.
int CompareSheet::widthBesideCaptions() const
{
    int captions = 0;
    for (const CompareRow &row : m_rows)
        captions = std::max(captions, row.captionWidth());
    return 2 * (captions + kValueWidth) + kArrowsWidth + 4 * kSpacing + kRightMargin;
}

QSize CompareSheet::minimumSizeHint() const
{
    int values = 0;
    for (const CompareRow &row : m_rows)
        values = std::max(values, row.leastValueWidth());
    return {2 * values + kArrowsWidth + 2 * kSpacing + kRightMargin, QWidget::minimumSizeHint().height()};
}

void CompareSheet::layOut(bool isNarrow)
{
    m_isNarrow = isNarrow;
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        m_rows[i].place(*m_grid, 2 * static_cast<int>(i), isNarrow);
}

bool CompareSheet::event(QEvent *event)
{
    if (event->type() == QEvent::Resize && (width() < widthBesideCaptions()) != m_isNarrow)
        layOut(!m_isNarrow);
    return QWidget::event(event);
}

// Fields

QToolButton *CompareSheet::makeArrow(Side target, const ComparedField &field)
{
    auto *arrow = new QToolButton(this);
    arrow->setIcon(QIcon(target == Left ? u":/icons/take-left.svg"_s : u":/icons/take-right.svg"_s));
    arrow->setAutoRaise(true);
    arrow->setFocusPolicy(Qt::StrongFocus);
    const QString text = target == Left ? tr("Take %1 from the right").arg(titleOf(field))
                                        : tr("Take %1 from the left").arg(titleOf(field));
    arrow->setAccessibleName(text);
    arrow->setToolTip(escapedToolTip(text));
    arrow->hide();
    arrow->installEventFilter(this);
    connect(arrow, &QToolButton::clicked, this,
            [this, target, field = field.field] { Q_EMIT takeRequested(target, field); });
    return arrow;
}

/// Remembers which field the keys mean: a menu takes the focus away for a moment.
bool CompareSheet::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        for (const CompareRow &row : m_rows) {
            const auto has = [watched](const CompareHalf &half) {
                return watched == half.value || watched == half.cells;
            };
            if (has(row.sides[Left]) || has(row.sides[Right]) || watched == row.arrows[Left]
                || watched == row.arrows[Right])
                m_focused = row.field->field;
        }
    }
    return QWidget::eventFilter(watched, event);
}

std::size_t CompareSheet::placeOf(GlyphField field) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [field](const CompareRow &row) { return row.field->field == field; });
    Q_ASSERT(found != m_rows.end());
    return static_cast<std::size_t>(found - m_rows.begin());
}

// What can be taken

void CompareSheet::setWritable(bool left, bool right)
{
    m_isWritable = {left, right};
    for (const CompareRow &row : m_rows)
        showRow(row);
}

void CompareSheet::setOnlyDifferent(bool onlyDifferent)
{
    m_onlyDifferent = onlyDifferent;
    for (const CompareRow &row : m_rows)
        showRow(row);
}

void CompareSheet::showRow(const CompareRow &row)
{
    const bool isFolded = m_onlyDifferent && !row.differs;
    row.arrowBox->setHidden(isFolded);
    for (const Side side : {Left, Right}) {
        const CompareHalf &half = row.sides[side];
        half.label->setHidden(isFolded);
        half.shown()->setHidden(isFolded);
        row.arrows[side]->setVisible(row.differs && row.hasBoth);
        row.arrows[side]->setEnabled(m_isWritable[side]);
    }
}

std::optional<GlyphField> CompareSheet::fieldToTake() const
{
    std::optional<GlyphField> first;
    for (const CompareRow &row : m_rows) {
        if (!row.differs || !row.hasBoth)
            continue;
        if (row.field->field == m_focused)
            return m_focused;
        first = first ? first : row.field->field;
    }
    return first;
}

bool CompareSheet::focusNextTake(Side target, GlyphField taken)
{
    QToolButton *first = nullptr;
    bool isBehind = false;
    for (const CompareRow &row : m_rows) {
        isBehind |= row.field->field == taken;
        if (row.arrows[target]->isHidden() || !row.arrows[target]->isEnabled())
            continue;
        first = first ? first : row.arrows[target];
        if (isBehind) {
            first = row.arrows[target];
            break;
        }
    }
    if (first)
        first->setFocus(Qt::OtherFocusReason);
    return first;
}

// Values

void CompareSheet::setContent(const FieldContent &content)
{
    if (content.field() != GlyphField::Unicodes)
        setCaption(content.field(), content.differs());
    CompareRow &row = m_rows[placeOf(content.field())];
    row.differs = content.differs();
    row.hasBoth = !content.isOneSided();
    showRow(row);
    if (isChoice(content.field())) {
        row.sides[Left].cells->setChosen(content.left().choices);
        row.sides[Right].cells->setChosen(content.right().choices);
        return;
    }
    const QString left = textOf(content.left());
    const QString right = textOf(content.right());
    // Marks would say nothing where a side has no record at all.
    TextDifference difference;
    if (!content.isOneSided() && !content.left().hasMore && !content.right().hasMore)
        difference = differenceOfTexts(left, right);
    row.sides[Left].value->setValue(left, difference.left);
    row.sides[Right].value->setValue(right, difference.right);
}

void CompareSheet::showFields(const std::vector<FieldContent> &fields)
{
    for (const FieldContent &field : fields)
        setContent(field);
}

QPlainTextEdit *CompareSheet::focusedText() const
{
    auto *text = qobject_cast<QPlainTextEdit *>(window()->focusWidget());
    return isAncestorOf(text) ? text : nullptr;
}

// Captions

QWidget *CompareSheet::caption(Side side, GlyphField field) const
{
    const CompareHalf &half = rowOf(field).sides[side];
    return half.cells ? static_cast<QWidget *>(half.cells) : half.label;
}

void CompareSheet::setCaption(GlyphField field, bool differs)
{
    rowOf(field).setCaptions(differs, captionColor(differs));
}

void CompareSheet::setCaptions(const InfoList &left, const InfoList &right)
{
    for (const CompareRow &row : m_rows) {
        if (row.field->field != GlyphField::Unicodes)
            setCaption(row.field->field, valuesDiffer(left, right, row.field->field));
    }
}

QColor CompareSheet::colorFor(const InfoList &left, const InfoList &right,
                              std::optional<GlyphField> field) const
{
    return captionColor(field && valuesDiffer(left, right, *field));
}

QColor CompareSheet::captionColor(bool differs) const
{
    if (!differs)
        return palette().color(QPalette::WindowText);
    return isDarkMode(palette()) ? QColor(0xFF, 0x6B, 0x61) : QColor(0xC4, 0x16, 0x1C);
}

} // namespace runebook
