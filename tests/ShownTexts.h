#pragma once

#include "tests/KeptTexts.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabBar>
#include <QTextEdit>
#include <algorithm>

/// Compares all that \a window says, shown or spoken, with a file (KeptTexts.h).
#define COMPARE_TEXTS(name, window) COMPARE_LINES(name, runebook::textsOf(window))

namespace runebook {

inline void appendTexts(const QMenu &menu, const QString &indent, QStringList &lines)
{
    for (const QAction *action : menu.actions()) {
        if (action->isSeparator() || !action->isVisible())
            continue;
        QStringList parts {action->text(), action->shortcut().toString(), action->statusTip(),
                           action->toolTip() == QString(action->text()).remove(u'&') ? QString()
                                                                                     : action->toolTip()};
        parts.removeAll(QString());
        lines << indent + parts.join(QStringLiteral(" | "))
                + (action->isEnabled() ? QString() : QStringLiteral(" (off)"))
                + (action->isChecked() ? QStringLiteral(" (on)") : QString());
        if (action->menu())
            appendTexts(*action->menu(), indent + QStringLiteral("  "), lines);
    }
}

/// What one widget says itself.
inline QStringList ownTexts(const QWidget &widget)
{
    QStringList texts;
    static const QRegularExpression key(QStringLiteral("&\\w(?!\\w*;)"));
    if (const auto *label = qobject_cast<const QLabel *>(&widget))
        texts << label->text()
              << (label->textFormat() != Qt::PlainText && !label->buddy() && label->text().contains(key)
                      ? QStringLiteral("(a key for nothing)")
                      : QString());
    else if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
        texts << button->text() << (button->isChecked() ? QStringLiteral("(on)") : QString())
              << (qobject_cast<const QPushButton *>(button)
                          && static_cast<const QPushButton *>(button)->isDefault()
                      ? QStringLiteral("(default)")
                      : QString());
    else if (const auto *group = qobject_cast<const QGroupBox *>(&widget))
        texts << group->title();
    else if (const auto *line = qobject_cast<const QLineEdit *>(&widget))
        texts << line->placeholderText(); // what stands in it is nothing that the window says
    else if (const auto *plain = qobject_cast<const QPlainTextEdit *>(&widget))
        texts << plain->placeholderText();
    else if (const auto *rich = qobject_cast<const QTextEdit *>(&widget))
        texts << rich->toPlainText();
    else if (const auto *choice = qobject_cast<const QComboBox *>(&widget))
        for (int i = 0; i < choice->count(); ++i)
            texts << choice->itemText(i);
    else if (const auto *tabs = qobject_cast<const QTabBar *>(&widget))
        for (int i = 0; i < tabs->count(); ++i)
            texts << tabs->tabText(i);
    else if (const auto *header = qobject_cast<const QHeaderView *>(&widget))
        for (int i = 0; header->orientation() == Qt::Horizontal && i < header->count(); ++i)
            texts << header->model()->headerData(i, Qt::Horizontal).toString();
    texts << widget.accessibleName() << widget.accessibleDescription() << widget.toolTip()
          << (widget.isEnabled() ? QString() : QStringLiteral("(off)"));
    texts.removeAll(QString());
    texts.removeDuplicates();
    return texts;
}

/// A line for each visible widget that says something, parents before children.
inline void appendTexts(const QWidget &widget, const QString &indent, QStringList &lines)
{
    if (const auto *bar = qobject_cast<const QMenuBar *>(&widget); bar)
        return;
    const QStringList own = ownTexts(widget);
    if (!own.isEmpty())
        lines << indent + own.join(QStringLiteral(" | "));
    for (const QObject *child : widget.children()) {
        const auto *part = qobject_cast<const QWidget *>(child);
        if (const auto *menu = qobject_cast<const QMenu *>(part))
            appendTexts(*menu, indent + QStringLiteral("  > "), lines);
        else if (part && !part->isWindow() && part->isVisibleTo(&widget))
            appendTexts(*part, own.isEmpty() ? indent : indent + QStringLiteral("  "), lines);
    }
}

inline QStringList textsOf(const QWidget &window)
{
    QStringList lines {window.windowTitle()};
    appendTexts(window, {}, lines);
    return lines;
}

/// \a line without what is quoted, paths and numbers, for what comes in many forms (isAmongTexts()).
inline QString withoutNames(QString line)
{
    line.replace(u'\n', u' ')
        .replace(QRegularExpression(QStringLiteral("“[^”]*”|/[\\w./-]*/[\\w.-]+")), QStringLiteral("“…”"));
    return line.replace(QRegularExpression(QStringLiteral("\\d+(,\\d+)*")), QStringLiteral("0"));
}

inline bool isSaidAmongTexts(const QString &name, const QWidget &window)
{
    return std::ranges::all_of(textsOf(window), [&name](const QString &line) {
        return isAmongTexts(name, withoutNames(line.trimmed()));
    });
}

} // namespace runebook
