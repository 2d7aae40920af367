#include "editing/merge/MergeHeadings.h"

#include "merge/RecordMerge.h"
#include "platform/PlainText.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace runebook {

namespace {

/// A label that shows what there is room for.
class Heading : public QLabel
{
public:
    Heading(const QString &text, QWidget *parent) : QLabel(parent), m_whole(text)
    {
        setTextFormat(Qt::PlainText);
        setAccessibleName(text);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        setText(text);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(contentsRect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                         fontMetrics().elidedText(m_whole, Qt::ElideMiddle, contentsRect().width()));
    }

private:
    QString m_whole;
};

} // namespace

MergeHeadings::MergeHeadings(const MergeTitles &titles, QWidget *parent) : QWidget(parent)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    for (const MergeSide side : {MergeSide::Ours, MergeSide::Base, MergeSide::Theirs}) {
        const QString &title = titles[std::size_t(side)];
        const QString words = side == MergeSide::Ours ? tr("Ours: %1")
            : side == MergeSide::Base                 ? tr("Base: %1")
                                                      : tr("Theirs: %1");
        auto *heading = new Heading(words.arg(title), this);
        heading->setToolTip(escapedToolTip(title));
        layout->addWidget(heading, 1);
    }
}

} // namespace runebook
