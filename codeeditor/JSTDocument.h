#pragma once

#include "codeeditor/JSTTextViewDelegate.h"
#include "codeeditor/OfferedWords.h"
#include "codeeditor/TDTokenizer.h"
#include "codeeditor/TokenRuns.h"

#include <QFont>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

class VXCodeTextStorage;

Q_MOC_INCLUDE("codeeditor/JSTTextView.h")

/// Colours the Python of one code text view and completes its words. Every edit is coloured at once, and when
/// the user pauses the whole text runs through the tokenizer again; only blocks that came to look different
/// are touched, and colours are no part of the text: undo, caret, selection and the modified state never
/// notice. Main thread only.
class JSTDocument : public QObject, public JSTTextViewDelegate
{
    Q_OBJECT
    Q_INTERFACES(JSTTextViewDelegate)
    Q_PROPERTY(int fontSize READ fontSize WRITE setFontSize)
    Q_PROPERTY(QStringList autocompleteKeywords READ autocompleteKeywords WRITE setAutocompleteKeywords)
public:
    /// With a tokenizer of its own, or with \a tokenizer. Font size 13.
    explicit JSTDocument(QObject *parent = nullptr);
    explicit JSTDocument(std::shared_ptr<TDTokenizer> tokenizer, QObject *parent = nullptr);
    ~JSTDocument() override;

public: // what it works on
    Q_INVOKABLE JSTTextView *sourceText() const;
    /// Takes \a sourceText over: becomes its delegate, follows its text, aligns it to the left. Not owned.
    Q_INVOKABLE void setSourceText(JSTTextView *sourceText);
    Q_INVOKABLE std::shared_ptr<TDTokenizer> tokenizer() const { return m_tokenizer; }
    /// Colours the text anew; null changes nothing.
    Q_INVOKABLE void setTokenizer(const std::shared_ptr<TDTokenizer> &tokenizer);
    /// Who is told of changes and asked for more completions. Not owned; may be none, and may go.
    Q_INVOKABLE QObject *delegate() const { return m_delegate; }
    Q_INVOKABLE void setDelegate(QObject *delegate);

public: // colouring
    /// Colours the text unless it is the one coloured last; always when \a force is set. Text shorter than
    /// two characters keeps what it has; behind 500,000 characters only the default colour remains.
    Q_INVOKABLE void parseCode(bool force) { colour(force ? Pass::Always : Pass::WhenChanged); }
    enum class Pass {
        WhenChanged, ///< not of the text that was coloured last
        Always
    };
    /// The same for those who write C++.
    void colour(Pass pass);
    /// The text as it was coloured last; null before the first pass.
    Q_INVOKABLE QString sourceString() const { return m_sourceString; }
    /// Runs after each pass, on the same text; an empty function removes it.
    using PostProcessing = std::function<void(VXCodeTextStorage *)>;
    Q_INVOKABLE void addPostProcessing(const JSTDocument::PostProcessing &block);
    /// True in a string or a comment of the coloured text, where nobody waits for completions.
    Q_INVOKABLE bool isInStringOrComment(int index) const;

public: // font
    /// The user's fixed-pitch font at the font size; where there is none, "Monaco".
    Q_INVOKABLE QFont defaultFont() const;
    /// Points.
    int fontSize() const { return m_fontSize; }
    Q_INVOKABLE void setFontSize(int fontSize);

public: // completion
    const QStringList &autocompleteKeywords() const { return m_offeredWords.words(); }
    Q_INVOKABLE void setAutocompleteKeywords(const QStringList &words) { m_offeredWords.setWords(words); }

public: // kept for the console of the panel; nothing here reads it
    Q_INVOKABLE QVariantMap previousOutputTypingAttributes() const
    {
        return m_previousOutputTypingAttributes;
    }
    Q_INVOKABLE void setPreviousOutputTypingAttributes(const QVariantMap &map)
    {
        m_previousOutputTypingAttributes = map;
    }

public: // called by the text view
    Q_INVOKABLE void textDidChange(JSTTextView *view) override;
    Q_INVOKABLE void textViewDidChangeSelection(JSTTextView *view) override;
    bool textViewIsInStringOrComment(int index) const override { return isInStringOrComment(index); }
    Q_INVOKABLE QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(
        JSTTextView *view, const QStringList &words, runebook::TextRange range, int *selectedIndex) override;
    runebook::CompletionList textViewCompletionsToShow(JSTTextView *view, runebook::TextRange range) override;
    void textViewDescribeCompletion(JSTTextView *view, runebook::TextRange range,
                                    runebook::Completion &one) override;
    /// Never called by anybody, deliberately: the underscore keeps it out of editing. True when \a
    /// replacement has no character from U+00FF on.
    // NOLINTNEXTLINE(bugprone-virtual-near-miss)
    Q_INVOKABLE bool textView_ShouldChangeTextInRangeReplacementString(JSTTextView *view,
                                                                       runebook::TextRange range,
                                                                       const QString &replacement) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void textStorageDidProcessEditing(int from, int removed, int added);
    bool colourEdit(runebook::TextRange edited);
    enum class Scope { Changes, Everything };
    /// A change of looks that is part of one that the document is announcing anyway is announced with it.
    enum class Announce { WithTheEdit, ByItself };
    void colourText(Scope scope, runebook::TextRange edited, Announce announce);
    bool refreshFormats();
    bool formatsAreFresh() const;
    bool showsBlanks() const;
    QVariantMap blankAttributes(int index, runebook::TextRange *range) const;
    void paint(runebook::TextRange range, Announce announce);
    void applyParagraphStyle();
    JSTTextViewDelegate *delegateInterface() const;

    std::shared_ptr<TDTokenizer> m_tokenizer;
    QPointer<JSTTextView> m_sourceText;
    QPointer<VXCodeTextStorage> m_storage;
    QPointer<QObject> m_delegate;
    QString m_sourceString;
    PostProcessing m_postprocessingBlock;
    QVariantMap m_previousOutputTypingAttributes;
    runebook::OfferedWords m_offeredWords;
    mutable std::optional<QFont> m_font;
    int m_fontSize = 13;

    QTimer m_wholePass; // after the last edit
    runebook::TokenFormats m_formats;
    int m_formatsRevision = -1; // of the tokenizer's keywords; -1: to be made
    int m_formatsFontSize = 0;
    bool m_formatsShowBlanks = false;
    runebook::TokenRuns m_runs;
};
