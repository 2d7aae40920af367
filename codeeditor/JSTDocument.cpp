#include "codeeditor/JSTDocument.h"

#include "codeeditor/CodeLayout.h"
#include "codeeditor/FormatOverlay.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QEvent>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTextOption>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

constexpr int kMinimumFontSize = 6;
constexpr int kMinimumColouredLength = 2;
constexpr qreal kParagraphSpacing = 2; // points
constexpr int kPauseMs = 250;

} // namespace

JSTDocument::JSTDocument(QObject *parent) : JSTDocument(std::make_shared<TDTokenizer>(), parent) { }

JSTDocument::JSTDocument(std::shared_ptr<TDTokenizer> tokenizer, QObject *parent)
    : QObject(parent), m_tokenizer(std::move(tokenizer))
{
    m_wholePass.setSingleShot(true);
    m_wholePass.setInterval(kPauseMs);
    connect(&m_wholePass, &QTimer::timeout, this,
            [this] { colourText(Scope::Changes, {}, Announce::ByItself); });
}

JSTDocument::~JSTDocument() = default;

JSTTextView *JSTDocument::sourceText() const
{
    return m_sourceText;
}

void JSTDocument::setSourceText(JSTTextView *sourceText)
{
    if (m_sourceText == sourceText)
        return;
    if (m_sourceText)
        m_sourceText->removeEventFilter(this);
    if (m_storage) {
        m_storage->disconnect(this);
        m_storage->setBlankAttributes({});
    }
    m_sourceText = sourceText;
    m_storage = sourceText ? sourceText->textStorage() : nullptr;
    m_wholePass.stop();
    m_sourceString = QString();
    m_runs.clear();
    if (!sourceText)
        return;
    sourceText->setDelegate(this);
    sourceText->installEventFilter(this);
    m_storage->setBlankAttributes([document = QPointer(this)](int index, TextRange *range) {
        return document ? document->blankAttributes(index, range) : QVariantMap();
    });
    connect(m_storage, &QTextDocument::contentsChange, this, &JSTDocument::textStorageDidProcessEditing);
    connect(sourceText, &JSTTextView::headIndentChanged, this, &JSTDocument::applyParagraphStyle);
    // Left, not natural: code in a right-to-left script still begins at the left.
    QTextOption option = m_storage->defaultTextOption();
    option.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(Qt::LeftToRight);
    m_storage->setDefaultTextOption(option);
    applyParagraphStyle();
    colour(Pass::Always);
}

void JSTDocument::setDelegate(QObject *delegate)
{
    m_delegate = delegate;
}

JSTTextViewDelegate *JSTDocument::delegateInterface() const
{
    return qobject_cast<JSTTextViewDelegate *>(m_delegate.data());
}

void JSTDocument::setTokenizer(const std::shared_ptr<TDTokenizer> &tokenizer)
{
    if (!tokenizer || tokenizer == m_tokenizer)
        return;
    m_tokenizer = tokenizer;
    m_formatsRevision = -1;
    m_runs.clear();
    colour(Pass::Always);
}

void JSTDocument::addPostProcessing(const PostProcessing &block)
{
    m_postprocessingBlock = block;
}

QFont JSTDocument::defaultFont() const
{
    if (!m_font) {
        QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        if (font.family().isEmpty())
            font = QFont(u"Monaco"_s);
        font.setPointSize(m_fontSize);
        m_font = font;
    }
    return *m_font;
}

void JSTDocument::setFontSize(int fontSize)
{
    if (fontSize == m_fontSize)
        return;
    m_fontSize = fontSize;
    m_font.reset();
    colour(Pass::Always);
    applyParagraphStyle();
}

/// The looks of paragraphs: font, a tab of four digits, the hanging indent, some space. They hold for the
/// whole text whatever is in it, so they change with what they depend on, not with each pass.
void JSTDocument::applyParagraphStyle()
{
    if (!m_sourceText || !m_storage)
        return;
    const QFont font = defaultFont();
    if (m_sourceText->font() != font)
        m_sourceText->setFont(font);
    const qreal tab = QFontMetricsF(font).horizontalAdvance(u"0000"_s);
    if (!qFuzzyCompare(m_sourceText->tabStopDistance(), tab))
        m_sourceText->setTabStopDistance(tab);
    constexpr qreal kPointsPerInch = 72;
    const qreal spacing = qRound(kParagraphSpacing * m_sourceText->logicalDpiY() / kPointsPerInch);
    m_storage->codeLayout().setParagraphStyle(m_sourceText->headIndent(), spacing);
}

void JSTDocument::textStorageDidProcessEditing(int from, int removed, int added)
{
    Q_UNUSED(removed)
    const TextRange edited = TextRange {from, added}.clampedTo(m_storage->length());
    if (!colourEdit(edited)) {
        m_wholePass.stop();
        colourText(Scope::Changes, edited, Announce::WithTheEdit);
    }
}

void JSTDocument::colour(Pass pass)
{
    if (m_fontSize < kMinimumFontSize) {
        m_fontSize = kMinimumFontSize;
        m_font.reset();
    }
    if (!m_storage)
        return;
    if (pass == Pass::Always)
        colourText(Scope::Everything, {}, Announce::ByItself);
    else if (m_sourceString.isNull() || m_sourceString != m_storage->string())
        colourText(Scope::Changes, {}, Announce::ByItself);
}

/// Colours what an edit that made \a edited changed, from the last token in front of it to the first that is
/// as before: what the whole pass would find, in time for the next frame. The whole pass follows when typing
/// pauses. False, and nothing is done, when there is nothing to go on from.
bool JSTDocument::colourEdit(TextRange edited)
{
    const int newLength = m_storage->length();
    const int removed = int(m_sourceString.size()) - newLength + edited.length;
    if (m_sourceString.isNull() || m_runs.isEmpty() || newLength < kMinimumColouredLength
        || !formatsAreFresh() || m_postprocessingBlock || m_formats.defaultIndex() != TokenFormats::kNone
        || removed < 0 || removed > m_sourceString.size() - edited.location)
        return false;
    const QString inserted = m_storage->substringWithRange(edited);
    if (QStringView(m_sourceString).sliced(edited.location, removed) == inserted) {
        // The same text, but its blocks may be new ones: replaced by their like, or undone and redone.
        paint(edited, Announce::WithTheEdit);
        return true;
    }
    m_tokenizer->setString(QString()); // or the next line would copy the text
    m_sourceString.replace(edited.location, removed, inserted);
    m_tokenizer->setString(m_sourceString);
    const TextRange changed = m_runs.rescan(*m_tokenizer, m_formats, edited.location, removed, edited.length);
    paint(changed.united(edited), Announce::WithTheEdit);
    m_wholePass.start();
    return true;
}

/// The whole pass. \a edited is what changed since the last one, as far as it is known.
void JSTDocument::colourText(Scope scope, TextRange edited, Announce announce)
{
    if (!m_storage)
        return;
    m_sourceString = m_storage->string();
    const int length = int(m_sourceString.size());
    if (length < kMinimumColouredLength) {
        m_runs.clear();
        paint({0, length}, announce); // what is left of a longer text, or came back, has its colours still
        return;
    }
    m_tokenizer->setString(m_sourceString);
    m_tokenizer->setReader(TDReader());
    const bool everything =
        refreshFormats() || scope == Scope::Everything || m_runs.isEmpty() || m_postprocessingBlock;
    const TokenRuns before = std::exchange(m_runs, {});
    m_runs.scan(*m_tokenizer, m_formats, length);
    paint(everything ? TextRange {0, length} : edited, announce);
    if (const TextRange changed = m_runs.differenceFrom(before); !everything && changed.length > 0)
        paint(changed, announce);
    if (m_postprocessingBlock)
        m_postprocessingBlock(m_storage);
}

bool JSTDocument::formatsAreFresh() const
{
    return m_formatsRevision == m_tokenizer->keywordsRevision() && m_formatsFontSize == m_fontSize
        && m_formatsShowBlanks == showsBlanks();
}

bool JSTDocument::showsBlanks() const
{
    return m_storage->defaultTextOption().flags().testFlag(QTextOption::ShowTabsAndSpaces);
}

/// The attributes of what is kept out of the layout: blanks, and the last of very many pieces in one line.
QVariantMap JSTDocument::blankAttributes(int index, TextRange *range) const
{
    TextRange run;
    const int format = m_runs.formatAt(index, &run);
    if (run.contains(index))
        *range = range->intersected(run);
    if (format == TokenFormats::kNone)
        return {};
    return attributesFromFormat(m_formats.at(format));
}

/// Makes the formats anew when what they depend on changed. True when it did.
bool JSTDocument::refreshFormats()
{
    if (formatsAreFresh())
        return false;
    m_formatsRevision = m_tokenizer->keywordsRevision();
    m_formatsFontSize = m_fontSize;
    m_formatsShowBlanks = showsBlanks();
    const QPalette palette = m_sourceText->palette();
    m_formats = TokenFormats(m_tokenizer->keywords(), m_fontSize, palette, m_formatsShowBlanks);
    m_storage->setDefaultForegroundColor(palette.color(QPalette::Text));
    return true;
}

void JSTDocument::paint(TextRange range, Announce announce)
{
    const TextRange touched =
        m_runs.applyTo(*m_storage, range.clampedTo(int(m_sourceString.size())), m_formats);
    if (announce == Announce::ByItself && touched.length > 0)
        m_storage->markContentsDirty(touched.location, touched.length);
}

bool JSTDocument::isInStringOrComment(int index) const
{
    return m_formats.isStringOrComment(m_runs.formatAt(index));
}

bool JSTDocument::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::PaletteChange && watched == m_sourceText) {
        m_formatsRevision = -1; // what can be read depends on the background
        colour(Pass::Always);
    }
    return QObject::eventFilter(watched, event);
}

void JSTDocument::textDidChange(JSTTextView *view)
{
    if (JSTTextViewDelegate *delegate = delegateInterface())
        delegate->textDidChange(view);
}

void JSTDocument::textViewDidChangeSelection(JSTTextView *view)
{
    if (JSTTextViewDelegate *delegate = delegateInterface())
        delegate->textViewDidChangeSelection(view);
}

// NOLINTNEXTLINE(bugprone-virtual-near-miss): the underscore is meant
bool JSTDocument::textView_ShouldChangeTextInRangeReplacementString(JSTTextView *, TextRange,
                                                                    const QString &replacement) const
{
    return std::all_of(replacement.cbegin(), replacement.cend(),
                       [](QChar c) { return c.unicode() < 0x00FF; });
}

QStringList JSTDocument::textViewCompletionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                                   const QStringList &words,
                                                                                   TextRange range,
                                                                                   int *selectedIndex)
{
    QStringList result;
    for (const Completion &word : m_offeredWords.fitting(view->textStorage()->substringWithRange(range)))
        result.append(word.text);
    if (JSTTextViewDelegate *delegate = delegateInterface())
        result += delegate->textViewCompletionsForPartialWordRangeIndexOfSelectedItem(view, words, range,
                                                                                      selectedIndex);
    return result;
}

CompletionList JSTDocument::textViewCompletionsToShow(JSTTextView *view, TextRange range)
{
    const auto liveNames = [this, view](const QString &path, const QString &start) {
        JSTTextViewDelegate *delegate = delegateInterface();
        return delegate ? delegate->textViewNamesAtPath(view, path, start) : KnownNames();
    };
    return m_offeredWords.offered(view->string(), range.location, range.end(), liveNames,
                                  [this](int index) { return isInStringOrComment(index); });
}

void JSTDocument::textViewDescribeCompletion(JSTTextView *view, TextRange range, Completion &one)
{
    if (JSTTextViewDelegate *delegate = delegateInterface())
        delegate->textViewDescribeCompletion(view, range, one);
}
