#include "scripting/classes/ScriptDialogs.h"

#include "platform/PlainLabel.h"
#include "platform/PlainText.h"
#include "scripting/classes/DialogSettings.h"
#include "scripting/python/ScriptRun.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <functional>
#include <limits>

namespace runebook::ScriptDialogs {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMostAnswers = 500;
constexpr qsizetype kLongestAnswer = 10'000;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ScriptDialogs)
};

QString title()
{
    const QString name = ScriptRun::currentName();
    return name.isEmpty() ? Texts::tr("Script") : name;
}

QString answerKey(const QString &question, const QString &field = {})
{
    return title() + u'\n' + question + u'\n' + field;
}

/// The last answer to a question that began with \a value; \a value itself when there is none of its kind.
QVariant lastAnswer(const QString &key, const QVariant &value)
{
    const QVariantList kept = Settings::kScriptAnswers.value().value(key).toList();
    const bool isOfThatKind = kept.size() == 2 && kept[0].toString() == value.toString() && kept[1].isValid();
    return isOfThatKind ? kept[1] : value;
}

void keepAnswer(const QString &key, const QVariant &value, const QVariant &answer)
{
    QVariantMap answers = Settings::kScriptAnswers.value();
    const QVariantList pair {value.toString(), answer};
    if (answer.toString().size() > kLongestAnswer || answers.value(key).toList() == pair)
        return;
    if (answers.size() >= kMostAnswers)
        answers.erase(answers.begin());
    answers.insert(key, pair);
    Settings::kScriptAnswers.set(answers);
}

/// One value of the form: the widget, and how to read it.
struct Editor {
    QWidget *widget;
    std::function<QVariant()> value;
};

Editor choiceEditor(const QStringList &choices, const QString &value)
{
    auto *box = new QComboBox;
    box->addItems(choices);
    box->setCurrentIndex(qMax(0, static_cast<int>(choices.indexOf(value))));
    return {box, [box] { return box->currentText(); }};
}

Editor textEditor(const QString &value)
{
    if (value.contains(u'\n')) {
        auto *edit = new QPlainTextEdit(value);
        edit->setTabChangesFocus(true);
        return {edit, [edit] { return edit->toPlainText(); }};
    }
    auto *edit = new QLineEdit;
    edit->setMaxLength(std::numeric_limits<int>::max());
    edit->setText(value);
    constexpr int kFewest = 24, kMost = 60;
    const int letters = qBound(kFewest, static_cast<int>(value.size()) + 2, kMost);
    edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * letters);
    return {edit, [edit] { return edit->text().isNull() ? u""_s : edit->text(); }};
}

/// Numbers without the noughts behind them.
class NumberBox : public QDoubleSpinBox
{
public:
    QString textFromValue(double value) const override
    {
        return locale().toString(value, 'f', QLocale::FloatingPointShortest);
    }
};

Editor editorFor(const QVariantMap &field, const QVariant &value)
{
    const QStringList choices = field[u"choices"_s].toStringList();
    if (!choices.isEmpty())
        return choiceEditor(choices, value.toString());
    switch (field[u"value"_s].typeId()) {
    case QMetaType::Bool: {
        auto *box = new QCheckBox;
        box->setChecked(value.toBool());
        return {box, [box] { return box->isChecked(); }};
    }
    case QMetaType::Int:
    case QMetaType::LongLong: {
        auto *box = new QSpinBox;
        box->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
        box->setValue(value.toInt());
        return {box, [box] { return box->value(); }};
    }
    case QMetaType::Double: {
        auto *box = new NumberBox;
        box->setDecimals(6);
        box->setRange(-1e12, 1e12);
        box->setValue(value.toDouble());
        return {box, [box] { return box->value(); }};
    }
    default:
        return textEditor(value.toString());
    }
}

/// How high the contents of a dialog may be, with its title and its buttons.
int mostHeight(const QWidget &dialog)
{
    return dialog.screen()->availableSize().height() * 2 / 3;
}

/// \a content, scrolling where it is too high for the screen.
QWidget *fitted(QWidget *content, const QWidget &dialog)
{
    const QSize size = content->sizeHint();
    if (size.height() <= mostHeight(dialog))
        return content;
    auto *scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setMinimumSize(size.width() + scroll->verticalScrollBar()->sizeHint().width(),
                           mostHeight(dialog));
    return scroll;
}

QDialogButtonBox *addButtons(QDialog &dialog, QDialogButtonBox::StandardButtons which)
{
    auto *buttons = new QDialogButtonBox(which, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    dialog.layout()->addWidget(buttons);
    return buttons;
}

/// Message boxes take their width from their texts alone.
void widen(QMessageBox &box)
{
    if (auto *grid = qobject_cast<QGridLayout *>(box.layout()))
        grid->addItem(new QSpacerItem(leastWidth(box), 0), grid->rowCount(), 0, 1, grid->columnCount());
}

void showLongMessage(const QString &heading, const QString &text)
{
    QDialog dialog(windowBelow());
    dialog.setWindowTitle(title());
    auto *column = new QVBoxLayout(&dialog);
    column->addWidget(plainLabel(messageText(heading), &dialog));
    auto *lines = new QPlainTextEdit(text);
    lines->setReadOnly(true);
    lines->setTabChangesFocus(true);
    lines->setAccessibleName(heading);
    lines->setMinimumWidth(leastWidth(dialog));
    column->addWidget(lines);
    addButtons(dialog, QDialogButtonBox::Ok)->button(QDialogButtonBox::Ok)->setFocus();
    dialog.resize(dialog.sizeHint().width(), mostHeight(dialog));
    dialog.exec();
}

} // namespace

QWidget *windowBelow()
{
    static QPointer<QWidget> last;
    if (QWidget *active = QApplication::activeWindow())
        last = active;
    return last && last->isVisible() ? last : nullptr;
}

int leastWidth(const QWidget &dialog)
{
    constexpr int kLetters = 50;
    return dialog.fontMetrics().averageCharWidth() * kLetters;
}

QVariant askFields(const QString &prompt, const QVariantList &fields, Memory memory)
{
    QDialog dialog(windowBelow());
    dialog.setWindowTitle(title());
    dialog.setMinimumWidth(leastWidth(dialog));
    auto *column = new QVBoxLayout(&dialog);
    if (!prompt.isEmpty()) {
        QLabel *label = plainLabel(messageText(prompt), &dialog);
        label->setWordWrap(prompt.size() > 80);
        column->addWidget(label);
    }
    auto *content = new QWidget;
    auto *form = new QFormLayout(content);
    form->setContentsMargins({});
    QList<std::pair<QString, Editor>> editors;
    for (const QVariant &each : fields) {
        const QVariantMap field = each.toMap();
        const QString key = field[u"key"_s].toString();
        const QVariant value = field[u"value"_s];
        const Editor editor =
            editorFor(field, memory == Memory::Keep ? lastAnswer(answerKey(prompt, key), value) : value);
        const QString label = field[u"label"_s].toString();
        editor.widget->setAccessibleName(label.isEmpty() ? prompt : label);
        if (label.isEmpty())
            form->addRow(editor.widget);
        else
            form->addRow(plainLabel(label, &dialog), editor.widget);
        editors.append({key, editor});
    }
    column->addWidget(fitted(content, dialog));
    addButtons(dialog, QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    if (!editors.isEmpty())
        editors.first().second.widget->setFocus();
    if (dialog.exec() != QDialog::Accepted)
        return {};
    QVariantMap answers;
    for (qsizetype i = 0; i < editors.size(); ++i) {
        const auto &[key, editor] = editors[i];
        answers.insert(key, editor.value());
        if (memory == Memory::Keep)
            keepAnswer(answerKey(prompt, key), fields[i].toMap()[u"value"_s], answers[key]);
    }
    return answers;
}

QString askYesNo(const QString &question, const QString &explanation)
{
    QMessageBox box(windowBelow());
    box.setIcon(QMessageBox::Question);
    box.setWindowTitle(title());
    setPlainTexts(box, question, explanation);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    widen(box);
    box.setDefaultButton(lastAnswer(answerKey(question), {}) == u"no"_s ? QMessageBox::No : QMessageBox::Yes);
    const int answer = box.exec();
    if (answer != QMessageBox::Yes && answer != QMessageBox::No)
        return {};
    const QString word = answer == QMessageBox::Yes ? u"yes"_s : u"no"_s;
    keepAnswer(answerKey(question), {}, word);
    return word;
}

QString askFile(const QString &prompt, bool isToSave, const QString &name, const QStringList &filters)
{
    QFileDialog dialog(windowBelow(), prompt.isEmpty() ? title() : prompt);
    dialog.setAcceptMode(isToSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(isToSave ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setNameFilters(QStringList(filters) << Texts::tr("All files") + " (*)"_L1);
    const QString last = lastAnswer(answerKey(prompt), {}).toString();
    if (!last.isEmpty())
        dialog.setDirectory(QFileInfo(last).absolutePath());
    if (!name.isEmpty())
        dialog.selectFile(name);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const QString path = dialog.selectedFiles().value(0);
    keepAnswer(answerKey(prompt), {}, path);
    return path;
}

void showMessage(const QString &heading, const QString &text)
{
    if (messageText(text) != text) {
        showLongMessage(heading, text);
        return;
    }
    QMessageBox box(windowBelow());
    box.setWindowTitle(title());
    setPlainTexts(box, heading, text);
    widen(box);
    box.exec();
}

} // namespace runebook::ScriptDialogs
