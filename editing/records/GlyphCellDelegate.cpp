#include "editing/records/GlyphCellDelegate.h"

#include "editing/fields/ErrorBubble.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/fields/LongValues.h"
#include "editing/fields/PendingTexts.h"
#include "editing/fields/UnicodesTokenField.h"
#include "editing/fields/VXUnicodeFormatter.h"
#include "editing/fields/WholeValueDialog.h"
#include "editing/records/RSRTVArrayController.h"
#include "platform/CallLater.h"
#include "platform/PlainText.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QTableView>
#include <QToolTip>
#include <limits>

namespace runebook {

namespace {

constexpr char kTextAtStart[] = "textAtStart";

GlyphField fieldOfColumn(int column)
{
    return glyphColumns()[static_cast<std::size_t>(column)].field;
}

/// Whether the focus goes where it comes back from: a menu, a list of completions.
bool isForAMoment(const QFocusEvent &event)
{
    return event.reason() == Qt::PopupFocusReason || event.reason() == Qt::MenuBarFocusReason;
}

bool endsEditing(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter || event.key() == Qt::Key_Tab
        || event.key() == Qt::Key_Backtab;
}

} // namespace

GlyphCellDelegate::GlyphCellDelegate(RSRTVArrayController &controller, QObject *parent)
    : QStyledItemDelegate(parent), m_controller(controller)
{
}

/// What the list controller's delegate wants to be drawn or shown in a cell. True when it was drawn here.
bool GlyphCellDelegate::paintAsAsked(QPainter *painter, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    auto *table = qobject_cast<QTableView *>(m_controller.oTableView());
    const int column = index.column();
    const int row = index.row();
    QObject *cell = m_controller.tableColumnInTableViewDataCellForRow(column, table, row);
    if (!cell)
        cell = m_controller.tableViewDataCellForTableColumnRow(table, column, row);
    m_controller.tableViewWillDisplayCellForTableColumnRow(table, cell, column, row);
    showViewAsAsked(index);
    const auto *drawing = qobject_cast<QAbstractItemDelegate *>(cell);
    if (!drawing || drawing == this)
        return false;
    drawing->paint(painter, option, index);
    return true;
}

void GlyphCellDelegate::showViewAsAsked(const QModelIndex &index) const
{
    auto *table = qobject_cast<QTableView *>(m_controller.oTableView());
    auto *view = qobject_cast<QWidget *>(
        m_controller.viewAtColumnRowMakeIfNecessary(index.column(), index.row(), true));
    if (!view || !table || table->indexWidget(index) == view)
        return;
    // Not while the table is being painted.
    callLater(table, [table, view = QPointer<QWidget>(view), place = QPersistentModelIndex(index)] {
        if (view && place.isValid())
            table->setIndexWidget(place, view);
    });
}

void GlyphCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const
{
    if (m_controller.delegate() && paintAsAsked(painter, option, index))
        return;
    // The usual delegate lays every text out anew through the style: ten times the time of this, which a
    // scroll over a thousand cells shows.
    const bool isSelected = option.state & QStyle::State_Selected;
    const QPalette::ColorGroup group =
        option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
    if (isSelected)
        painter->fillRect(option.rect, option.palette.brush(group, QPalette::Highlight));
    else if (option.features & QStyleOptionViewItem::Alternate)
        painter->fillRect(option.rect, option.palette.brush(group, QPalette::AlternateBase));

    const QString text = index.data().toString();
    if (!text.isEmpty()) {
        const QRect rect = option.rect.adjusted(kMargin, 0, -kMargin, 0);
        const bool isCentered = !isEditableColumn(index.column());
        const QFontMetrics &metrics = option.fontMetrics;
        // Measuring is dear: a text of few characters fits whatever they are.
        const bool mayBeTooLong = text.size() * metrics.averageCharWidth() * 2 > rect.width();
        const QString shown = mayBeTooLong ? metrics.elidedText(text, Qt::ElideRight, rect.width()) : text;
        painter->setPen(option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text));
        painter->setFont(option.font);
        painter->save();
        // Marks pile up over other rows, however little room they take in the line.
        if (mayBeTooLong)
            painter->setClipRect(option.rect, Qt::IntersectClip);
        painter->drawText(
            rect, Qt::TextSingleLine | Qt::AlignVCenter | (isCentered ? Qt::AlignHCenter : Qt::AlignLeft),
            shown);
        painter->restore();
    }
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(
            QPen(option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Highlight), 1,
                 Qt::DotLine));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
}

bool GlyphCellDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                                  const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const QString text = index.isValid() ? index.data().toString() : QString();
    const int room = view->visualRect(index).width() - 2 * kMargin;
    const QFontMetrics metrics(option.font);
    const bool isAsked = event->type() == QEvent::ToolTip && !text.isEmpty();
    const bool isShown = isAsked
        && (metrics.horizontalAdvance(text) > room
            || m_controller.tableViewShouldShowCellExpansionForTableColumnRow(view, index.column(),
                                                                              index.row()));
    if (isShown)
        QToolTip::showText(event->globalPos(), escapedToolTip(text), view, view->visualRect(index));
    else
        QToolTip::hideText();
    return isShown;
}

bool GlyphCellDelegate::editElsewhere(const QModelIndex &index) const
{
    const GlyphField field = fieldOfColumn(index.column());
    const InfoPtr info = m_controller.arrangedObjectAtIndex(index.row());
    auto *table = qobject_cast<QTableView *>(m_controller.oTableView());
    if (!info || !table || !isLongValue(*info, field))
        return false;
    // Not in the middle of the key or click that asked for it.
    callLater(table, [table, field, info, &controller = m_controller] {
        auto *sheet = new WholeValueDialog(controller.document(), {info}, field, table->window());
        connect(sheet, &WholeValueDialog::remarked, &controller, &RSRTVArrayController::remarked);
        sheet->open();
    });
    return true;
}

QWidget *GlyphCellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                         const QModelIndex &index) const
{
    if (editElsewhere(index))
        return nullptr;
    const GlyphField field = fieldOfColumn(index.column());
    auto *editor = field == GlyphField::Unicodes ? new UnicodesTokenField(parent) : new QLineEdit(parent);
    m_editor = editor;
    m_edited = index;
    if (field == GlyphField::UnicodeLegacy)
        (new VXUnicodeFormatter(editor))->attachTo(editor);
    editor->setMaxLength(std::numeric_limits<int>::max()); // the default cuts long texts without a word
    editor->setAutoFillBackground(true);
    editor->setAccessibleName(columnTitle(index.column()));
    VXDocument &document = m_controller.document();
    connect(editor, &QLineEdit::textEdited, &document, &Document::pendingTextChanged);
    document.addPendingTexts(
        editor, [this, editor, field, info = m_controller.arrangedObjectAtIndex(index.row())] {
            const bool isTyped = info && editor->text() != editor->property(kTextAtStart).toString();
            return isTyped ? QJsonArray {pendingText(m_controller.document(), {info}, field, editor->text())}
                           : QJsonArray();
        });
    const QStringList words = vocabularyOf(field);
    if (!words.isEmpty()) {
        auto *completer = new QCompleter(words, editor);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setFilterMode(Qt::MatchContains);
        editor->setCompleter(completer);
        // While its list is open the completer takes Return before the delegate sees it.
        auto *self = const_cast<GlyphCellDelegate *>(this);
        connect(editor, &QLineEdit::returnPressed, self, [self, editor, completer] {
            if (!completer->popup()->isVisible())
                return;
            self->commitEditor();
        });
    }
    return editor;
}

void GlyphCellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *line = qobject_cast<QLineEdit *>(editor);
    const QString text = index.data(Qt::EditRole).toString();
    if (auto *tokens = qobject_cast<UnicodesTokenField *>(editor))
        tokens->setTokens(text.split(kListSeparator, Qt::SkipEmptyParts));
    else
        line->setText(text);
    // What the line really holds: it may show line breaks otherwise.
    line->setProperty(kTextAtStart, line->text());
}

void GlyphCellDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                     const QModelIndex &index) const
{
    const auto *line = qobject_cast<QLineEdit *>(editor);
    if (line->text() == line->property(kTextAtStart).toString())
        return;
    QString text = line->text();
    if (auto *tokens = qobject_cast<UnicodesTokenField *>(editor)) {
        sayAtCell(tokens->settle());
        text = tokens->stringValue();
    }
    model->setData(index, text, Qt::EditRole);
}

// What is being typed

bool GlyphCellDelegate::hasPendingText() const
{
    return m_editor && m_edited.isValid() && m_editor->text() != m_editor->property(kTextAtStart).toString();
}

void GlyphCellDelegate::revertEditor()
{
    if (m_editor && m_edited.isValid())
        setEditorData(m_editor, m_edited);
}

/// Why what is being typed cannot stay; an empty domain when it can.
Error GlyphCellDelegate::objection() const
{
    const InfoPtr info = m_controller.arrangedObjectAtIndex(m_edited.row());
    if (!hasPendingText() || !info)
        return {};
    return objectionToText(m_controller.document(), {info}, fieldOfColumn(m_edited.column()),
                           m_editor->text());
}

/// At the place of the cell, for the editor goes.
void GlyphCellDelegate::sayAtCell(const QString &text) const
{
    QPointer<QWidget> viewport = m_editor->parentWidget();
    callLater(viewport,
              [viewport, text, cell = m_editor->geometry()] { ErrorBubble::remark(viewport, text, cell); });
}

bool GlyphCellDelegate::commitEditor(Error *refusal)
{
    if (!m_editor)
        return true;
    if (const Error reason = objection(); !reason.domain.isEmpty()) {
        m_editor->setFocus();
        ErrorBubble::show(m_editor, reason);
        return fail(refusal, reason);
    }
    const QPointer<QLineEdit> editor = m_editor;
    Q_EMIT commitData(editor);
    if (editor && editor == m_editor)
        Q_EMIT closeEditor(editor, NoHint);
    return true;
}

void GlyphCellDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (editor == m_editor)
        m_editor.clear();
    QStyledItemDelegate::destroyEditor(editor, index);
}

bool GlyphCellDelegate::eventFilter(QObject *watched, QEvent *event)
{
    // An editor that goes with its window is no line any more when it hears of that.
    const auto *line = qobject_cast<QLineEdit *>(watched);
    if (!line || line != m_editor)
        return QStyledItemDelegate::eventFilter(watched, event);
    if (event->type() == QEvent::FocusOut) {
        if (isForAMoment(*static_cast<QFocusEvent *>(event)))
            return false;
        const Error reason = objection();
        if (!reason.domain.isEmpty()) {
            // It stays open with its text; after this event, which would take the bubble away.
            callLater(m_editor, [editor = m_editor, reason] { ErrorBubble::show(editor, reason); });
            return false;
        }
    } else if (event->type() == QEvent::KeyPress && endsEditing(*static_cast<QKeyEvent *>(event))) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter;
        const Error reason = objection();
        if (!isReturn && reason.domain.isEmpty())
            return QStyledItemDelegate::eventFilter(watched, event);
        commitEditor();
        return true;
    }
    return QStyledItemDelegate::eventFilter(watched, event);
}

} // namespace runebook
