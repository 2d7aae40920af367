#include "editing/window/PaneRow.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/fields/SignalColors.h"
#include "editing/fields/TextBox.h"
#include "editing/fields/UnicodesTokenField.h"
#include "editing/fields/VXUnicodeFormatter.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/fields/VocabularyComboBox.h"
#include "editing/many/ListEntries.h"
#include "model/FieldTable.h"
#include "platform/PlainLabel.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QToolButton>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// The names by which scripts know the captions; they call this one shorter here than in comparisons.
QString captionNameOf(GlyphField field)
{
    return field == GlyphField::UnicodeLegacy ? u"infoLableLegacy"_s
                                              : u"infoLable"_s + QLatin1StringView(rowOf(field).caption);
}

bool isTyped(const QKeyEvent &key)
{
    const bool isCommand = key.modifiers() & (Qt::ControlModifier | Qt::MetaModifier | Qt::AltModifier);
    return !isCommand && !key.text().isEmpty() && key.text().front().isPrint();
}

} // namespace

PaneRow::PaneRow(GlyphField field, QGridLayout &grid, int place, QObject *parent)
    : QObject(parent),
      m_field(field),
      m_grid(grid),
      m_firstLine(kGridLines * place),
      m_editor(makeEditor(grid.parentWidget()))
{
    auto *caption = new QLabel(fieldTitle(field), grid.parentWidget());
    caption->setObjectName(captionNameOf(field));
    caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    caption->setBuddy(m_editor);
    m_editor->setObjectName(keyOfField(field));
    m_editor->setAccessibleName(fieldTitle(field));
    m_editor->installEventFilter(this);
    const bool isHigh = rowOf(field).editor == FieldEditor::Paragraphs;
    grid.addWidget(caption, m_firstLine, 0, isHigh ? Qt::AlignTop : Qt::Alignment());
    grid.addWidget(m_editor, m_firstLine, 1, 1, hasEntries(field) ? 1 : 2);
}

// Editors

QWidget *PaneRow::makeEditor(QWidget *form)
{
    switch (rowOf(m_field).editor) {
    case FieldEditor::CheckedLine: {
        auto *line = new VXValidatingTextField(form);
        // The badge may be cut; it must not push the ends of all fields out of the pane.
        line->setMinimumWidth(line->minimumSizeHint().width());
        setUpLine(line);
        addRemark(*line);
        return line;
    }
    case FieldEditor::Words:
        return makeWords(form);
    case FieldEditor::Tokens:
        return makeTokens(form);
    case FieldEditor::Paragraphs:
        return makeParagraphs(form);
    case FieldEditor::Line:
    case FieldEditor::None:
        break;
    }
    QLineEdit *line = setUpLine(new QLineEdit(form));
    if (m_field == GlyphField::UnicodeLegacy)
        (new VXUnicodeFormatter(line))->attachTo(line);
    return line;
}

QLineEdit *PaneRow::setUpLine(QLineEdit *line)
{
    line->setMaxLength(std::numeric_limits<int>::max());
    connect(line, &QLineEdit::textChanged, this, &PaneRow::textChanged);
    m_text = [line] { return line->text(); };
    m_show = [line](const CommonValue &value) {
        line->setPlaceholderText(value.isMixed ? tr("Multiple values") : QString());
        if (auto *validating = qobject_cast<VXValidatingTextField *>(line))
            validating->setStringValue(value.text);
        else
            line->setText(value.text);
        line->setCursorPosition(0);
    };
    return line;
}

/// What is wrong below the field, and beside it a button that leads to the record of the same name.
void PaneRow::addRemark(VXValidatingTextField &field)
{
    auto *goThere = new QToolButton(&field);
    goThere->setIcon(QIcon(u":/icons/search.svg"_s));
    goThere->setAutoRaise(true);
    goThere->setCursor(Qt::ArrowCursor);
    goThere->setToolTip(tr("Show the record that has this name"));
    goThere->setAccessibleName(goThere->toolTip());
    connect(goThere, &QToolButton::clicked, this, &PaneRow::recordRequested);
    field.setExtraButton(goThere);
    auto *remark = plainLabel({}, field.parentWidget());
    remark->setWordWrap(true);
    remark->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Minimum); // no reason to widen the pane
    remark->hide();
    m_grid.addWidget(remark, m_firstLine + 1, 1);
    connect(&field, &VXValidatingTextField::hiddenHintChanged, remark, [this, remark](const QString &hint) {
        QPalette colors;
        colors.setColor(QPalette::WindowText, SignalColors::warningText(remark->palette()));
        remark->setPalette(colors);
        remark->setText(hint);
        remark->setVisible(!hint.isEmpty());
        Q_EMIT remarkChanged();
    });
}

QWidget *PaneRow::makeWords(QWidget *form)
{
    auto *box = new VocabularyComboBox(form);
    box->setVocabulary(vocabularyOf(m_field));
    connect(box, &QComboBox::editTextChanged, this, &PaneRow::textChanged);
    connect(box, &VocabularyComboBox::textCommitted, this, &PaneRow::left);
    m_text = [box] { return box->text(); };
    m_show = [box](const CommonValue &value) {
        if (value.isMixed)
            box->setMultipleValues();
        else
            box->setText(value.text);
    };
    return box;
}

QWidget *PaneRow::makeTokens(QWidget *form)
{
    auto *tokens = new UnicodesTokenField(form);
    connect(tokens, &QLineEdit::textChanged, this, &PaneRow::textChanged);
    connect(tokens, &UnicodesTokenField::tokensCommitted, this, &PaneRow::left);
    m_text = [tokens] { return tokens->tokens().join(kListSeparator); };
    m_show = [tokens](const CommonValue &value) {
        if (value.isMixed)
            tokens->setMultipleValues();
        else
            tokens->setTokens(value.text.isEmpty() ? QStringList() : value.text.split(kListSeparator));
    };
    return tokens;
}

QWidget *PaneRow::makeParagraphs(QWidget *form)
{
    auto *box = new TextBox(form);
    box->setTabChangesFocus(true);
    box->setMinimumHeight(56);
    connect(box, &QPlainTextEdit::textChanged, this, &PaneRow::textChanged);
    box->setLongPaste([this, box](const QString &text, qsizetype caret) {
        if (box->isReadOnly())
            return false;
        Q_EMIT wholePasted(text, caret);
        return true;
    });
    m_text = [box] { return box->exactText(); };
    m_show = [box](const CommonValue &value) {
        box->setPlaceholderText(value.isMixed ? tr("Multiple values") : QString());
        box->setPlainText(value.text);
    };
    return box;
}

VXValidatingTextField *PaneRow::validatingField() const
{
    return qobject_cast<VXValidatingTextField *>(m_editor);
}

bool PaneRow::hasPendingText() const
{
    const auto *tokens = qobject_cast<UnicodesTokenField *>(m_editor);
    return isChanged() || (tokens && tokens->hasPendingText());
}

QString PaneRow::settle()
{
    auto *tokens = qobject_cast<UnicodesTokenField *>(m_editor);
    return tokens ? tokens->settle() : QString();
}

// Showing

void PaneRow::show(const CommonValue &value)
{
    m_isCut = value.text.size() < value.length;
    m_show(m_isCut ? CommonValue {value.text + u'…', value.length, false} : value);
    m_loaded = text();
    setReadOnly(m_isCut);
    offerWhole(value.length);
}

void PaneRow::offerEntries(bool areSeveral)
{
    if (!hasEntries(m_field) || (!areSeveral && !m_entries))
        return;
    if (!m_entries) {
        m_entries = new QToolButton(m_grid.parentWidget());
        m_entries->setObjectName(m_editor->objectName() + u"Entries"_s);
        m_entries->setText(u"±"_s);
        m_entries->setAutoRaise(true);
        m_entries->setToolTip(tr("Add to all or remove from all…"));
        m_entries->setAccessibleName(tr("%1: %2").arg(fieldTitle(m_field), m_entries->toolTip()));
        m_entries->setFocusPolicy(Qt::TabFocus);
        m_grid.addWidget(m_entries, m_firstLine, 2);
        QWidget::setTabOrder(m_editor, m_entries);
        connect(m_entries, &QToolButton::clicked, this, &PaneRow::entriesRequested);
    }
    m_entries->setVisible(areSeveral);
}

/// Whether the editor takes typing; a list of words can be chosen from all the same.
void PaneRow::setReadOnly(bool isReadOnly)
{
    if (auto *line = qobject_cast<QLineEdit *>(m_editor)) {
        line->setReadOnly(isReadOnly);
        if (isReadOnly)
            line->home(false); // the beginning is what there is to see
    } else if (auto *choice = qobject_cast<QComboBox *>(m_editor)) {
        choice->lineEdit()->setReadOnly(isReadOnly);
    } else if (auto *box = qobject_cast<TextBox *>(m_editor)) {
        box->setReadOnly(isReadOnly);
    }
}

/// Of a value that is too long for its field the beginning is shown; editing that alone would lose the rest.
void PaneRow::offerWhole(qsizetype length)
{
    if (!m_isCut) {
        if (m_whole)
            m_whole->hide();
        return;
    }
    if (!m_whole) {
        m_whole = new QPushButton(m_grid.parentWidget());
        m_whole->setObjectName(m_editor->objectName() + u"Whole"_s);
        m_whole->setAutoDefault(false);
        m_grid.addWidget(m_whole, m_firstLine + 2, 1);
        m_whole->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // no reason to widen the pane
        QWidget::setTabOrder(m_editor, m_whole);
        connect(m_whole, &QPushButton::clicked, this, &PaneRow::wholeRequested);
    }
    const QString count = QLocale().toString(static_cast<qlonglong>(length));
    m_whole->setText(tr("Show All (%1)…").arg(count));
    m_whole->setToolTip(tr("Show and edit all %1 characters").arg(count));
    m_whole->setAccessibleName(tr("%1: %2").arg(fieldTitle(m_field), m_whole->toolTip()));
    m_whole->show();
}

bool PaneRow::eventFilter(QObject *editor, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason != Qt::PopupFocusReason && reason != Qt::MenuBarFocusReason)
            Q_EMIT left();
    } else if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (key->key() == Qt::Key_Escape && hasPendingText()) {
            Q_EMIT takeBackRequested();
            return true;
        }
        if (m_isCut && (isReturn || isTyped(*key))) {
            Q_EMIT wholeRequested();
            return true;
        }
        if (isReturn && qobject_cast<QLineEdit *>(editor)) {
            Q_EMIT entered();
            return true;
        }
    }
    return QObject::eventFilter(editor, event);
}

} // namespace runebook
