#include "scripting/classes/ScriptMenuItems.h"

namespace runebook::MenuItem {

using namespace Qt::StringLiterals;

namespace {

constexpr char kTag[] = "tag";
constexpr char kTitle[] = "title";
constexpr char kPlainToolTip[] = "plainToolTip";
constexpr char kRepresentedObject[] = "representedObject";

constexpr qsizetype kLongestTitle = 80;
constexpr qsizetype kLongestToolTip = 1000;

QString elided(const QString &text, qsizetype longest)
{
    if (text.size() <= longest)
        return text;
    const qsizetype end = text[longest - 1].isHighSurrogate() ? longest - 1 : longest;
    return text.left(end) + u'…';
}

/// A tab would begin the column of shortcuts, and some control characters turn the direction of what follows.
QString withoutControls(QString text, bool keepsLines)
{
    for (QChar &character : text) {
        const bool isKept = keepsLines && character == u'\n';
        const QChar::Category category = character.category();
        if (!isKept
            && (category == QChar::Other_Control || category == QChar::Other_Format
                || category == QChar::Separator_Line || category == QChar::Separator_Paragraph))
            character = u' ';
    }
    return text;
}

QString withoutMnemonic(const QString &text)
{
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'&' && ++i == text.size())
            break;
        plain += text[i];
    }
    return plain;
}

} // namespace

int tag(const QAction &item)
{
    return item.property(kTag).toInt();
}

void setTag(QAction &item, int tag)
{
    item.setProperty(kTag, tag);
}

QString title(const QAction &item)
{
    const QVariant own = item.property(kTitle);
    return own.isValid() ? own.toString() : withoutMnemonic(item.text());
}

void setTitle(QAction &item, const QString &title)
{
    const QString shown = withoutControls(elided(title, kLongestTitle), false).replace(u'&', "&&"_L1);
    // There may be thousands of items, and a dynamic property takes as long as everything else of one.
    if (withoutMnemonic(shown) != title)
        item.setProperty(kTitle, title);
    else if (item.property(kTitle).isValid())
        item.setProperty(kTitle, QVariant());
    item.setText(shown);
}

QString toolTip(const QAction &item)
{
    return item.property(kPlainToolTip).toString();
}

void setToolTip(QAction &item, const QString &toolTip)
{
    item.setProperty(kPlainToolTip, toolTip);
    const QString shown = withoutControls(elided(toolTip, kLongestToolTip), true).toHtmlEscaped();
    // Lines stay lines.
    item.setToolTip(shown.isEmpty()
                        ? QString()
                        : "<qt><div style=\"white-space:pre-wrap\">"_L1 + shown + "</div></qt>"_L1);
}

QVariant representedObject(const QAction &item)
{
    const QVariant property = item.property(kRepresentedObject);
    return property.isValid() ? property : item.data();
}

void setRepresentedObject(QAction &item, const QVariant &object)
{
    item.setData(object);
}

QAction *withTag(const QList<QAction *> &actions, int wanted)
{
    const auto found = std::find_if(actions.begin(), actions.end(),
                                    [wanted](const QAction *item) { return tag(*item) == wanted; });
    return found == actions.end() ? nullptr : *found;
}

} // namespace runebook::MenuItem
