// The code editor in a window of its own, to look at: codeeditor_demo [--dark] [--zoom N] [--grab FILE.png]
// [SOURCE.py]
#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/KeywordTable.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <QFontMetricsF>
#include <QPixmap>
#include <QScreen>
#include <QStyleFactory>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

const char16_t sample[] = uR"PY(# Give each Latin glyph without a production name one of its own.
'''
Runs over the selected records of the front document.
'''
import re

PATTERN = re.compile(r'^([A-Za-z]+)(\.sc|\.alt\d*)?$')
LIMIT = 0x1F_FF

def productionName(info, prefix="uni"):
	"""The name that a font file would use."""
	if info.unicode() is None:
		return None
	value = int(info.unicode(), 16)
	if value > LIMIT and not info.name().startswith('_'):
		return "u%05X" % value    # outside the plane of common use, so five digits and another prefix
	return prefix + f"{value:04X}"

count = 0
for info in Doc.infos():
	if PATTERN.match(info.name()) and info.production() in (None, ""):
		info.setProduction_(productionName(info))
		count += 1
print("Größe:", count, 1.5e-3j, True, Font, Layer, «guillemets»)
)PY";

QPalette darkPalette()
{
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, const char *color) {
        palette.setColor(role, QColor(QLatin1StringView(color)));
    };
    set(QPalette::Window, "#2b2b2e");
    set(QPalette::WindowText, "#e6e6e6");
    set(QPalette::Base, "#1e1e20");
    set(QPalette::AlternateBase, "#26262a");
    set(QPalette::Text, "#e6e6e6");
    set(QPalette::Button, "#3a3a3e");
    set(QPalette::ButtonText, "#e6e6e6");
    set(QPalette::Highlight, "#2f65ca");
    set(QPalette::HighlightedText, "#ffffff");
    return palette;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOptions({{u"dark"_s, u"Light text on a dark ground"_s},
                        {u"zoom"_s, u"Font size in points"_s, u"size"_s, u"13"_s},
                        {u"grab"_s, u"Save a picture and quit"_s, u"file"_s}});
    options.addPositionalArgument(u"source"_s, u"A Python file"_s);
    options.process(app);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    if (options.isSet(u"dark"_s))
        QApplication::setPalette(darkPalette());

    JSTTextView view;
    JSTDocument document;
    document.setFontSize(options.value(u"zoom"_s).toInt());
    QFont regular = document.defaultFont();
    QFont bold = regular;
    bold.setBold(true);
    QFont italic = regular;
    italic.setItalic(true);
    runebook::setUpPythonTokenizer(
        *document.tokenizer(), runebook::defaultKeywordAttributes({regular, bold, italic}, view.palette()));
    document.setAutocompleteKeywords(
        runebook::completionWords(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/MacroKeywords.plist")));
    view.setHeadIndent(QFontMetricsF(regular).horizontalAdvance(u"00"_s));
    document.setSourceText(&view);
    view.setupLineNumberview();
    view.resize(820, 760);

    QFile file(options.positionalArguments().value(0));
    if (!file.fileName().isEmpty() && file.open(QIODevice::ReadOnly))
        view.setString(QString::fromUtf8(file.readAll()));
    else
        view.setString(QString::fromUtf16(sample));
    view.show();
    if (!options.isSet(u"grab"_s))
        return app.exec();

    // With the list of completions, which is a window of its own, painted over.
    QTextCursor cursor = view.textCursor();
    cursor.setPosition(int(view.string().indexOf(u"count = 0"_s) + 9));
    view.setTextCursor(cursor);
    view.insertNewline();
    QTest::keyClicks(&view, u"Doc.info"_s);
    QTest::qWait(50);
    QPixmap picture = view.grab();
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window != &view && window->isVisible())
            window->render(&picture, window->pos() - view.mapToGlobal(QPoint()));
    }
    return picture.save(options.value(u"grab"_s)) ? 0 : 1;
}
