#pragma once

#include "codeeditor/LineTable.h"

#include <QColor>
#include <QDataStream>
#include <QFont>
#include <QPointer>
#include <QVariantMap>
#include <QWidget>
#include <optional>

class QAbstractScrollArea;
class QPlainTextEdit;

Q_MOC_INCLUDE(<QPlainTextEdit>)

/// The ruler with line numbers at the left of a text view. Lines are lines of text: a wrapped one has one
/// number, beside its first row. A click on a number selects the line, a drag several. The ruler asks for its
/// thickness (ruleThicknessChanged) and is placed by the view that shows it. All measures are pixels.
class VXLineNumberView : public QWidget
{
    Q_OBJECT
public:
    /// For the scroll view \a scrollView, whose text is the client when it is a plain text view.
    explicit VXLineNumberView(QAbstractScrollArea *scrollView);
    ~VXLineNumberView() override;

public: // the text whose lines are numbered
    Q_INVOKABLE QPlainTextEdit *clientView() const;
    /// Follows \a clientView, or nothing when it is no plain text view. Not owned.
    Q_INVOKABLE void setClientView(QWidget *clientView);

public: // lines; indexes are UTF-16 units of the text
    /// Where each line starts; recounted first when something is stale. At least [0] for a text view.
    Q_INVOKABLE QList<int> lineIndices();
    /// Declares the lines from that of \a index on stale.
    Q_INVOKABLE void invalidateLineIndicesFromCharacterIndex(int index);
    Q_INVOKABLE int invalidCharacterIndex() const { return m_lines.staleFrom(); }
    /// The 0-based line that contains \a index. The text is the client's own and is not looked at.
    Q_INVOKABLE int lineNumberForCharacterIndexInText(int index, const QString &text = QString());
    /// The 1-based line whose first row contains \a location, from the ruler's top; nothing when none does.
    std::optional<int> lineNumberForLocation(qreal location);

public: // size
    /// The width that the ruler needs for its largest number.
    Q_INVOKABLE qreal requiredThickness();
    Q_INVOKABLE qreal ruleThickness() const { return m_ruleThickness; }
    Q_INVOKABLE void setRuleThickness(qreal thickness);
    Q_INVOKABLE int leftMargin() const { return m_leftMargin; }
    Q_INVOKABLE void setLeftMargin(int margin);
    Q_INVOKABLE int rightMargin() const { return m_rightMargin; }
    Q_INVOKABLE void setRightMargin(int margin);

public: // looks; an unset font or colour stands for the default
    Q_INVOKABLE QFont font() const { return m_font.value_or(defaultFont()); }
    void setFont(const std::optional<QFont> &font);
    Q_INVOKABLE QColor textColor() const { return m_textColor.value_or(defaultTextColor()); }
    void setTextColor(const std::optional<QColor> &color);
    Q_INVOKABLE QColor alternateTextColor() const
    {
        return m_alternateTextColor.value_or(defaultAlternateTextColor());
    }
    void setAlternateTextColor(const std::optional<QColor> &color) { m_alternateTextColor = color; }
    std::optional<QColor> backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const std::optional<QColor> &color);
    Q_INVOKABLE bool drawsDivider() const { return m_drawsDivider; }
    Q_INVOKABLE void setDrawsDivider(bool draws) { m_drawsDivider = draws; }
    Qt::Alignment alignment() const { return m_alignment; }
    void setAlignment(Qt::Alignment alignment);
    Q_INVOKABLE QFont defaultFont() const;
    Q_INVOKABLE QColor defaultTextColor() const;
    Q_INVOKABLE QColor defaultAlternateTextColor() const;
    /// "NSFont" and "NSColor" of the labels.
    Q_INVOKABLE QVariantMap textAttributes() const;

public: // archives: font, the three colours and the divider; margins and alignment are not kept
    /// By the keys "font", "textColor", "alternateTextColor", "backgroundColor", "drawsDivider".
    Q_INVOKABLE QVariantMap encodeWithCoder() const;
    Q_INVOKABLE void initWithCoder(const QVariantMap &archive);
    /// The same five without keys, in that order.
    void encodeWithCoder(QDataStream &archive) const;
    void initWithCoder(QDataStream &archive);

Q_SIGNALS:
    void ruleThicknessChanged(qreal thickness);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void textStorageDidProcessEditing(int from, int removed, int added);
    void calculateLines();
    void applyRequiredThickness();
    void drawHashMarksAndLabels(QPainter &painter, const QRect &area);
    void followView(const QRect &area, int dy);
    QRect firstRowOfLine(int start) const;
    int lineAt(const QPoint &position);
    void selectLines(int first, int last);

    QPointer<QPlainTextEdit> m_clientView;
    QMetaObject::Connection m_textConnection;
    runebook::LineTable m_lines;
    std::optional<QFont> m_font;
    std::optional<QColor> m_textColor;
    std::optional<QColor> m_alternateTextColor;
    std::optional<QColor> m_backgroundColor;
    bool m_drawsDivider = true;
    int m_leftMargin = 5;
    int m_rightMargin = 5;
    Qt::Alignment m_alignment = Qt::AlignRight;
    qreal m_ruleThickness = 0;
    int m_anchorLine = -1; // of a selection by clicks, 0-based
};
