#include "editing/records/ChoiceCells.h"

#include <QLabel>
#include <QLayout>
#include <QPainter>
#include <QStyle>

namespace runebook {

namespace {

/// A cell; lit with a rounded frame, which shows in every colour of the title.
class Cell : public QLabel
{
public:
    using QLabel::QLabel;
    void setLit(bool lit)
    {
        m_isLit = lit;
        update();
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        if (m_isLit) {
            QPainter painter(this);
            painter.setRenderHint(QPainter::Antialiasing);
            QColor ink = palette().color(QPalette::WindowText);
            ink.setAlphaF(0.6F);
            painter.setPen(ink);
            ink.setAlphaF(0.12F);
            painter.setBrush(ink);
            const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
            painter.drawRoundedRect(area, 5, 5);
        }
        QLabel::paintEvent(event);
    }

private:
    bool m_isLit = false;
};

/// Lays widgets out beside each other, in as many lines as they need.
class LinesLayout : public QLayout
{
public:
    explicit LinesLayout(QWidget *parent) : QLayout(parent)
    {
        setContentsMargins(0, 0, 0, 0);
        setSpacing(1);
    }
    ~LinesLayout() override { qDeleteAll(m_items); }
    Q_DISABLE_COPY_MOVE(LinesLayout)

    void addItem(QLayoutItem *item) override { m_items << item; }
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem *itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem *takeAt(int index) override
    {
        return index >= 0 && index < count() ? m_items.takeAt(index) : nullptr;
    }
    QSize sizeHint() const override
    {
        QSize all;
        for (const QLayoutItem *item : m_items)
            all = {all.width() + item->sizeHint().width() + spacing(),
                   qMax(all.height(), item->sizeHint().height())};
        return all;
    }
    QSize minimumSize() const override
    {
        QSize widest;
        for (const QLayoutItem *item : m_items)
            widest = widest.expandedTo(item->sizeHint());
        return widest;
    }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override
    {
        return layOut({0, 0, width, 0}, [](auto &&...) {});
    }
    void setGeometry(const QRect &area) override
    {
        QLayout::setGeometry(area);
        const Qt::LayoutDirection direction = parentWidget()->layoutDirection();
        layOut(area, [&](QLayoutItem &item, const QRect &place) {
            item.setGeometry(QStyle::visualRect(direction, area, place));
        });
    }

private:
    /// Tells \a put the place of each item; the height of all.
    template <typename Put> int layOut(const QRect &area, Put put) const
    {
        QPoint next = area.topLeft();
        int lineHeight = 0;
        for (QLayoutItem *item : m_items) {
            const QSize size = item->sizeHint();
            if (next.x() > area.x() && next.x() + size.width() > area.x() + area.width()) {
                next = {area.x(), next.y() + lineHeight + spacing()};
                lineHeight = 0;
            }
            put(*item, QRect(next, size));
            next.rx() += size.width() + spacing();
            lineHeight = qMax(lineHeight, size.height());
        }
        return next.y() + lineHeight - area.y();
    }

    QList<QLayoutItem *> m_items;
};

} // namespace

ChoiceCells::ChoiceCells(const QString &title, const QList<Choice> &choices, QWidget *parent)
    : QWidget(parent), m_title(title), m_choices(choices)
{
    auto *lines = new LinesLayout(this);
    for (const Choice &choice : choices) {
        auto *cell = new Cell(choice.title, this);
        cell->setTextFormat(Qt::PlainText);
        cell->setContentsMargins(6, 2, 6, 2);
        lines->addWidget(cell);
        m_cells << cell;
    }
    setChosen({});
}

QStringList ChoiceCells::titles() const
{
    QStringList titles;
    for (const QLabel *cell : m_cells)
        titles << cell->text();
    return titles;
}

QList<QObject *> ChoiceCells::cells() const
{
    return {m_cells.begin(), m_cells.end()};
}

QColor ChoiceCells::titleColor() const
{
    return m_cells.first()->palette().color(QPalette::WindowText);
}

void ChoiceCells::setTitleColor(const QColor &color)
{
    for (QLabel *cell : std::as_const(m_cells)) {
        QPalette palette = cell->palette();
        palette.setColor(QPalette::WindowText, color);
        cell->setPalette(palette);
        cell->setFont(m_cells.first()->font());
    }
}

void ChoiceCells::setChosen(const QSet<int> &values)
{
    m_chosen = values;
    QStringList lit;
    for (qsizetype i = 0; i < m_cells.size(); ++i) {
        const bool isLit = values.contains(m_choices.at(i).value);
        static_cast<Cell *>(m_cells.at(i))->setLit(isLit);
        if (isLit)
            lit << m_cells.at(i)->text();
    }
    setAccessibleName(lit.isEmpty() ? m_title : tr("%1: %2").arg(m_title, lit.join(QStringLiteral(", "))));
}

} // namespace runebook
