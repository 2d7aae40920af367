#include "editing/merge/MergeSheet.h"

#include "editing/compare/TextDifference.h"
#include "editing/fields/ErrorBubble.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/fields/SignalColors.h"
#include "platform/PlainLabel.h"
#include "platform/ShownText.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

enum Column { Ours, Base, Theirs };

/// What became of a field, in words.
QString stateText(const MergeRow &row)
{
    if (row.isInConflict)
        return row.isChosen ? MergeSheet::tr("resolved") : MergeSheet::tr("conflict");
    switch (row.state) {
    case MergeState::Ours:
        return MergeSheet::tr("from ours");
    case MergeState::Theirs:
        return MergeSheet::tr("from theirs");
    case MergeState::Both:
        return MergeSheet::tr("the same on both sides");
    case MergeState::Merged:
        return MergeSheet::tr("put together from both sides");
    case MergeState::Conflict:
    case MergeState::Unchanged:
        break;
    }
    return {};
}

QString spokenName(GlyphField field, int column)
{
    const QString title = fieldTitle(field);
    return column == Ours ? MergeSheet::tr("%1, ours").arg(title)
        : column == Base  ? MergeSheet::tr("%1, base").arg(title)
                          : MergeSheet::tr("%1, theirs").arg(title);
}

} // namespace

bool MergeResultEdit::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && !isModified()) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)) {
            event->ignore();
            return true;
        }
    }
    return QLineEdit::event(event);
}

MergeSheet::MergeSheet(QWidget *parent) : QWidget(parent)
{
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 4, 6, 8);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    for (std::size_t column = 0; column < kSides; ++column)
        grid->setColumnStretch(int(column), 1);
    addWholeLines(*grid);
    m_lines.reserve(mergedFields().size());
    for (const GlyphField field : mergedFields())
        addLine(*grid, field);
    grid->setRowStretch(grid->rowCount(), 1);
}

MergeSheet::Values MergeSheet::addValues(QGridLayout &grid, int row, const std::array<QString, kSides> &names)
{
    Values values {};
    for (std::size_t column = 0; column < kSides; ++column) {
        auto *value = new CompareField(this);
        value->setAccessibleName(names[column]);
        value->installEventFilter(this);
        grid.addWidget(value, row, int(column), Qt::AlignTop);
        values[column] = value;
    }
    for (const CompareField *value : values)
        connect(value, &CompareField::wantedHeightChanged, this, [values] { adjustHeight(values); });
    return values;
}

void MergeSheet::addWholeLines(QGridLayout &grid)
{
    const int row = grid.rowCount();
    m_wholeCaption = plainLabel({}, this);
    m_wholeCaption->setContentsMargins(0, 6, 0, 0);
    grid.addWidget(m_wholeCaption, row, 0, 1, int(kSides));
    m_wholeLines = addValues(grid, row + 1,
                             {tr("Whole lines, ours"), tr("Whole lines, base"), tr("Whole lines, theirs")});
    m_wholeLines[Theirs]->setObjectName(u"wholeLinesTheirs"_s);
}

void MergeSheet::addLine(QGridLayout &grid, GlyphField field)
{
    const int row = grid.rowCount();
    const std::size_t number = m_lines.size();
    Line line {field};
    line.caption = plainLabel({}, this);
    line.caption->setContentsMargins(0, 6, 0, 0);
    grid.addWidget(line.caption, row, 0, 1, int(kSides));
    line.values = addValues(grid, row + 1,
                            {spokenName(field, Ours), spokenName(field, Base), spokenName(field, Theirs)});
    line.ours = makeButton(field, MergeSide::Ours);
    line.theirs = makeButton(field, MergeSide::Theirs);
    line.result = new MergeResultEdit(this);
    line.result->setAccessibleName(tr("%1, result").arg(fieldTitle(field)));
    line.result->installEventFilter(this);
    connect(line.result, &QLineEdit::returnPressed, this, [this, number] {
        m_lines[number].result->setModified(true); // also the value that stands there is an answer
        commit(m_lines[number]);
    });
    grid.addWidget(line.ours, row + 2, Ours);
    line.resultCaption = new QLabel(tr("Result:"), this);
    line.resultCaption->setBuddy(line.result);
    auto *middle = new QHBoxLayout;
    constexpr int kToCaption = 6;
    middle->setSpacing(kToCaption);
    middle->addWidget(line.resultCaption);
    middle->addWidget(line.result, 1);
    grid.addLayout(middle, row + 2, Base);
    grid.addWidget(line.theirs, row + 2, Theirs);
    m_lines.push_back(line);
}

QPushButton *MergeSheet::makeButton(GlyphField field, MergeSide side)
{
    const bool isOurs = side == MergeSide::Ours;
    auto *button = new QPushButton(isOurs ? tr("Take Ours") : tr("Take Theirs"), this);
    button->setAutoDefault(false);
    button->setAccessibleName(
        (isOurs ? tr("Take %1 from ours") : tr("Take %1 from theirs")).arg(fieldTitle(field)));
    button->installEventFilter(this);
    connect(button, &QPushButton::clicked, this, [this, field, side] { Q_EMIT takeRequested(field, side); });
    return button;
}

void MergeSheet::adjustHeight(const Values &values)
{
    int height = 0;
    for (const CompareField *value : values)
        height = std::max(height, value->wantedHeight());
    for (CompareField *value : values)
        value->setFixedHeight(height);
}

// Content

void MergeSheet::setContent(const Content &content, bool isSameRecord)
{
    if (!isSameRecord)
        m_focused.reset();
    showWholeLines(content.lines);
    for (Line &line : m_lines) {
        const auto row = std::find_if(content.rows.begin(), content.rows.end(),
                                      [&line](const MergeRow &each) { return each.field == line.field; });
        showLine(line, row == content.rows.end() ? nullptr : &*row, content, isSameRecord);
    }
}

void MergeSheet::showWholeLines(const std::optional<std::array<QString, 3>> &lines)
{
    m_wholeCaption->setVisible(lines.has_value());
    for (CompareField *value : m_wholeLines)
        value->setVisible(lines.has_value());
    if (!lines)
        return;
    const auto &[base, ours, theirs] = *lines;
    m_wholeCaption->setText(tr("Whole lines"));
    showValues(m_wholeLines, {ours, base, theirs}, {!ours.isEmpty(), !base.isEmpty(), !theirs.isEmpty()});
}

/// With marks at what each side has changed; where there was nothing, where they disagree.
void MergeSheet::showValues(const Values &values, const std::array<QString, kSides> &texts,
                            const std::array<bool, kSides> &areThere)
{
    std::array<std::vector<TextPart>, kSides> marks;
    if (areThere[Base] && areThere[Ours] && areThere[Theirs]) {
        marks[Ours] = differenceOfTexts(texts[Base], texts[Ours]).right;
        marks[Theirs] = differenceOfTexts(texts[Base], texts[Theirs]).right;
    } else if (areThere[Ours] && areThere[Theirs]) {
        const TextDifference difference = differenceOfTexts(texts[Ours], texts[Theirs]);
        marks[Ours] = difference.left;
        marks[Theirs] = difference.right;
    }
    for (std::size_t column = 0; column < kSides; ++column) {
        values[column]->setPlaceholderText(areThere[column] ? tr("Empty") : tr("No record"));
        values[column]->setValue(texts[column], marks[column]);
    }
}

void MergeSheet::showLine(Line &line, const MergeRow *row, const Content &content, bool isSameRecord)
{
    line.isShown = row;
    line.isInConflict = row && row->isInConflict;
    line.isOpen = line.isInConflict && !row->isChosen;
    line.caption->setVisible(row);
    for (CompareField *value : line.values)
        value->setVisible(row);
    line.result->setVisible(row);
    line.resultCaption->setVisible(row);
    line.ours->setVisible(line.isInConflict);
    line.theirs->setVisible(line.isInConflict);
    if (!row) {
        line.result->setModified(false);
        return;
    }
    const QString title = fieldTitle(line.field);
    const QString state = stateText(*row);
    line.caption->setText(state.isEmpty() ? title : tr("%1: %2").arg(title, state));
    QFont font = line.caption->font();
    font.setBold(line.isOpen);
    line.caption->setFont(font);
    QPalette colors = palette();
    if (line.isOpen)
        colors.setColor(QPalette::WindowText, SignalColors::warningText(palette()));
    line.caption->setPalette(colors);

    const auto textOf = [&line](const InfoPtr &info) {
        return info ? info->displayText(line.field) : QString();
    };
    const RecordSides &sides = content.sides;
    const InfoPtr &result = content.result;
    showValues(line.values, {textOf(sides.ours), textOf(sides.base), textOf(sides.theirs)},
               {bool(sides.ours), bool(sides.base), bool(sides.theirs)});
    line.result->setPlaceholderText(result ? tr("Empty") : tr("No record"));
    const QString value = textOf(result);
    const bool isWhole = value.size() <= kMostInField && !value.contains(u'\n');
    line.result->setReadOnly(!line.isInConflict || !result || !isWhole);
    line.result->setToolTip(isWhole ? QString() : tr("This value is edited in the window of the document."));
    if (!isSameRecord || !line.result->isModified()) {
        const QString shown = value.left(kMostInField);
        if (line.result->text() != shown)
            line.result->setText(shown);
        line.result->setModified(false);
        line.result->setCursorPosition(0);
    }
}

// Typing

bool MergeSheet::commit()
{
    return std::all_of(m_lines.begin(), m_lines.end(), [this](Line &line) { return commit(line); });
}

bool MergeSheet::commit(Line &line)
{
    if (!line.isShown || !line.result->isModified() || line.result->isReadOnly() || m_isCommitting)
        return true;
    const QScopedValueRollback committing(m_isCommitting, true);
    Error error;
    // What is shown is what was taken: the content comes again.
    line.result->setModified(false);
    if (!m_taker || m_taker(line.field, line.result->text(), &error))
        return true;
    line.result->setModified(true);
    ErrorBubble::show(line.result, error);
    return false;
}

bool MergeSheet::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::FocusIn && event->type() != QEvent::FocusOut)
        return QWidget::eventFilter(watched, event);
    for (Line &line : m_lines) {
        const bool isOfLine = watched == line.result || watched == line.ours || watched == line.theirs
            || std::find(line.values.begin(), line.values.end(), watched) != line.values.end();
        if (!isOfLine)
            continue;
        if (event->type() == QEvent::FocusIn)
            m_focused = line.field;
        else if (watched == line.result)
            commit(line);
    }
    return QWidget::eventFilter(watched, event);
}

std::optional<GlyphField> MergeSheet::currentField() const
{
    std::optional<GlyphField> first;
    std::optional<GlyphField> firstOpen;
    for (const Line &line : m_lines) {
        if (!line.isInConflict)
            continue;
        if (line.field == m_focused)
            return m_focused;
        first = first ? first : line.field;
        if (line.isOpen && !firstOpen)
            firstOpen = line.field;
    }
    return firstOpen ? firstOpen : first;
}

QLineEdit *MergeSheet::editor(GlyphField field) const
{
    const auto line = std::find_if(m_lines.begin(), m_lines.end(),
                                   [field](const Line &each) { return each.field == field; });
    return line != m_lines.end() && line->isShown ? line->result : nullptr;
}

} // namespace runebook
