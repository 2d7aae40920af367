#pragma once

#include <QToolButton>

namespace runebook {

/// Says in the search field where is searched; pressing it takes that away.
class SearchChip : public QToolButton
{
    Q_OBJECT
public:
    explicit SearchChip(QWidget *field);
    /// An empty place leaves nothing to say.
    void setPlace(const QString &place);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace runebook
