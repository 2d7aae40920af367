// The fields of the detail pane, driven with keys: code points, checked names, vocabularies.
#include "editing/CodePointTokens.h"
#include "editing/ErrorBubble.h"
#include "editing/SignalColors.h"
#include "editing/UnicodesTokenField.h"
#include "editing/VXUnicodeFormatter.h"
#include "editing/VXValidatingTextField.h"
#include "editing/VocabularyComboBox.h"
#include "platform/Appearance.h"
#include "tests/TestMain.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QComboBox>
#include <QCompleter>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// Says no to every text with a "!", as the window does with names that repeat.
class Delegate : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE bool textFieldHasValidContent(VXValidatingTextField *field)
    {
        asked << field->text();
        const bool isValid = !field->text().contains(u'!');
        field->setErrorHint(isValid ? QString() : u"Repeating name: b"_s);
        if (field->extraButton())
            field->extraButton()->setVisible(!isValid);
        return isValid;
    }
    Q_INVOKABLE QStringList textFieldTextViewCandidatesForSelectedRange(VXValidatingTextField *field,
                                                                        QObject *, QStringList,
                                                                        runebook::UnitRange range)
    {
        return {field->text().mid(range.location, range.length) + u".alt"_s};
    }
    QStringList asked;
};

class PlainDelegate : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE bool textFieldHasValidContent(QObject *) { return false; }
    Q_INVOKABLE QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(QObject *,
                                                                                      QStringList known,
                                                                                      runebook::UnitRange)
    {
        return known << u"plain"_s;
    }
};

double luminance(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double one = luminance(a) + 0.05;
    const double other = luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

QPalette darkPalette()
{
    QPalette palette(QColor(45, 45, 48));
    palette.setColor(QPalette::Base, QColor(30, 30, 32));
    return palette;
}

/// A window with a field and another widget to leave it for.
template <typename Field> struct Stage {
    Stage()
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(field);
        layout->addWidget(other);
        window.resize(400, 200);
        window.show();
        if (!QTest::qWaitForWindowActive(&window))
            qWarning("the window is not active");
        field->setFocus();
    }
    QWidget window;
    Field *field = new Field;
    QLineEdit *other = new QLineEdit;
};

/// Types a text in which <Tab>-like words stand for keys. An open list takes them, as from a keyboard.
void typeKeys(QWidget *field, const QString &keys)
{
    static const QHash<QString, Qt::Key> named {{u"Return"_s, Qt::Key_Return},  {u"Escape"_s, Qt::Key_Escape},
                                                {u"Back"_s, Qt::Key_Backspace}, {u"Left"_s, Qt::Key_Left},
                                                {u"Home"_s, Qt::Key_Home},      {u"Tab"_s, Qt::Key_Tab},
                                                {u"Down"_s, Qt::Key_Down},      {u"End"_s, Qt::Key_End}};
    for (qsizetype at = 0; at < keys.size(); ++at) {
        QWidget *into = QApplication::activePopupWidget() ? QApplication::activePopupWidget() : field;
        if (keys.at(at) != u'<') {
            QTest::keyClicks(into, QString(keys.at(at)));
            continue;
        }
        const qsizetype end = keys.indexOf(u'>', at);
        QTest::keyClick(into, named.value(keys.mid(at + 1, end - at - 1)));
        at = end;
    }
}

} // namespace

class InputFieldsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void formatterShowsValues();
    void formatterRefusesKeys_data();
    void formatterRefusesKeys();
    void refusalWithoutWindowIsPresented();
    void badgeColorsCanBeRead();
    void outlinesAreSeenInTheDark();

    void asksDelegateOncePerText();
    void badgeStandsInsideAndGoesWhileEditing();
    void buttonTakesRoom();
    void completionsComeFromDelegate();

    void normalizesTokens_data();
    void normalizesTokens();
    void tokensAreTyped_data();
    void tokensAreTyped();
    void tokensArePasted();
    void whatIsNoCodePointIsLeftOutWithAWord();
    void tokensOfSeveralRecords();
    void tokensAreDrawn();

    void vocabularyIsTyped_data();
    void vocabularyIsTyped();
    void vocabularyChoiceCommits();
    void vocabularyOfSeveralRecords();
    void vocabularyIgnoresWheel();
};

// Formatter

void InputFieldsTest::formatterShowsValues()
{
    const VXUnicodeFormatter formatter;
    QCOMPARE(formatter.stringForObjectValue(u"00e9"_s), u"00E9"_s);
    QCOMPARE(formatter.stringForObjectValue(QStringList {u"e9"_s, u"1f600"_s}), u"E9, 1F600"_s);
    QCOMPARE(formatter.stringForObjectValue(QVariantList {u"e9"_s, u"41"_s}), u"E9, 41"_s);
    QCOMPARE(formatter.stringForObjectValue(12), u"12"_s);
    QVariant value;
    QVERIFY(formatter.getObjectValueForStringErrorDescription(&value, u"xyz"_s));
    QCOMPARE(value.toString(), u"xyz"_s);
}

void InputFieldsTest::formatterRefusesKeys_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("message");
    const QString digits = u"Only Numbers from 0–9 and letters from A-F are allowed"_s;
    const QString five = u"Only maximal five digits are allowd"_s;
    QTest::newRow("five digits") << u"1F600"_s << u"1F600"_s << QString();
    QTest::newRow("six digits") << u"1F6000"_s << u"1F600"_s << five;
    QTest::newRow("small letters") << u"00e9"_s << u"00e9"_s << QString();
    QTest::newRow("g") << u"g"_s << QString() << digits;
    QTest::newRow("a blank") << u"41 "_s << u"41"_s << digits;
    QTest::newRow("a sixth that is no digit") << u"1F600g"_s << u"1F600"_s << digits;
    QTest::newRow("the next key takes it away") << u"4g1"_s << u"41"_s << QString();
}

void InputFieldsTest::formatterRefusesKeys()
{
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    QFETCH(QString, message);
    Stage<QLineEdit> stage;
    VXUnicodeFormatter formatter;
    formatter.attachTo(stage.field);
    QTest::keyClicks(stage.field, typed);
    QCOMPARE(stage.field->text(), kept);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto bubbles = stage.window.findChildren<ErrorBubble *>();
    QCOMPARE(bubbles.isEmpty() ? QString() : bubbles.first()->text(), message);
    if (bubbles.isEmpty())
        return;
    QCOMPARE(bubbles.size(), 1);
    QVERIFY(stage.field->hasFocus());
    QVERIFY(stage.window.rect().contains(bubbles.first()->geometry()));
    QVERIFY(!bubbles.first()->geometry().intersects(stage.field->geometry()));
}

void InputFieldsTest::refusalWithoutWindowIsPresented()
{
    QLineEdit hidden;
    VXUnicodeFormatter formatter;
    Error presented;
    connect(&ErrorPresenter::shared(), &ErrorPresenter::presented, &hidden,
            [&presented](const Error &error) { presented = error; });
    formatter.controlDidFailToValidatePartialStringErrorDescription(&hidden, u"g"_s, u"why"_s);
    QCOMPARE(presented.domain, u"Runebook"_s);
    QCOMPARE(presented.code, 1);
    QCOMPARE(presented.description, u"why"_s);
}

void InputFieldsTest::outlinesAreSeenInTheDark()
{
    Appearance::shared().setChoice(Appearance::Dark);
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *line = new QLineEdit;
    auto *text = new QPlainTextEdit;
    auto *choice = new QComboBox;
    choice->setEditable(true);
    for (QWidget *field : std::initializer_list<QWidget *> {line, choice, text})
        layout->addWidget(field);
    const auto outlineOf = [&](QWidget *field) {
        const QImage image = window.grab().toImage();
        return image.pixelColor(field->geometry().topLeft() + QPoint(field->width() / 2, 0));
    };
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    text->setFocus();
    QCOMPARE(outlineOf(text), text->palette().color(QPalette::Highlight));
    line->setFocus();
    const QColor around = window.palette().color(QPalette::Window);
    QVERIFY(contrast(around, outlineOf(text)) >= 3);
    QVERIFY(contrast(around, outlineOf(choice)) >= 3);
    choice->setFocus();
    QVERIFY(contrast(around, outlineOf(line)) >= 3);
    Appearance::shared().setChoice(Appearance::Light);
    QVERIFY(contrast(line->palette().color(QPalette::Base), line->palette().color(QPalette::PlaceholderText)) >= 4.5);
    Appearance::shared().setChoice(Appearance::System);
}

void InputFieldsTest::badgeColorsCanBeRead()
{
    for (const QPalette &palette : {QPalette(QColor(239, 239, 239)), darkPalette()}) {
        QVERIFY(contrast(Qt::white, SignalColors::error(palette)) >= 4.5);
        QVERIFY(contrast(palette.color(QPalette::Window), SignalColors::warningText(palette)) >= 4.5);
        const QColor text = palette.color(QPalette::Text);
        QVERIFY(contrast(text, SignalColors::removed(palette)) >= 4.5);
        QVERIFY(contrast(text, SignalColors::inserted(palette)) >= 4.5);
    }
}

// Validating field

void InputFieldsTest::asksDelegateOncePerText()
{
    Delegate delegate;
    Stage<VXValidatingTextField> stage;
    stage.field->setDelegate(&delegate);
    stage.field->setStringValue(u"a"_s);
    stage.field->setStringValue(u"a"_s);
    QCOMPARE(delegate.asked, QStringList {u"a"_s});
    QTest::keyClicks(stage.field, u"!c"_s);
    QCOMPARE(delegate.asked, (QStringList {u"a"_s, u"a!"_s, u"a!c"_s}));
    QCOMPARE(stage.field->oldText(), u"a!c"_s);
    // A text that came in by another way is asked about once it is drawn.
    stage.field->setText(u"z"_s);
    QTRY_COMPARE(delegate.asked.last(), u"z"_s);

    VXValidatingTextField alone;
    alone.setStringValue(u"!"_s);
    QVERIFY(alone.errorHint().isEmpty());
    QCOMPARE(alone.backgroundColor(), alone.palette().color(QPalette::Base));
    PlainDelegate plain;
    alone.setDelegate(&plain);
    alone.setStringValue(u"!!"_s);
    QCOMPARE(alone.backgroundColor(), SignalColors::error(alone.palette()));
}

void InputFieldsTest::badgeStandsInsideAndGoesWhileEditing()
{
    Delegate delegate;
    Stage<VXValidatingTextField> stage;
    stage.other->setFocus();
    VXValidatingTextField &field = *stage.field;
    const VXValidatingTextFieldCell cell;
    QVERIFY(cell.errorBadgeRectInView(field).isEmpty());
    field.setDelegate(&delegate);
    field.setStringValue(u"b!"_s);
    const QRect badge = cell.errorBadgeRectInView(field);
    QVERIFY(field.rect().contains(badge));
    const FormattedText text = cell.errorBadgeString(field.errorHint());
    const QFont font = text.formats.first().format.font();
    QCOMPARE(font.pixelSize(), 11);
    QCOMPARE(text.formats.first().format.foreground().color(), QColor(Qt::white));
    QCOMPARE(badge.width(), int(std::ceil(QFontMetricsF(font).horizontalAdvance(field.errorHint()))) + 10);
    QCOMPARE(field.textMargins().right(), badge.width() + 6);

    const auto isRed = [&] {
        const QPoint inside = badge.topLeft() + QPoint(3, badge.height() / 2);
        return field.grab().toImage().pixelColor(inside) == field.backgroundColor();
    };
    QVERIFY(isRed());
    field.setFocus();
    QVERIFY(!isRed());
    QCOMPARE(field.textMargins().right(), 0);
    stage.other->setFocus();
    QVERIFY(isRed());
    QCOMPARE(field.accessibleDescription(), u"Repeating name: b"_s);
    field.setStringValue(u"b"_s);
    QCOMPARE(field.textMargins().right(), 0);
    QVERIFY(field.accessibleDescription().isEmpty());
}

void InputFieldsTest::buttonTakesRoom()
{
    Delegate delegate;
    Stage<VXValidatingTextField> stage;
    VXValidatingTextField &field = *stage.field;
    auto *button = new QToolButton;
    field.setExtraButton(button);
    field.setDelegate(&delegate);
    field.setStringValue(u"good"_s);
    QVERIFY(!button->isVisible());
    field.setStringValue(u"bad!"_s);
    QVERIFY(button->isVisible());
    QVERIFY(field.rect().contains(button->geometry()));
    QCOMPARE(field.textMargins().right(), button->width() + 4);
    stage.other->setFocus();
    const QRect badge = VXValidatingTextFieldCell().errorBadgeRectInView(field);
    QVERIFY(!badge.intersects(button->geometry()));
    QCOMPARE(field.textMargins().right(), badge.width() + 6 + button->width());
    field.setStringValue(u"good"_s);
    QVERIFY(!button->isVisible());
    QCOMPARE(field.textMargins().right(), 0);
}

void InputFieldsTest::completionsComeFromDelegate()
{
    VXValidatingTextField field;
    const auto completions = [&field] {
        return field.textViewCompletionsForPartialWordRangeIndexOfSelectedItem(&field, {u"known"_s}, {0, 1});
    };
    field.setText(u"abc"_s);
    QVERIFY(completions().isEmpty());
    PlainDelegate plain;
    field.setDelegate(&plain);
    QCOMPARE(completions(), (QStringList {u"known"_s, u"plain"_s}));
    Delegate delegate;
    field.setDelegate(&delegate);
    QCOMPARE(completions(), QStringList {u"a.alt"_s});

    Stage<VXValidatingTextField> stage;
    stage.field->setDelegate(&delegate);
    QTest::keyClicks(stage.field, u"x, abc"_s);
    QTest::keyClick(stage.field, Qt::Key_Space, Qt::ControlModifier);
    auto *completer = stage.field->findChild<QCompleter *>();
    QVERIFY(completer && completer->popup()->isVisible());
    QTest::keyClick(completer->popup(), Qt::Key_Down);
    QTest::keyClick(completer->popup(), Qt::Key_Return);
    QCOMPARE(stage.field->text(), u"x, abc.alt"_s);
}

// Code point tokens

void InputFieldsTest::normalizesTokens_data()
{
    QTest::addColumn<QStringList>("tokens");
    QTest::addColumn<QStringList>("kept");
    QTest::newRow("short ones get zeros")
        << QStringList {u"e9"_s, u"9"_s, u"abc"_s} << QStringList {u"00E9"_s, u"0009"_s, u"0ABC"_s};
    QTest::newRow("long ones stay long")
        << QStringList {u"1f600"_s, u"0000041"_s} << QStringList {u"1F600"_s, u"0000041"_s};
    QTest::newRow("no digits") << QStringList {u"00g1"_s, u"41"_s, u"U+41"_s, u"é"_s}
                               << QStringList {u"0041"_s};
    QTest::newRow("empty passes") << QStringList {u""_s} << QStringList {u""_s};
}

void InputFieldsTest::normalizesTokens()
{
    QFETCH(QStringList, tokens);
    QFETCH(QStringList, kept);
    QCOMPARE(normalizedCodePointTokens(tokens), kept);
}

void InputFieldsTest::tokensAreTyped_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("committed"); // "-": nothing
    QTest::newRow("comma completes") << u"<End>,e9,"_s << u"0041 00E9 "_s << u"-"_s;
    QTest::newRow("blank completes") << u"<End> e9 "_s << u"0041 00E9 "_s << u"-"_s;
    QTest::newRow("Return commits") << u"<End> e9<Return>"_s << u"0041 00E9"_s << u"0041 00E9"_s;
    QTest::newRow("leaving commits") << u"<End> e9<Tab>"_s << u"0041 00E9"_s << u"0041 00E9"_s;
    QTest::newRow("Escape reverts") << u"<End> e9<Escape>"_s << u"0041"_s << u"-"_s;
    QTest::newRow("Escape, then leaving") << u"<End> e9<Escape><Tab>"_s << u"0041"_s << u"-"_s;
    QTest::newRow("nonsense goes") << u"<End> xy,42<Return>"_s << u"0041 0042"_s << u"0041 0042"_s;
    QTest::newRow("no digit is typed") << u"<End>ß<Return>"_s << u"0041"_s << u"-"_s;
    QTest::newRow("no sixth digit") << u"<End> 12345678<Return>"_s << u"0041 12345"_s << u"0041 12345"_s;
    QTest::newRow("Backspace takes a token") << u"<End> e9,<Back><Return>"_s << u"0041"_s << u"-"_s;
    QTest::newRow("Backspace takes a digit") << u"<End><Back>2<Return>"_s << u"0042"_s << u"0042"_s;
    QTest::newRow("all deleted") << u"<End> <Back><Return>"_s << QString() << QString();
    QTest::newRow("in front") << u"<Home>20,30,<Return>"_s << u"0020 0030 0041"_s << u"0020 0030 0041"_s;
    QTest::newRow("only looked at") << u"<Left><Tab>"_s << u"0041"_s << u"-"_s;
}

void InputFieldsTest::tokensAreTyped()
{
    QFETCH(QString, keys);
    QFETCH(QString, shown);
    QFETCH(QString, committed);
    Stage<UnicodesTokenField> stage;
    stage.field->setTokens({u"0041"_s});
    QSignalSpy commits(stage.field, &UnicodesTokenField::tokensCommitted);
    typeKeys(stage.field, keys);
    QCOMPARE(stage.field->text(), shown);
    QCOMPARE(commits.size(), committed == "-"_L1 ? 0 : 1);
    if (!commits.isEmpty())
        QCOMPARE(commits.first().first().toStringList().join(u' '), committed);
}

void InputFieldsTest::tokensArePasted()
{
    Stage<UnicodesTokenField> stage;
    QSignalSpy commits(stage.field, &UnicodesTokenField::tokensCommitted);
    QGuiApplication::clipboard()->setText(u"U+0041, 0xe9;1f600\n42"_s);
    QTest::keySequence(stage.field, QKeySequence::Paste);
    typeKeys(stage.field, u"<Return>"_s);
    QCOMPARE(commits.first().first().toStringList().join(u' '), u"0041 00E9 1F600 0042"_s);
}

void InputFieldsTest::whatIsNoCodePointIsLeftOutWithAWord()
{
    Stage<UnicodesTokenField> stage;
    UnicodesTokenField &field = *stage.field;
    const auto bubble = [&stage] {
        const auto *shown = stage.window.findChild<ErrorBubble *>();
        return shown ? shown->text() : QString();
    };
    field.setTokens({u"0042"_s});
    typeKeys(&field, u"<End>g"_s);
    QCOMPARE(bubble(), u"Only Numbers from 0–9 and letters from A-F are allowed"_s);
    QGuiApplication::clipboard()->setText(u" ß, 12345678, D800; 43"_s);
    QTest::keySequence(&field, QKeySequence::Paste);
    typeKeys(&field, u"<Return>"_s);
    QCOMPARE(field.tokens(), (QStringList {u"0042"_s, u"0043"_s}));
    QCOMPARE(bubble(), u"Left out, for it is no code point: “ß”, “12345678”, “D800”"_s);
    QGuiApplication::clipboard()->setText(u" 0044"_s);
    typeKeys(&field, u"<End>"_s);
    QTest::keySequence(&field, QKeySequence::Paste);
    typeKeys(&field, u"<Return>"_s);
    QCOMPARE(bubble(), u"A file keeps two code points of a glyph. Saving will leave out: 0044"_s);
    // What completes a token can be taken back step by step.
    field.setTokens({u"0041"_s});
    typeKeys(&field, u"<End> e9,"_s);
    QCOMPARE(field.text(), u"0041 00E9 "_s);
    while (field.isUndoAvailable())
        field.undo();
    QCOMPARE(field.text(), u"0041"_s);
}

void InputFieldsTest::tokensOfSeveralRecords()
{
    Stage<UnicodesTokenField> stage;
    stage.field->setMultipleValues();
    QSignalSpy commits(stage.field, &UnicodesTokenField::tokensCommitted);
    QVERIFY(!stage.field->placeholderText().isEmpty());
    typeKeys(stage.field, u"41<Back><Back><Tab>"_s);
    QVERIFY(commits.isEmpty());
    stage.field->setFocus();
    typeKeys(stage.field, u"41<Tab>"_s);
    QCOMPARE(commits.size(), 1);
    QVERIFY(!stage.field->isMixed());
}

void InputFieldsTest::tokensAreDrawn()
{
    UnicodesTokenField field;
    field.resize(300, field.sizeHint().height());
    const auto tinted = [&field] {
        const QImage image = field.grab().toImage();
        int count = 0;
        for (int x = 4; x < image.width() - 4; ++x)
            count += image.pixelColor(x, image.height() / 2 - 7).saturation() > 10;
        return count;
    };
    QCOMPARE(tinted(), 0);
    field.setTokens({u"0041"_s});
    const int one = tinted();
    field.setTokens({u"0041"_s, u"0042"_s});
    QVERIFY(one > 0);
    QVERIFY(tinted() > one * 3 / 2);
}

// Vocabulary

void InputFieldsTest::vocabularyIsTyped_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("committed"); // "-": nothing
    QTest::newRow("free text, Return") << u"Sign<Return>"_s << u"Sign"_s << u"Sign"_s;
    QTest::newRow("free text, left") << u"Sign<Tab>"_s << u"Sign"_s << u"Sign"_s;
    QTest::newRow("Escape") << u"Sign<Escape><Escape>"_s << u"Mark"_s << u"-"_s;
    QTest::newRow("typed again") << u"Mark<Return>"_s << u"Mark"_s << u"-"_s;
    QTest::newRow("case counts") << u"mark<Tab><Tab>"_s << u"mark"_s << u"mark"_s;
    QTest::newRow("emptied") << u"<Back><Return>"_s << QString() << QString();
    QTest::newRow("only passed") << u"<Tab>"_s << u"Mark"_s << u"-"_s;
}

void InputFieldsTest::vocabularyIsTyped()
{
    QFETCH(QString, keys);
    QFETCH(QString, shown);
    QFETCH(QString, committed);
    Stage<VocabularyComboBox> stage;
    stage.field->setVocabulary({u"Letter"_s, u"Number"_s, u"Mark"_s});
    stage.field->setText(u"Mark"_s);
    stage.field->lineEdit()->selectAll();
    QSignalSpy commits(stage.field, &VocabularyComboBox::textCommitted);
    typeKeys(stage.field->lineEdit(), keys);
    QCOMPARE(stage.field->text(), shown);
    QCOMPARE(commits.size(), committed == "-"_L1 ? 0 : 1);
    if (!commits.isEmpty())
        QCOMPARE(commits.first().first().toString(), committed);
}

void InputFieldsTest::vocabularyChoiceCommits()
{
    Stage<VocabularyComboBox> stage;
    stage.field->setVocabulary({u"Letter"_s, u"Number"_s, u"Mark"_s});
    stage.field->setText(u"Mark"_s);
    QCOMPARE(stage.field->currentIndex(), 2);
    QSignalSpy commits(stage.field, &VocabularyComboBox::textCommitted);
    stage.field->lineEdit()->selectAll();
    QTest::keyClicks(stage.field->lineEdit(), u"umb"_s);
    QAbstractItemView *popup = stage.field->completer()->popup();
    QTRY_VERIFY(popup->isVisible());
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    QTRY_COMPARE(commits.size(), 1);
    QCOMPARE(commits.first().first().toString(), u"Number"_s);
    QCOMPARE(stage.field->text(), u"Number"_s);

    stage.field->showPopup();
    QTest::keyClick(stage.field->view(), Qt::Key_Down);
    QTest::keyClick(stage.field->view(), Qt::Key_Return);
    QTRY_COMPARE(commits.size(), 2);
    QCOMPARE(commits.last().first().toString(), u"Mark"_s);
}

void InputFieldsTest::vocabularyOfSeveralRecords()
{
    Stage<VocabularyComboBox> stage;
    stage.field->setVocabulary({u"Letter"_s, u"Mark"_s});
    stage.field->setText(u"Letter"_s);
    stage.field->setMultipleValues();
    QCOMPARE(stage.field->text(), QString());
    QCOMPARE(stage.field->lineEdit()->placeholderText(), u"Multiple values"_s);
    QSignalSpy commits(stage.field, &VocabularyComboBox::textCommitted);
    typeKeys(stage.field->lineEdit(), u"L<Back><Tab>"_s);
    QVERIFY(commits.isEmpty());
    const QString longText(40'000, u'x');
    stage.field->lineEdit()->setFocus();
    QGuiApplication::clipboard()->setText(longText);
    QTest::keySequence(stage.field->lineEdit(), QKeySequence::Paste);
    typeKeys(stage.field->lineEdit(), u"<Return>"_s);
    QCOMPARE(commits.size(), 1);
    QCOMPARE(commits.first().first().toString(), longText);
}

void InputFieldsTest::vocabularyIgnoresWheel()
{
    Stage<VocabularyComboBox> stage;
    stage.field->setVocabulary({u"Letter"_s, u"Number"_s, u"Mark"_s});
    stage.field->setText(u"Letter"_s);
    QSignalSpy commits(stage.field, &VocabularyComboBox::textCommitted);
    const QPointF at = stage.field->rect().center();
    QWheelEvent wheel(at, stage.field->mapToGlobal(at), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(stage.field, &wheel);
    stage.other->setFocus();
    QCOMPARE(stage.field->text(), u"Letter"_s);
    QVERIFY(commits.isEmpty());
}

RUNEBOOK_TEST_MAIN(InputFieldsTest)
#include "InputFieldsTest.moc"
