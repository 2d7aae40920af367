#include "codeeditor/CompletionPopup.h"

#include "codeeditor/CodeColors.h"
#include "platform/PlainLabel.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStyledItemDelegate>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr int kNarrowest = 160;
constexpr int kWidest = 480;
constexpr int kDescriptionWidth = 300;
constexpr int kKindGap = 24; // between a name and its kind
constexpr qreal kKindSize = 0.85; // of the names' font
constexpr int kKindRole = Qt::UserRole;

QFont kindFont(QFont font)
{
    font.setPointSizeF(font.pointSizeF() * kKindSize);
    return font;
}

/// A name at the left and, fainter, its kind at the right.
class NameAndKind : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem name = option;
        const int width = kindWidth(option, index);
        const bool isCurrent = option.state.testFlag(QStyle::State_Selected);
        if (isCurrent)
            painter->fillRect(option.rect, option.palette.highlight());
        name.rect.adjust(0, 0, -width, 0);
        QStyledItemDelegate::paint(painter, name, index);
        painter->setPen(isCurrent ? option.palette.color(QPalette::HighlightedText)
                                  : secondaryLabelColor(option.palette));
        painter->setFont(kindFont(option.font));
        painter->drawText(option.rect.adjusted(0, 0, -6, 0), Qt::AlignRight | Qt::AlignVCenter,
                          index.data(kKindRole).toString());
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const int width = kindWidth(option, index);
        return QStyledItemDelegate::sizeHint(option, index) + QSize(width, 0);
    }

private:
    static int kindWidth(const QStyleOptionViewItem &option, const QModelIndex &index)
    {
        const QString kind = index.data(kKindRole).toString();
        return kind.isEmpty() ? 0 : QFontMetrics(kindFont(option.font)).horizontalAdvance(kind) + kKindGap;
    }
};

QColor blended(const QColor &over, const QColor &under, qreal share)
{
    const auto mix = [share](int a, int b) { return qRound(a * share + b * (1 - share)); };
    return QColor(mix(over.red(), under.red()), mix(over.green(), under.green()),
                  mix(over.blue(), under.blue()));
}

} // namespace

CompletionPopup::CompletionPopup(QWidget *editor)
    : QFrame(editor), m_list(new QListWidget), m_description(plainLabel({}))
{
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setFrameStyle(QFrame::Box | QFrame::Plain);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setFrameStyle(QFrame::NoFrame);
    m_list->setUniformItemSizes(true);
    m_list->setMinimumSize(1, 1); // of a list of one row
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setItemDelegate(new NameAndKind(m_list));
    m_list->setAccessibleName(tr("Completions"));
    m_description->setWordWrap(true);
    m_description->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_description->setMargin(8);
    m_description->setFixedWidth(kDescriptionWidth);
    m_description->setAutoFillBackground(true);
    m_description->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    m_description->hide();
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_description);
    connect(m_list, &QListWidget::currentRowChanged, this, &CompletionPopup::currentChanged);
    connect(m_list, &QListWidget::clicked, this,
            [this](const QModelIndex &index) { Q_EMIT clicked(index.row()); });
}

void CompletionPopup::popUp(const CompletionList &offered, int current, const QRect &caret)
{
    takeLooksOf(*parentWidget());
    {
        const QSignalBlocker blocker(m_list);
        m_list->clear();
        for (const Completion &one : offered) {
            auto *item = new QListWidgetItem(one.text.sliced(one.text.lastIndexOf(u'.') + 1), m_list);
            item->setData(kKindRole, one.kind);
            item->setData(Qt::AccessibleTextRole,
                          one.kind.isEmpty() ? one.text : tr("%1, %2").arg(one.text, one.kind));
        }
    }
    m_caret = caret;
    setCurrent(current);
    place();
    show();
    raise();
}

int CompletionPopup::current() const
{
    return m_list->currentRow();
}

void CompletionPopup::setCurrent(int row)
{
    m_list->setCurrentRow(std::clamp(row, 0, m_list->count() - 1));
    m_list->scrollToItem(m_list->currentItem());
}

void CompletionPopup::setChosen(bool isChosen)
{
    // A list without the focus draws its choice greyed out; this one works without ever having it.
    const QPalette &colors = parentWidget()->palette();
    const QColor base = colors.color(QPalette::Active, QPalette::Base);
    const QColor highlight = colors.color(QPalette::Active, QPalette::Highlight);
    QPalette list = palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        list.setColor(group, QPalette::Highlight, isChosen ? highlight : blended(highlight, base, 0.2));
        list.setColor(group, QPalette::HighlightedText,
                      colors.color(QPalette::Active, isChosen ? QPalette::HighlightedText : QPalette::Text));
    }
    m_list->setPalette(list);
}

void CompletionPopup::setDescription(const QString &signature, const QString &help)
{
    const QString gap = signature.isEmpty() || help.isEmpty() ? QString() : u"\n\n"_s;
    m_description->setText(signature + gap + help);
    m_description->setVisible(!m_description->text().isEmpty());
    if (isVisible())
        place();
}

void CompletionPopup::takeLooksOf(const QWidget &editor)
{
    m_list->setFont(editor.font());
    QPalette colors = editor.palette();
    colors.setColor(QPalette::WindowText, tertiaryLabelColor(colors)); // the frame
    setPalette(colors);
    colors = editor.palette();
    colors.setColor(QPalette::Window, colors.color(QPalette::AlternateBase));
    colors.setColor(QPalette::WindowText, colors.color(QPalette::Text));
    m_description->setPalette(colors);
}

void CompletionPopup::place()
{
    const int frame = 2 * frameWidth();
    const int rows = m_list->count();
    const int bar = rows > kVisibleRows ? m_list->verticalScrollBar()->sizeHint().width() : 0;
    const bool describes = !m_description->isHidden();
    const int list = std::clamp(m_list->sizeHintForColumn(0) + bar + 12, kNarrowest, kWidest);
    int height = std::min(rows, kVisibleRows) * m_list->sizeHintForRow(0);
    if (describes)
        height = std::max(height,
                          std::min(m_description->heightForWidth(kDescriptionWidth),
                                   kVisibleRows * m_list->sizeHintForRow(0)));
    QRect box(m_caret.bottomLeft() + QPoint(0, 2),
              QSize(list + (describes ? kDescriptionWidth : 0) + frame, height + frame));
    if (const QScreen *screen = QGuiApplication::screenAt(m_caret.center())) {
        const QRect available = screen->availableGeometry();
        if (box.bottom() > available.bottom())
            box.moveBottom(m_caret.top() - 2);
        box.moveRight(std::min(box.right(), available.right()));
        box.moveLeft(std::max(box.left(), available.left()));
    }
    setGeometry(box);
}

} // namespace runebook
