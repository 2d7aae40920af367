#include "editing/window/DetailPane.h"

#include "editing/fields/ErrorBubble.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/fields/PendingTexts.h"
#include "editing/fields/SignalColors.h"
#include "editing/fields/TextBox.h"
#include "editing/fields/UnicodesTokenField.h"
#include "editing/fields/VXUnicodeFormatter.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/fields/VocabularyComboBox.h"
#include "editing/fields/WholeValueDialog.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/PreviewLabel.h"
#include "platform/CallLater.h"
#include "platform/PlainText.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// So many records are looked at before a selection is shown; whether the rest of a larger one has the same
// values turns out right after.
constexpr std::size_t kLookedAtOnce = 2000;

constexpr int kLeastPreview = 84;
constexpr int kMostPreview = 170;

/// Between two fields there is room for a remark on the first and for the button that shows all of it.
int gridRowOf(std::size_t row)
{
    return 3 * static_cast<int>(row);
}

QString mixedText()
{
    return QCoreApplication::translate("DetailPane", "Multiple values");
}

bool isTyped(const QKeyEvent &key)
{
    const bool isCommand = key.modifiers() & (Qt::ControlModifier | Qt::MetaModifier | Qt::AltModifier);
    return !isCommand && !key.text().isEmpty() && key.text().front().isPrint();
}

/// Whether a field takes typing; a list of words can be chosen from all the same.
void setReadOnly(QWidget *editor, bool isReadOnly)
{
    if (auto *line = qobject_cast<QLineEdit *>(editor)) {
        line->setReadOnly(isReadOnly);
        if (isReadOnly)
            line->home(false); // the beginning is what there is to see
    } else if (auto *choice = qobject_cast<QComboBox *>(editor)) {
        choice->lineEdit()->setReadOnly(isReadOnly);
    } else if (auto *box = qobject_cast<TextBox *>(editor)) {
        box->setReadOnly(isReadOnly);
    }
}

} // namespace

DetailPane::DetailPane(VXDocument &document, const RSRTVArrayController &list, QWidget *parent)
    : QWidget(parent),
      m_document(document),
      m_list(list),
      m_previewLabel(new PreviewLabel(this)),
      m_emptyLabel(new QLabel(tr("Select a record to see and edit its fields."), this)),
      m_form(new QWidget)
{
    setAccessibleName(tr("Fields of the selected records"));
    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setWordWrap(true);
    auto *grid = new QGridLayout(m_form);
    grid->setContentsMargins(12, 4, 12, 12);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    buildRows(*grid);
    auto *scroll = new QScrollArea(this);
    scroll->setWidget(m_form);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto *preview = new QVBoxLayout;
    preview->setContentsMargins(12, 12, 12, 8);
    preview->addWidget(m_previewLabel);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(preview);
    layout->addWidget(m_emptyLabel, 1);
    layout->addWidget(scroll, 1);
    setMinimumWidth(240);
    m_compareTimer.setInterval(0);
    connect(&m_compareTimer, &QTimer::timeout, this, &DetailPane::compareRest);
    m_scrollArea = scroll;
    m_document.addPendingTexts(this, [this] { return pendingTexts(); });
    connect(&m_document, &VXDocument::infosChanged, this, &DetailPane::validateFields);
    connect(&m_document, &VXDocument::infosInserted, this, &DetailPane::validateFields);
    connect(&m_document, &VXDocument::infosRemoved, this, &DetailPane::validateFields);
}

DetailPane::~DetailPane() = default;

// Building

void DetailPane::buildRows(QGridLayout &layout)
{
    m_rows.reserve(16);
    addValidatingLine(layout, GlyphField::Name, u"infoLableName"_s);
    addTokens(layout, u"infoLableUnicode"_s);
    addChoice(layout, GlyphField::Category, u"infoLableCategory"_s);
    addChoice(layout, GlyphField::SubCategory, u"infoLableSubCategory"_s);
    addChoice(layout, GlyphField::Case, u"infoLableCase"_s);
    addChoice(layout, GlyphField::Script, u"infoLableScript"_s);
    addChoice(layout, GlyphField::Direction, u"infoLableDirection"_s);
    addValidatingLine(layout, GlyphField::Production, u"infoLableProduction"_s);
    addLine(layout, GlyphField::SortName, u"infoLableSortName"_s);
    addLine(layout, GlyphField::SortNameKeep, u"infoLableSortNameKeep"_s);
    addLine(layout, GlyphField::Decompose, u"infoLableDecompose"_s);
    addLine(layout, GlyphField::Anchors, u"infoLableAnchors"_s);
    addLine(layout, GlyphField::Marks, u"infoLableAccents"_s);
    addValidatingLine(layout, GlyphField::AltNames, u"infoLableAltNames"_s);
    addLine(layout, GlyphField::UnicodeLegacy, u"infoLableLegacy"_s);
    auto *legacy = qobject_cast<QLineEdit *>(m_rows.back().editor);
    (new VXUnicodeFormatter(legacy))->attachTo(legacy);
    addTextBox(layout, GlyphField::Desc, u"infoLableDescription"_s);
    // The last one takes what room there is.
    layout.setRowStretch(gridRowOf(m_rows.size() - 1), 1);
}

DetailPane::Row &DetailPane::addRow(QGridLayout &layout, GlyphField field, const QString &captionName,
                                    QWidget *editor)
{
    auto *caption = new QLabel(fieldTitle(field), m_form);
    caption->setObjectName(captionName);
    caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    caption->setBuddy(editor);
    editor->setObjectName(keyOfField(field));
    editor->setAccessibleName(fieldTitle(field));
    editor->installEventFilter(this);
    const int row = gridRowOf(m_rows.size());
    layout.addWidget(caption, row, 0, field == GlyphField::Desc ? Qt::AlignTop : Qt::Alignment());
    layout.addWidget(editor, row, 1);
    m_rows.push_back({field, caption, editor});
    return m_rows.back();
}

void DetailPane::addLine(QGridLayout &layout, GlyphField field, const QString &captionName)
{
    auto *line = new QLineEdit(m_form);
    line->setMaxLength(std::numeric_limits<int>::max());
    connect(line, &QLineEdit::textChanged, this, &DetailPane::noteTyping);
    Row &row = addRow(layout, field, captionName, line);
    row.text = [line] { return line->text(); };
    row.show = [line](const CommonValue &value) {
        line->setPlaceholderText(value.isMixed ? mixedText() : QString());
        line->setText(value.text);
        line->setCursorPosition(0);
    };
}

void DetailPane::addValidatingLine(QGridLayout &layout, GlyphField field, const QString &captionName)
{
    auto *line = new VXValidatingTextField(m_form);
    // The badge may be cut; it must not push the ends of all fields out of the pane.
    line->setMinimumWidth(line->minimumSizeHint().width());
    connect(line, &QLineEdit::textChanged, this, &DetailPane::noteTyping);
    Row &row = addRow(layout, field, captionName, line);
    row.text = [line] { return line->text(); };
    row.show = [line](const CommonValue &value) {
        line->setPlaceholderText(value.isMixed ? mixedText() : QString());
        line->setStringValue(value.text);
        line->setCursorPosition(0);
    };
    auto *goThere = new QToolButton(line);
    goThere->setIcon(QIcon(u":/icons/search.svg"_s));
    goThere->setAutoRaise(true);
    goThere->setCursor(Qt::ArrowCursor);
    goThere->setToolTip(tr("Show the record that has this name"));
    goThere->setAccessibleName(goThere->toolTip());
    connect(goThere, &QToolButton::clicked, this, [this, line] {
        const QString name = repeatingName(m_document, line->text().split(kListSeparator));
        Q_EMIT showRequested(m_document.infoForName(name));
    });
    line->setExtraButton(goThere);
    auto *remark = plainLabel({}, m_form);
    remark->setWordWrap(true);
    remark->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Minimum); // no reason to widen the pane
    remark->hide();
    layout.addWidget(remark, gridRowOf(m_rows.size() - 1) + 1, 1);
    connect(line, &VXValidatingTextField::hiddenHintChanged, remark, [remark](const QString &hint) {
        QPalette colors;
        colors.setColor(QPalette::WindowText, SignalColors::warningText(remark->palette()));
        remark->setPalette(colors);
        remark->setText(hint);
        remark->setVisible(!hint.isEmpty());
    });
    connect(line, &VXValidatingTextField::hiddenHintChanged, this, &DetailPane::fitPreview,
            Qt::QueuedConnection);
}

void DetailPane::addChoice(QGridLayout &layout, GlyphField field, const QString &captionName)
{
    auto *box = new VocabularyComboBox(m_form);
    box->setVocabulary(vocabularyOf(field));
    connect(box, &QComboBox::editTextChanged, this, &DetailPane::noteTyping);
    Row &row = addRow(layout, field, captionName, box);
    row.text = [box] { return box->text(); };
    row.show = [box](const CommonValue &value) {
        if (value.isMixed)
            box->setMultipleValues();
        else
            box->setText(value.text);
    };
    connect(box, &VocabularyComboBox::textCommitted, this, [this, box] {
        if (Row *committed = rowOf(box))
            commitRow(*committed, Stay::Leaving);
    });
}

void DetailPane::addTokens(QGridLayout &layout, const QString &captionName)
{
    auto *tokens = new UnicodesTokenField(m_form);
    connect(tokens, &QLineEdit::textChanged, this, &DetailPane::noteTyping);
    Row &row = addRow(layout, GlyphField::Unicodes, captionName, tokens);
    row.text = [tokens] { return tokens->tokens().join(kListSeparator); };
    row.show = [tokens](const CommonValue &value) {
        if (value.isMixed)
            tokens->setMultipleValues();
        else
            tokens->setTokens(value.text.isEmpty() ? QStringList() : value.text.split(kListSeparator));
    };
    connect(tokens, &UnicodesTokenField::tokensCommitted, this, [this, tokens] {
        if (Row *committed = rowOf(tokens))
            commitRow(*committed, Stay::Leaving);
    });
}

void DetailPane::addTextBox(QGridLayout &layout, GlyphField field, const QString &captionName)
{
    auto *box = new TextBox(m_form);
    box->setTabChangesFocus(true);
    connect(box, &QPlainTextEdit::textChanged, this, &DetailPane::noteTyping);
    box->setLongPaste([this, box, field](const QString &text, qsizetype caret) {
        if (box->isReadOnly() || m_shown.empty())
            return false;
        editWhole(field)->setText(text, caret);
        return true;
    });
    box->setMinimumHeight(56);
    Row &row = addRow(layout, field, captionName, box);
    row.text = [box] { return box->exactText(); };
    row.show = [box](const CommonValue &value) {
        box->setPlaceholderText(value.isMixed ? mixedText() : QString());
        box->setPlainText(value.text);
    };
}

/// The fields first; the preview takes what they leave, so that none of them is under the fold of a small
/// window.
void DetailPane::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitPreview();
}

void DetailPane::fitPreview()
{
    const QMargins margins = layout()->itemAt(0)->layout()->contentsMargins();
    const int left = height() - margins.top() - margins.bottom() - m_form->minimumSizeHint().height();
    m_previewLabel->setFixedHeight(qBound(kLeastPreview, left, kMostPreview));
}

// Showing

void DetailPane::showSelection()
{
    InfoList selected = m_list.selectedObjects();
    if (selected != m_shown) {
        if (!commitEditing())
            takeBackRefused();
        m_shown = std::move(selected);
        for (Row &row : m_rows)
            showRow(row);
    } else {
        // The same records, changed from elsewhere: what is being typed stays.
        for (Row &row : m_rows) {
            if (row.text() == row.loaded)
                showRow(row);
        }
    }
    m_emptyLabel->setVisible(m_shown.empty());
    m_scrollArea->setVisible(!m_shown.empty());
    validateFields();
    showPreview();
}

void DetailPane::showRow(Row &row)
{
    const std::span<const InfoPtr> first = std::span(m_shown).first(std::min(m_shown.size(), kLookedAtOnce));
    const CommonValue value = commonValue(first, row.field);
    row.compared = value.isMixed ? m_shown.size() : first.size();
    showValue(row, value);
    if (row.compared < m_shown.size())
        m_compareTimer.start();
}

void DetailPane::showValue(Row &row, const CommonValue &value)
{
    m_isShowing = true;
    row.isCut = value.text.size() < value.length;
    row.show(row.isCut ? CommonValue {value.text + u'…', value.length, false} : value);
    row.loaded = row.text();
    setReadOnly(row.editor, row.isCut);
    offerWhole(row, value.length);
    // One name for several records cannot be.
    row.editor->setEnabled(row.field != GlyphField::Name || m_shown.size() == 1);
    m_isShowing = false;
}

/// Of a value that is too long for its field the beginning is shown; editing that alone would lose the rest.
void DetailPane::offerWhole(Row &row, qsizetype length)
{
    if (!row.isCut) {
        if (row.whole)
            row.whole->hide();
        return;
    }
    if (!row.whole) {
        row.whole = new QPushButton(m_form);
        row.whole->setObjectName(row.editor->objectName() + u"Whole"_s);
        row.whole->setAutoDefault(false);
        static_cast<QGridLayout *>(m_form->layout())
            ->addWidget(row.whole, gridRowOf(static_cast<std::size_t>(&row - m_rows.data())) + 2, 1);
        row.whole->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // no reason to widen the pane
        setTabOrder(row.editor, row.whole);
        connect(row.whole, &QPushButton::clicked, this, [this, field = row.field] { editWhole(field); });
    }
    const QString count = QLocale().toString(static_cast<qlonglong>(length));
    row.whole->setText(tr("Show All (%1)…").arg(count));
    row.whole->setToolTip(tr("Show and edit all %1 characters").arg(count));
    row.whole->setAccessibleName(tr("%1: %2").arg(fieldTitle(row.field), row.whole->toolTip()));
    row.whole->show();
}

WholeValueDialog *DetailPane::editWhole(GlyphField field)
{
    auto *sheet = new WholeValueDialog(m_document, m_shown, field, window());
    connect(sheet, &WholeValueDialog::remarked, this, &DetailPane::remarked);
    sheet->open();
    return sheet;
}

void DetailPane::compareRest()
{
    constexpr int kSliceMs = 6;
    const QDeadlineTimer deadline(kSliceMs);
    for (Row &row : m_rows) {
        while (row.compared < m_shown.size()) {
            if (deadline.hasExpired())
                return;
            std::size_t end = std::min(m_shown.size(), row.compared + kLookedAtOnce);
            for (; row.compared < end; ++row.compared) {
                if (lookAlike(*m_shown.front(), *m_shown[row.compared], row.field))
                    continue;
                row.compared = end = m_shown.size();
                if (row.text() == row.loaded)
                    showValue(row, {{}, 0, true});
            }
        }
    }
    m_compareTimer.stop();
}

void DetailPane::showPreview()
{
    if (m_shown.size() == 1)
        m_previewLabel->setFormattedText(m_document.formatStringFromInfo(m_shown.front()));
    else
        m_previewLabel->clear();
}

void DetailPane::editName()
{
    if (auto *line = qobject_cast<QLineEdit *>(editorOf(GlyphField::Name)); line && isVisibleTo(window())) {
        line->setFocus();
        line->selectAll();
    }
}

QWidget *DetailPane::editorOf(GlyphField field) const
{
    for (const Row &row : m_rows) {
        if (row.field == field)
            return row.editor;
    }
    return nullptr;
}

QWidget *DetailPane::firstEditor() const
{
    const auto isUsable = [](const Row &row) { return row.editor->isVisible() && row.editor->isEnabled(); };
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), isUsable);
    return row == m_rows.end() ? nullptr : row->editor;
}

DetailPane::Row *DetailPane::rowOf(const QObject *editor)
{
    for (Row &row : m_rows) {
        if (row.editor == editor)
            return &row;
    }
    return nullptr;
}

// Editing

void DetailPane::setFieldDelegate(QObject *delegate)
{
    for (const Row &row : m_rows) {
        if (auto *field = qobject_cast<VXValidatingTextField *>(row.editor))
            field->setDelegate(delegate);
    }
}

void DetailPane::noteTyping()
{
    if (!m_isShowing && !m_shown.empty())
        m_document.pendingTextChanged();
}

QJsonArray DetailPane::pendingTexts() const
{
    QJsonArray texts;
    for (const Row &row : m_rows) {
        const QString text = m_shown.empty() ? QString() : row.text();
        if (!m_shown.empty() && text != row.loaded)
            texts << pendingText(m_document, m_shown, row.field, text);
    }
    return texts;
}

bool DetailPane::commitEditing(Error *refusal)
{
    return std::all_of(m_rows.begin(), m_rows.end(),
                       [&](Row &row) { return commitRow(row, Stay::HoldsFocus, refusal); });
}

bool DetailPane::commitRow(Row &row, Stay stay, Error *refusal)
{
    if (m_isShowing || m_shown.empty())
        return true;
    QString remark;
    if (auto *tokens = qobject_cast<UnicodesTokenField *>(row.editor))
        remark = tokens->settle();
    const QString text = row.text();
    if (text != row.loaded) {
        if (const Error reason = objectionToText(m_document, m_shown, row.field, text);
            !reason.domain.isEmpty()) {
            sayRefusal(row, reason, stay);
            return fail(refusal, reason);
        }
        // First: telling of the change comes back here.
        row.loaded = text;
        setFieldFromText(m_document, m_shown, row.field, text);
        m_document.flushChanges();
        if (const std::optional<FieldRemark> loss = remarkOnValue(m_document, m_shown, row.field))
            Q_EMIT remarked(*loss);
    }
    if (!remark.isNull())
        callLater(row.editor, [editor = row.editor, remark] { ErrorBubble::remark(editor, remark); });
    return true;
}

void DetailPane::sayRefusal(const Row &row, const Error &reason, Stay stay)
{
    FieldRemark remark = remarkOnRefusal(m_document, m_shown, row.field, row.text(), reason);
    if (!remark.offer.isEmpty()) {
        remark.takeOffer = [this, editor = row.editor, take = remark.takeOffer] {
            revert(editor);
            take();
        };
        Q_EMIT remarked(remark);
    }
    if (stay == Stay::HoldsFocus) {
        m_scrollArea->ensureWidgetVisible(row.editor);
        row.editor->setFocus();
        ErrorBubble::show(row.editor, reason);
        return;
    }
    // A field that is left shows its mark; the others say it, after the event that takes bubbles away.
    const auto *marked = qobject_cast<VXValidatingTextField *>(row.editor);
    if (!marked || marked->errorHint().isEmpty())
        callLater(row.editor, [editor = row.editor, reason] { ErrorBubble::show(editor, reason); });
}

/// Where the records are another program's or script's choice, a refused text has no place to stay.
void DetailPane::takeBackRefused()
{
    for (Row &row : m_rows) {
        if (row.text() == row.loaded)
            continue;
        const Error reason = objectionToText(m_document, m_shown, row.field, row.text());
        Q_EMIT remarked({tr("“%1” was not taken: %2").arg(row.text(), reason.text()), {}, {}});
        showRow(row);
    }
}

bool DetailPane::hasPendingText(const QObject *editor) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [editor](const Row &candidate) { return candidate.editor == editor; });
    if (row == m_rows.end() || m_shown.empty())
        return false;
    const auto *tokens = qobject_cast<UnicodesTokenField *>(row->editor);
    return row->text() != row->loaded || (tokens && tokens->hasPendingText());
}

void DetailPane::revert(const QObject *editor)
{
    if (Row *row = rowOf(editor)) {
        showRow(*row);
        validateFields();
    }
}

/// What may stand in a field depends on all records, so it is asked again whenever one has changed.
void DetailPane::validateFields()
{
    for (const Row &row : m_rows) {
        if (auto *field = qobject_cast<VXValidatingTextField *>(row.editor))
            field->validateAgain();
    }
}

bool DetailPane::textFieldHasValidContent(QObject *object)
{
    auto *field = qobject_cast<VXValidatingTextField *>(object);
    const Row *row = rowOf(object);
    if (!field || !row)
        return true;
    // Several records have no one name to object to.
    const bool isAsked = !m_shown.empty() && field->isEnabled();
    const Error reason =
        isAsked && !row->isCut ? objectionToText(m_document, m_shown, row->field, field->text()) : Error();
    const QString hint = reason.description.section(u'\n', 0, 0);
    field->setErrorHint(hint);
    const bool isSomebodys =
        !row->isCut && !repeatingName(m_document, field->text().split(kListSeparator)).isNull();
    field->extraButton()->setVisible(!hint.isEmpty() && isSomebodys);
    return hint.isEmpty();
}

bool DetailPane::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        Row *row = rowOf(object);
        if (row && reason != Qt::PopupFocusReason && reason != Qt::MenuBarFocusReason)
            commitRow(*row, Stay::Leaving);
    } else if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        Row *row = rowOf(object);
        if (row && key->key() == Qt::Key_Escape && hasPendingText(row->editor)) {
            revert(row->editor);
            return true;
        }
        const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (row && row->isCut && (isReturn || isTyped(*key))) {
            editWhole(row->field);
            return true;
        }
        if (row && isReturn && qobject_cast<QLineEdit *>(object)) {
            commitRow(*row, Stay::HoldsFocus);
            return true;
        }
    }
    return QWidget::eventFilter(object, event);
}

} // namespace runebook
