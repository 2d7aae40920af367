#include "scripting/panel/VXMacroViewController.h"

#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/KeywordTable.h"
#include "codeeditor/VXLineNumberView.h"
#include "platform/StandardFolders.h"
#include "platform/UserDefaults.h"
#include "scripting/ScriptRun.h"
#include "ui_VXMacroView.h"

#include <QFontDatabase>
#include <QTextBlock>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kFontSize = "MacroCodeFontSize"_L1;
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

VXMacroViewController::VXMacroViewController(QObject *parent) : QObject(parent)
{
    initialize();
    connect(&UserDefaults::standard(), &UserDefaults::changed, this, [this](const QString &key) {
        if (key == kFontSize)
            setMacroFontSize(UserDefaults::standard().integerForKey(kFontSize));
    });
}

VXMacroViewController::~VXMacroViewController()
{
    delete m_view;
}

void VXMacroViewController::initialize()
{
    static const bool once = [] {
        UserDefaults::standard().registerDefaults({{kFontSize, 13}});
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

QWidget *VXMacroViewController::view()
{
    if (!m_view)
        makeView();
    return m_view;
}

JSTTextView *VXMacroViewController::macroText()
{
    view();
    return m_macroText;
}

JSTDocument *VXMacroViewController::document()
{
    view();
    return m_document;
}

void VXMacroViewController::makeView()
{
    Ui::VXMacroView ui;
    m_view = new QWidget;
    ui.setupUi(m_view);
    m_macroText = ui.macroText;
    m_macroText->setupLineNumberview();
    m_document = new JSTDocument(this);
    m_document->setAutocompleteKeywords(completionList());
    m_document->setDelegate(this);
    setMacroFontSize(UserDefaults::standard().integerForKey(kFontSize));
    setUpColours();
    m_macroText->setString(std::exchange(m_code, {}));
    m_document->setSourceText(m_macroText);
}

void VXMacroViewController::setUpColours()
{
    setUpPythonTokenizer(
        m_document->tokenizer(),
        defaultKeywordAttributes({m_macroFont, m_macroFontBold, m_macroFontItalic}, m_macroText->palette()));
}

// Running

void VXMacroViewController::runMacro()
{
    runMacroString(code());
}

void VXMacroViewController::runSelection()
{
    runMacro();
}

void VXMacroViewController::runMacroString(const QString &code)
{
    runPanelCode(code);
}

// Fonts

void VXMacroViewController::setMacroFontSize(int size)
{
    if (size == m_macroFontSize && m_macroFont)
        return;
    m_macroFontSize = size;
    setUpFonts();
    if (m_document)
        m_document->setFontSize(qBound(kSmallestFont, size, kLargestFont));
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
    UserDefaults &defaults = UserDefaults::standard();
    const int size = qMax(defaults.integerForKey(kFontSize), kSmallestZoom) + 1;
    defaults.setObjectForKey(qMin(size, kLargestZoom), kFontSize);
}

void VXMacroViewController::zoomOut()
{
    UserDefaults &defaults = UserDefaults::standard();
    const int size = qMin(defaults.integerForKey(kFontSize), kLargestZoom) - 1;
    defaults.setObjectForKey(qMax(size, kSmallestZoom), kFontSize);
}

void VXMacroViewController::zoomFitInWindow()
{
    UserDefaults::standard().removeObjectForKey(kFontSize);
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
