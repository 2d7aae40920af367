// The fields of the detail pane, driven with keys: code points, checked names, vocabularies.
#include "editing/fields/CodePointTokens.h"
#include "editing/fields/ErrorBubble.h"
#include "editing/fields/SignalColors.h"
#include "editing/fields/UnicodesTokenField.h"
#include "editing/fields/VXUnicodeFormatter.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/fields/VXValidatingTextFieldCell.h"
#include "editing/fields/VocabularyComboBox.h"
#include "platform/Appearance.h"
#include "tests/OnScreen.h"
#include "tests/editing/Windows.h"

#include <cmath>

using namespace runebook;

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

} // namespace

class InputFieldsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:

    TABLE(formatterRefusesKeys, (const QString &typed, const QString &kept, const QString &message), {
        const QString digits = u"Only Numbers from 0–9 and letters from A-F are allowed"_s;
        const QString five = u"Only maximal five digits are allowd"_s;
        row("five digits", "1F600", "1F600", "");
        row("six digits", "1F6000", "1F600", five);
        row("small letters", "00e9", "00e9", "");
        row("g", "g", "", digits);
        row("a blank", "41 ", "41", digits);
        row("a sixth that is no digit", "1F600g", "1F600", digits);
        row("the next key takes it away", "4g1", "41", "");
    })
    {
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
        const QImage seen = bubbles.first()->grab().toImage();
        QCOMPARE(seen.pixelColor(seen.width() / 2, 2), SignalColors::error(bubbles.first()->palette()));
    }

    void refusalWithoutWindowIsPresented()
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

    void badgeColorsCanBeRead()
    {
        for (const QPalette &palette : {QPalette(QColor(239, 239, 239)), darkPalette()}) {
            QVERIFY(contrast(Qt::white, SignalColors::error(palette)) >= 4.5);
            QVERIFY(contrast(palette.color(QPalette::Window), SignalColors::warningText(palette)) >= 4.5);
            const QColor text = palette.color(QPalette::Text);
            QVERIFY(contrast(text, SignalColors::removed(palette)) >= 4.5);
            QVERIFY(contrast(text, SignalColors::inserted(palette)) >= 4.5);
        }
    }

    void outlinesAreSeenInTheDark()
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
        QVERIFY(
            contrast(line->palette().color(QPalette::Base), line->palette().color(QPalette::PlaceholderText))
            >= 4.5);
        Appearance::shared().setChoice(Appearance::System);
    }

    void asksDelegateOncePerText()
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

    void badgeStandsInsideAndGoesWhileEditing()
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
        QCOMPARE(badge.width(),
                 int(std::ceil(QFontMetricsF(font).horizontalAdvance(field.errorHint()))) + 10);
        QCOMPARE(field.textMargins().right(), badge.width() + 6);

        const auto isRed = [&] {
            const QPoint inside = badge.topLeft() + QPoint(3, badge.height() / 2);
            return onScreen(field).pixelColor(inside) == field.backgroundColor();
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

    void buttonTakesRoom()
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

    void completionsComeFromDelegate()
    {
        VXValidatingTextField field;
        const auto completions = [&field] {
            return field.textViewCompletionsForPartialWordRangeIndexOfSelectedItem(&field, {u"known"_s},
                                                                                   {0, 1});
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
        typeKeys(stage.field, u"x, abc<Ctrl+Space>"_s);
        auto *completer = stage.field->findChild<QCompleter *>();
        QVERIFY(completer && completer->popup()->isVisible());
        typeKeys(completer->popup(), u"<Down><Return>"_s);
        QCOMPARE(stage.field->text(), u"x, abc.alt"_s);
    }

    // committed: "-": nothing
    TABLE(tokensAreTyped, (const QString &keys, const QString &shown, const QString &committed), {
        row("comma completes", "<End>,e9,", "0041 00E9 ", "-");
        row("blank completes", "<End> e9 ", "0041 00E9 ", "-");
        row("Return commits", "<End> e9<Return>", "0041 00E9", "0041 00E9");
        row("leaving commits", "<End> e9<Tab>", "0041 00E9", "0041 00E9");
        row("Escape reverts", "<End> e9<Esc>", "0041", "-");
        row("Escape, then leaving", "<End> e9<Esc><Tab>", "0041", "-");
        row("nonsense goes", "<End> xy,42<Return>", "0041 0042", "0041 0042");
        row("no digit is typed", "<End>ß<Return>", "0041", "-");
        row("no sixth digit", "<End> 12345678<Return>", "0041 12345", "0041 12345");
        row("Backspace takes a token", "<End> e9,<Backspace><Return>", "0041", "-");
        row("Backspace takes a digit", "<End><Backspace>2<Return>", "0042", "0042");
        row("all deleted", "<End> <Backspace><Return>", "", "");
        row("in front", "<Home>20,30,<Return>", "0020 0030 0041", "0020 0030 0041");
        row("only looked at", "<Left><Tab>", "0041", "-");
    })
    {
        Stage<UnicodesTokenField> stage;
        stage.field->setTokens({u"0041"_s});
        QSignalSpy commits(stage.field, &UnicodesTokenField::tokensCommitted);
        typeKeys(stage.field, keys);
        QCOMPARE(stage.field->text(), shown);
        QCOMPARE(commits.size(), committed == "-"_L1 ? 0 : 1);
        if (!commits.isEmpty())
            QCOMPARE(commits.first().first().toStringList().join(u' '), committed);
    }

    /// Letters that an input method composes are taken and refused as those that keys type.
    void composedLettersAreTyped()
    {
        const auto compose = [](QWidget *field, const QString &text) {
            QInputMethodEvent composing(u"x"_s, {});
            QApplication::sendEvent(field, &composing);
            QInputMethodEvent done;
            done.setCommitString(text);
            QApplication::sendEvent(field, &done);
        };
        Stage<UnicodesTokenField> tokens;
        tokens.field->setTokens({u"0041"_s});
        for (const auto &[composed, shown] : {std::pair(u" "_s, u"0041 "_s),
                                              {u"é"_s, u"0041 "_s},
                                              {u"4"_s, u"0041 4"_s},
                                              {u"g"_s, u"0041 4"_s}}) {
            const QString before = tokens.field->text();
            const QVariant cursor = tokens.field->inputMethodQuery(Qt::ImCursorRectangle);
            compose(tokens.field, composed);
            QCOMPARE(tokens.field->text(), shown);
            if (shown == before) // then nothing is left of what was being composed either
                QCOMPARE(tokens.field->inputMethodQuery(Qt::ImCursorRectangle), cursor);
        }
        QVERIFY(tokens.window.findChild<ErrorBubble *>());
        Stage<QLineEdit> legacy;
        VXUnicodeFormatter formatter;
        formatter.attachTo(legacy.field);
        for (const QString &composed : {u"F"_s, u"é"_s, u"6"_s})
            compose(legacy.field, composed);
        QCOMPARE(legacy.field->text(), u"F6"_s);
        Delegate delegate;
        Stage<VXValidatingTextField> name;
        name.field->setDelegate(&delegate);
        compose(name.field, u"ä!"_s);
        QCOMPARE(delegate.asked, QStringList {u"ä!"_s}); // what is only being composed is no name yet
        QCOMPARE(name.field->errorHint(), u"Repeating name: b"_s);
        Stage<VocabularyComboBox> word;
        QSignalSpy commits(word.field, &VocabularyComboBox::textCommitted);
        compose(word.field->lineEdit(), u"字"_s);
        typeKeys(word.field->lineEdit(), u"<Return>"_s);
        QCOMPARE(commits.value(0).value(0).toString(), u"字"_s);
    }

    void tokensArePasted()
    {
        Stage<UnicodesTokenField> stage;
        QSignalSpy commits(stage.field, &UnicodesTokenField::tokensCommitted);
        QGuiApplication::clipboard()->setText(u"U+0041, 0xe9;1f600\n42"_s);
        QTest::keySequence(stage.field, QKeySequence::Paste);
        typeKeys(stage.field, u"<Return>"_s);
        QCOMPARE(commits.first().first().toStringList().join(u' '), u"0041 00E9 1F600 0042"_s);
    }

    void whatIsNoCodePointIsLeftOutWithAWord()
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

    void tokensOfSeveralRecords()
    {
        Stage<UnicodesTokenField> stage;
        stage.field->setMultipleValues();
        QSignalSpy commits(stage.field, &UnicodesTokenField::tokensCommitted);
        QVERIFY(!stage.field->placeholderText().isEmpty());
        typeKeys(stage.field, u"41<Backspace><Backspace><Tab>"_s);
        QVERIFY(commits.isEmpty());
        stage.field->setFocus();
        typeKeys(stage.field, u"41<Tab>"_s);
        QCOMPARE(commits.size(), 1);
        QVERIFY(!stage.field->isMixed());
    }

    void tokensAreDrawn()
    {
        UnicodesTokenField field;
        field.resize(300, field.sizeHint().height());
        field.show();
        const auto tinted = [&field] {
            const QImage image = onScreen(field);
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

    // committed: "-": nothing
    TABLE(vocabularyIsTyped, (const QString &keys, const QString &shown, const QString &committed), {
        row("free text, Return", "Sign<Return>", "Sign", "Sign");
        row("free text, left", "Sign<Tab>", "Sign", "Sign");
        row("Escape", "Sign<Esc><Esc>", "Mark", "-");
        row("typed again", "Mark<Return>", "Mark", "-");
        row("case counts", "mark<Tab><Tab>", "mark", "mark");
        row("emptied", "<Backspace><Return>", "", "");
        row("only passed", "<Tab>", "Mark", "-");
    })
    {
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

    void vocabularyChoiceCommits()
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
        typeKeys(popup, u"<Down><Return>"_s);
        QTRY_COMPARE(commits.size(), 1);
        QCOMPARE(commits.first().first().toString(), u"Number"_s);
        QCOMPARE(stage.field->text(), u"Number"_s);

        stage.field->showPopup();
        typeKeys(stage.field->view(), u"<Down><Return>"_s);
        QTRY_COMPARE(commits.size(), 2);
        QCOMPARE(commits.last().first().toString(), u"Mark"_s);
    }

    void vocabularyOfSeveralRecords()
    {
        Stage<VocabularyComboBox> stage;
        stage.field->setVocabulary({u"Letter"_s, u"Mark"_s});
        stage.field->setText(u"Letter"_s);
        stage.field->setMultipleValues();
        QCOMPARE(stage.field->text(), QString());
        QCOMPARE(stage.field->lineEdit()->placeholderText(), u"Multiple values"_s);
        QSignalSpy commits(stage.field, &VocabularyComboBox::textCommitted);
        typeKeys(stage.field->lineEdit(), u"L<Backspace><Tab>"_s);
        QVERIFY(commits.isEmpty());
        const QString longText(40'000, u'x');
        stage.field->lineEdit()->setFocus();
        QGuiApplication::clipboard()->setText(longText);
        QTest::keySequence(stage.field->lineEdit(), QKeySequence::Paste);
        typeKeys(stage.field->lineEdit(), u"<Return>"_s);
        QCOMPARE(commits.size(), 1);
        QCOMPARE(commits.first().first().toString(), longText);
    }

    void vocabularyIgnoresWheel()
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
};

RUNEBOOK_TEST_MAIN(InputFieldsTest)
#include "InputFieldsTest.moc"
