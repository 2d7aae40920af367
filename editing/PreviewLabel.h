#pragma once

#include "document/VXDocument.h"

#include <QWidget>

namespace runebook {

/// Shows the preview of one record, centred and as large as there is room.
class PreviewLabel : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text)
public:
    explicit PreviewLabel(QWidget *parent = nullptr);
    void setFormattedText(const FormattedText &text);
    void clear() { setFormattedText({}); }
    QString text() const { return m_text.text; }
    /// The same, never null.
    Q_INVOKABLE QString stringValue() const { return QStringLiteral("") + m_text.text; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    FormattedText m_text;
};

} // namespace runebook
