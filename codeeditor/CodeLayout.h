#pragma once

#include <QPlainTextDocumentLayout>

namespace runebook {

/// The layout of plain text with two things more: wrapped lines hang by a head indent, and a little space
/// stands below each paragraph. Both in pixels.
class CodeLayout : public QPlainTextDocumentLayout
{
    Q_OBJECT
public:
    explicit CodeLayout(QTextDocument *document);

    qreal headIndent() const { return m_headIndent; }
    qreal paragraphSpacing() const { return m_paragraphSpacing; }
    /// Lays everything out anew when one of them changes.
    void setParagraphStyle(qreal headIndent, qreal paragraphSpacing);

    QRectF blockBoundingRect(const QTextBlock &block) const override;

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;

private:
    void hang(const QTextBlock &block) const;

    int m_blockCount = 0; // as of the last change
    qreal m_headIndent = 0;
    qreal m_paragraphSpacing = 0;
};

} // namespace runebook
