#pragma once

#include "codeeditor/TextRange.h"

#include <QPlainTextDocumentLayout>
#include <optional>

namespace runebook {

/// The layout of plain text with some things more: wrapped lines hang by a head indent, a little space stands
/// below each paragraph, and a paragraph is laid out once for each change, in linear time however long it is.
/// All measures are pixels.
class CodeLayout : public QPlainTextDocumentLayout
{
    Q_OBJECT
public:
    explicit CodeLayout(QTextDocument *document);

    /// Longer paragraphs break anywhere, as looking for the place to break a word costs the square of its
    /// length, and are not shaped: in a code font that is seen at combining marks at most.
    static constexpr int kLongestShapedBlock = 10'000;

    qreal headIndent() const { return m_headIndent; }
    qreal paragraphSpacing() const { return m_paragraphSpacing; }
    /// Lays everything out anew when one of them changes.
    void setParagraphStyle(qreal headIndent, qreal paragraphSpacing);
    /// The width at which the view wraps lines, margins included, set before the view lays anything out for
    /// it; 0: lines do not wrap, or the width is not known.
    void setWrapWidth(qreal width) { m_wrapWidth = width; }
    qreal wrapWidth() const { return m_wrapWidth; }

    QRectF blockBoundingRect(const QTextBlock &block) const override;

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;

private:
    bool isLaidOut(const QTextBlock &block) const;
    void layOut(const QTextBlock &block) const;
    void blockChanged(const QTextBlock &block);
    QTextBlock lastChangedBlock(int from, int charsAdded);

    int m_blockCount = 0; // as of the last change
    std::optional<TextRange> m_edited; // what the change being announced wrote, without what colours touched
    qreal m_wrapWidth = 0;
    qreal m_headIndent = 0;
    qreal m_paragraphSpacing = 0;
};

} // namespace runebook
