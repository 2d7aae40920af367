#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTest>
#include <QTextEdit>

/// Compares all that \a window says, shown or spoken, with tests/data/texts/NAME.txt, which is written anew where
/// RUNEBOOK_WRITE_TEXTS is set: somebody reads what has changed in it before it is committed.
#define COMPARE_TEXTS(name, window)                                                                          \
    do {                                                                                                     \
        const QString wrong = runebook::differenceFromTexts(name, runebook::textsOf(window)); \
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));                                                        \
    } while (false)

namespace runebook {

inline void appendTexts(const QMenu &menu, const QString &indent, QStringList &lines)
{
    for (const QAction *action : menu.actions()) {
        if (action->isSeparator() || !action->isVisible())
            continue;
        QStringList parts {action->text(), action->shortcut().toString(), action->statusTip(),
                           action->toolTip() == QString(action->text()).remove(u'&') ? QString() : action->toolTip()};
        parts.removeAll(QString());
        lines << indent + parts.join(QStringLiteral(" | ")) + (action->isEnabled() ? QString() : QStringLiteral(" (off)"))
                + (action->isChecked() ? QStringLiteral(" (on)") : QString());
        if (action->menu())
            appendTexts(*action->menu(), indent + QStringLiteral("  "), lines);
    }
}

/// What one widget says itself.
inline QStringList ownTexts(const QWidget &widget)
{
    QStringList texts;
    if (const auto *label = qobject_cast<const QLabel *>(&widget))
        texts << label->text();
    else if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
        texts << button->text() << (button->isChecked() ? QStringLiteral("(on)") : QString());
    else if (const auto *group = qobject_cast<const QGroupBox *>(&widget))
        texts << group->title();
    else if (const auto *line = qobject_cast<const QLineEdit *>(&widget))
        texts << line->text() << line->placeholderText();
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

inline QStringList textsOf(const QMenu &menu)
{
    QStringList lines;
    appendTexts(menu, {}, lines);
    return lines;
}

inline QString differenceFromTexts(const QString &name, const QStringList &lines)
{
    QFile file(QStringLiteral(RUNEBOOK_TEST_DATA "/texts/%1.txt").arg(name));
    if (qEnvironmentVariableIsSet("RUNEBOOK_WRITE_TEXTS")) {
        QDir().mkpath(QStringLiteral(RUNEBOOK_TEST_DATA "/texts"));
        return file.open(QIODevice::WriteOnly) && file.write(lines.join(u'\n').toUtf8() + '\n') > 0
            ? QString()
            : file.fileName() + QStringLiteral(" cannot be written");
    }
    const QStringList expected =
        file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n') : QStringList();
    for (qsizetype i = 0; i < std::max(lines.size() + 1, expected.size()); ++i) {
        if (lines.value(i) != expected.value(i))
            return QStringLiteral("%1.txt:%2: “%3”\n   is now “%4”").arg(name).arg(i + 1).arg(expected.value(i), lines.value(i));
    }
    return {};
}

} // namespace runebook
