#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QStringList>
#include <QWidget>
#include <algorithm>

namespace runebook {

/// A piece of text as a widget paints it: labels of its own that are no child widgets, cells, headings.
struct PaintedText {
    QString text;
    QPointF place; ///< of its base line, in the widget
    QColor color;
    QFont font;
};

class TextRecorder : public QPaintDevice
{
public:
    explicit TextRecorder(const QWidget &widget) : m_widget(widget) { }

    QList<PaintedText> texts() const { return m_engine.texts; }

    QPaintEngine *paintEngine() const override { return &m_engine; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_widget.width();
        case PdmHeight:
            return m_widget.height();
        case PdmDevicePixelRatioScaled:
            return int(devicePixelRatioFScale());
        case PdmDepth:
            return 32;
        case PdmDpiX:
        case PdmPhysicalDpiX:
            return m_widget.logicalDpiX();
        case PdmDpiY:
        case PdmPhysicalDpiY:
            return m_widget.logicalDpiY();
        default:
            return 1;
        }
    }

private:
    class Engine : public QPaintEngine
    {
    public:
        Engine() : QPaintEngine(AllFeatures) { }
        bool begin(QPaintDevice *) override { return true; }
        bool end() override { return true; }
        void updateState(const QPaintEngineState &) override { }
        void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override { }
        void drawPath(const QPainterPath &) override { }
        void drawPolygon(const QPointF *, int, PolygonDrawMode) override { }
        Type type() const override { return User; }
        void drawTextItem(const QPointF &place, const QTextItem &item) override
        {
            texts.append({item.text(), painter()->deviceTransform().map(place), painter()->pen().color(),
                          item.font()});
        }
        QList<PaintedText> texts;
    };

    const QWidget &m_widget;
    mutable Engine m_engine;
};

/// What \a widget itself paints, without its children, in the order of painting.
inline QList<PaintedText> paintedTexts(QWidget &widget)
{
    TextRecorder recorder(widget);
    widget.render(&recorder, {}, {}, {});
    return recorder.texts();
}

/// The first of them that is \a text.
inline PaintedText painted(QWidget &widget, const QString &text)
{
    const QList<PaintedText> all = paintedTexts(widget);
    const auto found =
        std::ranges::find_if(all, [&text](const PaintedText &each) { return each.text == text; });
    return found == all.end() ? PaintedText() : *found;
}

} // namespace runebook
