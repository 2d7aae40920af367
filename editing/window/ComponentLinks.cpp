#include "editing/window/ComponentLinks.h"

#include "document/NameUses.h"
#include "document/VXDocument.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphCellDelegate.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/DetailPane.h"
#include "platform/MenuText.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <algorithm>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

bool namesOthers(GlyphField field)
{
    return std::find(kNamingFields.begin(), kNamingFields.end(), field) != kNamingFields.end();
}

} // namespace

ComponentLinks::ComponentLinks(const WindowParts &parts, QObject *parent) : QObject(parent), m_parts(parts)
{
    m_parts.table.viewport()->installEventFilter(this);
    for (const GlyphField field : kNamingFields) {
        if (QWidget *editor = m_parts.pane.editorOf(field))
            editor->installEventFilter(this);
    }
}

// Where a name stands

/// The record whose name stands at a place of a text that lists names.
InfoPtr ComponentLinks::recordAt(const QString &text, qsizetype place) const
{
    if (place < 0 || place > text.size())
        return nullptr;
    const qsizetype before = place == 0 ? -1 : text.lastIndexOf(u',', place - 1);
    const qsizetype end = text.indexOf(u',', place);
    const QString name = text.mid(before + 1, end < 0 ? -1 : end - before - 1).trimmed();
    return name.isEmpty() ? nullptr : m_parts.document.infoForName(name);
}

InfoPtr ComponentLinks::recordInTable(const QPoint &place) const
{
    const QModelIndex index = m_parts.table.indexAt(place);
    if (!index.isValid() || !namesOthers(glyphColumns()[static_cast<std::size_t>(index.column())].field))
        return nullptr;
    const QString text = index.data().toString();
    const QFontMetrics metrics(m_parts.table.font());
    const int x = place.x() - m_parts.table.visualRect(index).left() - GlyphCellDelegate::kMargin;
    if (x < 0 || x > metrics.horizontalAdvance(text))
        return nullptr;
    qsizetype at = 0;
    while (at < text.size() && metrics.horizontalAdvance(text.left(at + 1)) < x)
        ++at;
    return recordAt(text, at);
}

bool ComponentLinks::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease && std::exchange(m_hasPressed, false))
        return true;
    if (event->type() != QEvent::MouseButtonPress)
        return QObject::eventFilter(watched, event);
    const auto *mouse = static_cast<QMouseEvent *>(event);
    if (mouse->button() != Qt::LeftButton || mouse->modifiers() != Qt::ControlModifier)
        return QObject::eventFilter(watched, event);
    auto *line = qobject_cast<QLineEdit *>(watched);
    const QPoint place = mouse->position().toPoint();
    const InfoPtr info = line ? recordAt(line->text(), line->cursorPositionAt(place)) : recordInTable(place);
    if (!info)
        return QObject::eventFilter(watched, event);
    m_hasPressed = true;
    Q_EMIT showRequested(info);
    return true;
}

// By the keyboard

QLineEdit *ComponentLinks::lineWithCaret() const
{
    auto *focused = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    const auto isEditor = [&](GlyphField field) {
        return focused && focused == m_parts.pane.editorOf(field);
    };
    return std::any_of(kNamingFields.begin(), kNamingFields.end(), isEditor) ? focused : nullptr;
}

void ComponentLinks::goToComponent()
{
    if (const QLineEdit *line = lineWithCaret()) {
        if (const InfoPtr info = recordAt(line->text(), line->cursorPosition())) {
            Q_EMIT showRequested(info);
            return;
        }
    }
    const InfoList selected = m_parts.list.selectedObjects();
    if (selected.size() == 1)
        offer(*selected.front());
}

void ComponentLinks::offer(const VXGlyphInfo &info)
{
    constexpr int kMost = 40;
    auto *menu = new QMenu(&m_parts.window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    InfoList found;
    for (const GlyphField field : kNamingFields) {
        for (const QString &name : info.entriesOf(field).join(u", "_s).split(u", "_s, Qt::SkipEmptyParts)) {
            const InfoPtr record = m_parts.document.infoForName(name);
            if (menu->actions().size() >= kMost)
                break;
            const QString text = menuText(cellDisplayText(name)) + u'\t' + fieldTitle(field);
            QAction *action = menu->addAction(text, this, [this, record] { Q_EMIT showRequested(record); });
            action->setEnabled(record != nullptr);
            if (record)
                found.push_back(record);
        }
    }
    if (found.size() == 1) {
        delete menu;
        Q_EMIT showRequested(found.front());
    } else if (found.empty()) {
        delete menu;
        m_parts.showMessage(tr("“%1” names no record in its decomposition, accents or alternate names.")
                                .arg(cellDisplayText(info, GlyphField::Name)));
    } else {
        const QRect row = m_parts.table.visualRect(m_parts.table.currentIndex());
        menu->popup(m_parts.table.viewport()->mapToGlobal(row.bottomLeft() + QPoint(40, 2)));
        menu->setActiveAction(menu->actions().constFirst());
    }
}

} // namespace runebook
