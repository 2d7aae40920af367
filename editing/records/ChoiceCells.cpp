#include "editing/records/ChoiceCells.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

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

} // namespace

ChoiceCells::ChoiceCells(const QString &title, const QList<Choice> &choices, QWidget *parent)
    : QWidget(parent), m_title(title), m_choices(choices)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(1);
    for (const Choice &choice : choices) {
        auto *cell = new Cell(choice.title, this);
        cell->setTextFormat(Qt::PlainText);
        cell->setContentsMargins(6, 2, 6, 2);
        row->addWidget(cell);
        m_cells << cell;
    }
    row->addStretch();
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
