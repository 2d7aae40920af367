#pragma once

#include <QLayout>
#include <memory>
#include <vector>

namespace runebook {

/// Items behind each other, in lines as wide as there is room.
class FlowLayout : public QLayout
{
    Q_OBJECT
public:
    explicit FlowLayout(QWidget *parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return place({0, 0, width, 0}, false); }
    QSize minimumSize() const override;
    QSize sizeHint() const override { return minimumSize(); }
    void setGeometry(const QRect &room) override;

private:
    /// The height that the items take in \a room; moved there when \a isMoving.
    int place(const QRect &room, bool isMoving) const;

    std::vector<std::unique_ptr<QLayoutItem>> m_items;
};

} // namespace runebook
