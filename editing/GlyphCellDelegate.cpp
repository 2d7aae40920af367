#include "editing/GlyphCellDelegate.h"

#include "editing/FieldEditing.h"
#include "editing/GlyphColumns.h"
#include "editing/PendingTexts.h"
#include "editing/RSRTVArrayController.h"
#include "platform/PlainText.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QLineEdit>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <limits>

namespace runebook {

namespace {

constexpr int kMargin = 4; // as the header has it
constexpr char kTextAtStart[] = "textAtStart";

} // namespace

GlyphCellDelegate::GlyphCellDelegate(VXDocument &document, QObject *parent)
    : QStyledItemDelegate(parent), m_document(document)
{
}

void GlyphCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const
{
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
        painter->drawText(
            rect, Qt::TextSingleLine | Qt::AlignVCenter | (isCentered ? Qt::AlignHCenter : Qt::AlignLeft),
            shown);
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
    const bool isCut = !text.isEmpty() && event->type() == QEvent::ToolTip && metrics.horizontalAdvance(text) > room;
    if (isCut)
        QToolTip::showText(event->globalPos(), escapedToolTip(text), view, view->visualRect(index));
    else
        QToolTip::hideText();
    return isCut;
}

QWidget *GlyphCellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                         const QModelIndex &index) const
{
    auto *editor = new QLineEdit(parent);
    editor->setMaxLength(std::numeric_limits<int>::max()); // the default cuts long texts without a word
    editor->setFrame(false);
    editor->setAutoFillBackground(true);
    editor->setAccessibleName(columnTitle(index.column()));
    const GlyphField field = glyphColumns()[static_cast<std::size_t>(index.column())].field;
    if (const auto *list = qobject_cast<const RSRTVArrayController *>(index.model())) {
        connect(editor, &QLineEdit::textEdited, &m_document, &Document::pendingTextChanged);
        m_document.addPendingTexts(
            editor, [this, editor, field, info = list->arrangedObjectAtIndex(index.row())] {
                const bool isTyped = info && editor->text() != editor->property(kTextAtStart).toString();
                return isTyped ? QJsonArray {pendingText(m_document, {info}, field, editor->text())}
                               : QJsonArray();
            });
    }
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
            Q_EMIT self->commitData(editor);
            Q_EMIT self->closeEditor(editor);
        });
    }
    return editor;
}

void GlyphCellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *line = qobject_cast<QLineEdit *>(editor);
    const QString text = index.data(Qt::EditRole).toString();
    line->setText(text);
    // What the line really holds: it may show line breaks otherwise.
    line->setProperty(kTextAtStart, line->text());
}

void GlyphCellDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                     const QModelIndex &index) const
{
    const auto *line = qobject_cast<QLineEdit *>(editor);
    if (line->text() != line->property(kTextAtStart).toString())
        model->setData(index, line->text(), Qt::EditRole);
}

} // namespace runebook
