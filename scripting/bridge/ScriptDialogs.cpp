#include "scripting/bridge/ScriptDialogs.h"

#include "platform/PlainText.h"
#include "platform/UserDefaults.h"
#include "scripting/ScriptRun.h"

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
#include <QSpinBox>
#include <functional>
#include <limits>

namespace runebook::ScriptDialogs {

using namespace Qt::StringLiterals;

namespace {

constexpr auto kAnswers = "VXScriptAnswers"_L1;
constexpr qsizetype kMostAnswers = 500;
constexpr qsizetype kLongestAnswer = 10'000;

QString tr(const char *text)
{
    return QCoreApplication::translate("ScriptDialogs", text);
}

QString title()
{
    const QString name = ScriptRun::currentName();
    return name.isEmpty() ? tr("Script") : name;
}

QString answerKey(const QString &question, const QString &field = {})
{
    return title() + u'\n' + question + u'\n' + field;
}

/// The last answer to a question that began with \a value; \a value itself when there is none of its kind.
QVariant lastAnswer(const QString &key, const QVariant &value)
{
    const QVariantList kept = UserDefaults::standard().objectForKey(kAnswers).toMap().value(key).toList();
    const bool isOfThatKind = kept.size() == 2 && kept[0].toString() == value.toString() && kept[1].isValid();
    return isOfThatKind ? kept[1] : value;
}

void keepAnswer(const QString &key, const QVariant &value, const QVariant &answer)
{
    UserDefaults &defaults = UserDefaults::standard();
    QVariantMap answers = defaults.objectForKey(kAnswers).toMap();
    const QVariantList pair {value.toString(), answer};
    if (answer.toString().size() > kLongestAnswer || answers.value(key).toList() == pair)
        return;
    if (answers.size() >= kMostAnswers)
        answers.erase(answers.begin());
    answers.insert(key, pair);
    defaults.setObjectForKey(answers, kAnswers);
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
        auto *box = new QDoubleSpinBox;
        box->setDecimals(6);
        box->setRange(-1e12, 1e12);
        box->setValue(value.toDouble());
        return {box, [box] { return box->value(); }};
    }
    default:
        return textEditor(value.toString());
    }
}

} // namespace

QVariant askFields(const QString &prompt, const QVariantList &fields, Memory memory)
{
    QDialog dialog(QApplication::activeWindow());
    dialog.setWindowTitle(title());
    auto *column = new QVBoxLayout(&dialog);
    if (!prompt.isEmpty()) {
        QLabel *label = plainLabel(prompt, &dialog);
        label->setWordWrap(prompt.size() > 80);
        column->addWidget(label);
    }
    auto *form = new QFormLayout;
    column->addLayout(form);
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
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    column->addWidget(buttons);
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
    QMessageBox box(QApplication::activeWindow());
    box.setIcon(QMessageBox::Question);
    box.setWindowTitle(title());
    setPlainTexts(box, question, explanation);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
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
    QFileDialog dialog(QApplication::activeWindow(), prompt.isEmpty() ? title() : prompt);
    dialog.setAcceptMode(isToSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(isToSave ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setNameFilters(QStringList(filters) << tr("All files") + " (*)"_L1);
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
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(title());
    setPlainTexts(box, heading, text);
    box.exec();
}

} // namespace runebook::ScriptDialogs
