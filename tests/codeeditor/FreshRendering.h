#pragma once

#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/TDTokenizer.h"
#include "codeeditor/VXCodeTextStorage.h"
#include "codeeditor/VXLineNumberView.h"
#include "tests/ScreenMain.h"

#include <QScrollBar>
#include <QTextBlock>

namespace runebook {

/// An editor made anew with the text, the size, the selection and the place of another: what that one ought
/// to show. Carets are left out on both sides (setCursorWidth(0)), as the keyboard is in one only.
class FreshRendering
{
public:
    explicit FreshRendering(JSTTextView &shown)
        : m_shown(painted(shown)), m_document(qobject_cast<JSTDocument *>(shown.delegate())->tokenizer())
    {
        const auto *original = qobject_cast<JSTDocument *>(shown.delegate());
        m_view.setAttribute(Qt::WA_DontShowOnScreen);
        m_view.setCursorWidth(0);
        // Without the keyboard a selection may look fainter.
        QPalette colors = shown.palette();
        for (const QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText})
            colors.setBrush(QPalette::Inactive, role, colors.brush(QPalette::Active, role));
        m_view.setPalette(colors);
        m_view.setFrameStyle(shown.frameStyle());
        m_view.setVerticalScrollBarPolicy(shown.verticalScrollBar()->isVisible() ? Qt::ScrollBarAlwaysOn
                                                                                 : Qt::ScrollBarAlwaysOff);
        m_document.setFontSize(original->fontSize());
        m_document.setSourceText(&m_view);
        m_view.setHeadIndent(shown.headIndent());
        m_view.setWrapColumn(shown.wrapColumn());
        if (shown.lineNumberView())
            m_view.setupLineNumberview();
        m_view.resize(shown.size());
        m_view.setString(shown.string());
        m_view.show();
        if (shown.lineNumberView()) // follows its needs with a tolerance of a pixel
            m_view.lineNumberView()->setRuleThickness(shown.lineNumberView()->ruleThickness());
        m_view.setSelectedRange(shown.selectedRange());
        scrollAsShown();
    }

    /// What is wrong on the screen, as a text for a failure; empty when nothing is. Keeps both pictures.
    QString difference()
    {
        QString wrong = differenceOfPart(*m_shown.viewport(), *m_view.viewport());
        if (wrong.isEmpty() && m_shown.lineNumberView())
            wrong = differenceOfPart(*m_shown.lineNumberView(), *m_view.lineNumberView());
        return wrong;
    }

private:
    /// Bars come and go with the painting, which waits for the screen where the window was just shown.
    static JSTTextView &painted(JSTTextView &shown)
    {
        (void)QTest::qWaitForWindowExposed(&shown);
        letPaint();
        return shown;
    }

    static QString differenceOfPart(QWidget &shown, QWidget &fresh)
    {
        const QImage wanted = fresh.grab().toImage().convertToFormat(QImage::Format_RGB32);
        QImage screen;
        QRect around;
        // Nothing paints of itself: what was forgotten stays forgotten, what a busy machine is late with
        // comes.
        const bool isAsWanted = QTest::qWaitFor([&] {
            screen = screenOf(shown);
            around = differenceOf(screen, wanted);
            return around.isEmpty();
        });
        if (isAsWanted)
            return {};
        const QString folder = qEnvironmentVariable("RUNEBOOK_PICTURES", QDir::tempPath());
        screen.save(folder + QStringLiteral("/shown.png"));
        wanted.save(folder + QStringLiteral("/wanted.png"));
        return QStringLiteral("%1 of %2 x %3: %4, %5 to %6, %7")
            .arg(QString::fromLatin1(shown.metaObject()->className()))
            .arg(screen.width())
            .arg(screen.height())
            .arg(around.left())
            .arg(around.top())
            .arg(around.right())
            .arg(around.bottom());
    }

    /// Rows are counted as far as they were laid out, so places are told by paragraph and row in it.
    void scrollAsShown()
    {
        for (QTextBlock block = m_view.document()->begin(); block.isValid(); block = block.next())
            m_view.document()->documentLayout()->blockBoundingRect(block);
        const QTextBlock top = m_shown.cursorForPosition(QPoint(0, 0)).block();
        const int row = m_shown.verticalScrollBar()->value() - top.firstLineNumber();
        m_view.verticalScrollBar()->setValue(
            m_view.document()->findBlockByNumber(top.blockNumber()).firstLineNumber() + row);
    }

    JSTTextView &m_shown;
    JSTTextView m_view;
    JSTDocument m_document;
};

} // namespace runebook
