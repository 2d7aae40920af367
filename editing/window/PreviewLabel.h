#pragma once

#include "editing/window/PreviewPicture.h"

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
    const PreviewPicture &picture() const { return m_picture; }
    /// What is to be said of characters that cannot be shown; null when there are none.
    QString remark() const;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    FormattedText m_text;
    PreviewPicture m_picture;
};

} // namespace runebook
