#include "scripting/panel/VXMacroViewController.h"

#include "codeeditor/CompletionRules.h"
#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/KeywordTable.h"
#include "codeeditor/VXCodeTextStorage.h"
#include "codeeditor/VXLineNumberView.h"
#include "platform/StandardFolders.h"
#include "scripting/panel/LiveCompletion.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"
#include "ui_VXMacroView.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QWheelEvent>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kRestoredText = "macroText"_L1;

// The sizes that zooming reaches, and those that a font can be made of whatever a damaged default says.
constexpr int kSmallestZoom = 7;
constexpr int kLargestZoom = 40;
constexpr int kSmallestFont = 6;
constexpr int kLargestFont = 200;

/// Read once for all tabs.
const QStringList &completionList()
{
    static const QStringList words = completionWords(StandardFolders::resource(u"MacroKeywords.plist"_s));
    return words;
}

} // namespace

VXMacroViewController::VXMacroViewController(QObject *parent) : QObject(parent), m_view(new QWidget)
{
    initialize();
    m_view->installEventFilter(this);
    const auto follow = [this] {
        if (m_macroText)
            applyEditingSettings();
    };
    Settings::kClosesBrackets.onChange(this, follow);
    Settings::kIndentation.onChange(this, follow);
    Settings::kWrapColumn.onChange(this, follow);
    Settings::kMacroFontSize.onChange(this, [this] { setMacroFontSize(Settings::kMacroFontSize.value()); });
}

VXMacroViewController::~VXMacroViewController()
{
    delete m_view;
}

void VXMacroViewController::initialize()
{
    static const bool once = [] {
        Settings::kMacroFontSize.registerFallback();
        Settings::kClosesBrackets.registerFallback();
        Settings::kIndentation.registerFallback();
        Settings::kWrapColumn.registerFallback();
        return true;
    }();
    Q_UNUSED(once)
}

// What it is about

void VXMacroViewController::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    Q_EMIT titleChanged();
}

QString VXMacroViewController::code() const
{
    return m_macroText ? m_macroText->string() : m_code;
}

void VXMacroViewController::setCode(const QString &code)
{
    if (m_macroText)
        m_macroText->setString(code);
    else
        m_code = code;
}

void VXMacroViewController::setFile(const QString &path, const QString &savedText)
{
    m_filePath = path;
    m_savedText = savedText;
    m_fileState = FileState::of(path);
}

bool VXMacroViewController::takeFileChange()
{
    const FileState now = FileState::of(m_filePath);
    return std::exchange(m_fileState, now) != now;
}

JSTTextView *VXMacroViewController::macroText()
{
    if (!m_macroText)
        makeEditor();
    return m_macroText;
}

JSTDocument *VXMacroViewController::document()
{
    if (!m_macroText)
        makeEditor();
    return m_document;
}

bool VXMacroViewController::isEditorMade() const
{
    return m_macroText;
}

// The editor

void VXMacroViewController::makeEditor()
{
    Ui::VXMacroView ui;
    ui.setupUi(m_view);
    m_view->setFocusProxy(ui.macroText);
    m_macroText = ui.macroText;
    m_macroText->setupLineNumberview();
    applyEditingSettings();
    m_document = new JSTDocument(this);
    needFonts();
    giveFontToEditor();
    setUpPythonTokenizer(*m_document->tokenizer(), keywordAttributes());
    m_document->setAutocompleteKeywords(completionList());
    m_document->setDelegate(this);
    m_macroText->setString(std::exchange(m_code, {}));
    m_document->setSourceText(m_macroText);
    // After the document's own filter, to come before it: it paints with the colours that are set here.
    m_macroText->installEventFilter(this);
    m_macroText->viewport()->installEventFilter(this);
    m_macroText->show(); // at once: made while its surroundings appear, it would come too late for the focus
}

void VXMacroViewController::applyEditingSettings()
{
    m_macroText->setClosesBrackets(Settings::kClosesBrackets.value());
    m_macroText->setWrapColumn(Settings::kWrapColumn.value());
    m_macroText->setIndentation(JSTTextView::Indentation(Settings::kIndentation.value()));
}

QVariantHash VXMacroViewController::keywordAttributes() const
{
    return defaultKeywordAttributes({m_macroFont, m_macroFontBold, m_macroFontItalic},
                                    m_macroText->palette());
}

bool VXMacroViewController::eventFilter(QObject *watched, QEvent *event)
{
    // The type first: the editor is asked here to its very end, when it is hardly itself any more.
    if (event->type() == QEvent::Show && watched == m_view) {
        macroText();
    } else if (event->type() == QEvent::PaletteChange && watched == m_macroText) {
        m_document->tokenizer()->setKeywords(keywordAttributes());
    } else if (event->type() == QEvent::Wheel && m_macroText && watched == m_macroText->viewport()) {
        return zoomByWheel(*static_cast<QWheelEvent *>(event));
    } else if (event->type() == QEvent::ShortcutOverride && watched == m_macroText) {
        // The editor would take the key for a line break; here it is a command of the panel.
        const auto *press = static_cast<QKeyEvent *>(event);
        const bool isReturn = press->key() == Qt::Key_Return || press->key() == Qt::Key_Enter;
        if (isReturn && press->modifiers().testFlag(Qt::ShiftModifier)) {
            event->ignore();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

/// Everything in the panel follows the one size, which is kept; the view's own zoom would do neither.
bool VXMacroViewController::zoomByWheel(const QWheelEvent &wheel)
{
    if (!wheel.modifiers().testFlag(Qt::ControlModifier))
        return false;
    zoomBySteps(m_wheel.take(wheel));
    return true;
}

QStringList VXMacroViewController::textViewCompletionsForPartialWordRangeIndexOfSelectedItem(
    JSTTextView *view, const QStringList &words, TextRange range, int *selectedIndex)
{
    Q_UNUSED(words)
    Q_UNUSED(selectedIndex)
    return liveCompletions(view->textStorage()->substringWithRange(range));
}

KnownNames VXMacroViewController::textViewNamesAtPath(JSTTextView *, const QString &path,
                                                      const QString &start)
{
    return liveNames(path, start);
}

void VXMacroViewController::textViewDescribeCompletion(JSTTextView *view, TextRange range, Completion &one)
{
    const CompletionContext context = completionContext(view->string(), range.location, range.end());
    if (!context.afterDot || !context.path.isEmpty())
        describeLiveName(context.path, one.text.sliced(context.front.size()), one);
}

// Running

void VXMacroViewController::runMacro()
{
    runMacroString(code());
}

QString VXMacroViewController::selectedCode()
{
    const QString text = macroText()->string();
    const TextRange selected = macroText()->selectedRange();
    // A selection that ends at the very start of a line does not mean that line.
    const qsizetype last = qMax(selected.location, selected.end() - 1);
    const qsizetype lineStart =
        selected.location == 0 ? 0 : text.lastIndexOf(u'\n', selected.location - 1) + 1;
    const qsizetype lineEnd = text.indexOf(u'\n', last) < 0 ? text.size() : text.indexOf(u'\n', last);
    const QStringView inside = QStringView(text).sliced(selected.location, selected.length);
    const bool isPiece = selected.length > 0 && !inside.contains(u'\n');
    const bool startsLine =
        QStringView(text).sliced(lineStart, selected.location - lineStart).trimmed().isEmpty();

    const QString code = isPiece && !startsLine ? inside.trimmed().toString()
        : isPiece                               ? text.mid(lineStart, selected.end() - lineStart)
                                                : text.mid(lineStart, lineEnd - lineStart);
    const qsizetype linesBefore = text.left(lineStart).count(u'\n');
    const bool isIndented = !code.isEmpty() && (code.front() == u' ' || code.front() == u'\t');
    if (isIndented && linesBefore > 0)
        return QString(linesBefore - 1, u'\n') + "if True:\n"_L1 + code;
    return QString(linesBefore, u'\n') + code;
}

void VXMacroViewController::runSelection()
{
    const QString code = selectedCode();
    QTextCursor cursor = macroText()->textCursor();
    if (!cursor.hasSelection() && cursor.movePosition(QTextCursor::NextBlock))
        macroText()->setTextCursor(cursor);
    runMacroString(code);
}

void VXMacroViewController::runMacroString(const QString &code)
{
    runPanelCode(code, m_title);
}

// Fonts

void VXMacroViewController::needFonts()
{
    if (!m_macroFont)
        setMacroFontSize(Settings::kMacroFontSize.value());
}

int VXMacroViewController::macroFontSize()
{
    needFonts();
    return m_macroFontSize;
}

QFont VXMacroViewController::macroFont()
{
    needFonts();
    return *m_macroFont;
}

QFont VXMacroViewController::macroFontBold()
{
    needFonts();
    return m_macroFontBold;
}

QFont VXMacroViewController::macroFontItalic()
{
    needFonts();
    return m_macroFontItalic;
}

void VXMacroViewController::setMacroFontSize(int size)
{
    if (size == m_macroFontSize && m_macroFont)
        return;
    m_macroFontSize = size;
    setUpFonts();
    if (m_document)
        giveFontToEditor();
}

void VXMacroViewController::giveFontToEditor()
{
    m_document->setFontSize(qBound(kSmallestFont, m_macroFontSize, kLargestFont));
    m_macroText->setHeadIndent(QFontMetricsF(*m_macroFont).horizontalAdvance(u"00"_s));
}

void VXMacroViewController::setUpFonts()
{
    const int size = qBound(kSmallestFont, m_macroFontSize, kLargestFont);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (const QString &family : {u"Menlo"_s, u"Monaco"_s}) {
        if (QFontDatabase::hasFamily(family)) {
            font = QFont(family);
            break;
        }
    }
    font.setPointSize(size);
    m_macroFont = font;
    font.setBold(true);
    m_macroFontBold = font;
    font = *m_macroFont;
    font.setItalic(true);
    m_macroFontItalic = font;
}

void VXMacroViewController::zoomIn()
{
    const int size = qMax(Settings::kMacroFontSize.value(), kSmallestZoom) + 1;
    Settings::kMacroFontSize.set(qMin(size, kLargestZoom));
}

void VXMacroViewController::zoomOut()
{
    const int size = qMin(Settings::kMacroFontSize.value(), kLargestZoom) - 1;
    Settings::kMacroFontSize.set(qMax(size, kSmallestZoom));
}

void VXMacroViewController::zoomBySteps(int steps)
{
    for (int step = 0; step < qAbs(steps); ++step)
        steps > 0 ? zoomIn() : zoomOut();
}

void VXMacroViewController::zoomFitInWindow()
{
    Settings::kMacroFontSize.reset();
}

// Lines

TextRange VXMacroViewController::rangeForLine(int line)
{
    const QList<int> starts = macroText()->lineNumberView()->lineIndices();
    const int length = static_cast<int>(macroText()->string().size());
    const auto startOf = [&](int number) { return number < starts.size() ? starts.at(number) : length; };
    const int start = startOf(qMax(0, line - 1));
    return {start, startOf(qMax(1, line)) - start};
}

void VXMacroViewController::selectTextForLine(int line)
{
    macroText()->setSelectedRange(rangeForLine(line));
}

// Restoration

void VXMacroViewController::encodeRestorableStateWithCoder(QVariantMap *coder) const
{
    coder->insert(kRestoredText, code());
}

void VXMacroViewController::restoreStateWithCoder(const QVariantMap &coder)
{
    const QVariant text = coder.value(kRestoredText);
    if (text.typeId() == QMetaType::QString)
        setCode(text.toString());
}

void VXMacroViewController::textDidChange(JSTTextView *)
{
    Q_EMIT restorableStateChanged();
}
