#include "editing/fields/WholeValueDialog.h"

#include "editing/fields/ErrorBubble.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/fields/PendingTexts.h"
#include "editing/fields/TextBox.h"
#include "platform/Background.h"
#include "platform/PlainLabel.h"
#include "platform/ShownText.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <cerrno>
#include <new>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// The field as its display text, which is copied only where it is none already.
LongText longTextOf(const VXGlyphInfo &info, GlyphField field)
{
    const bool isOwnText = isStored(field) && !info.stored(field).view().isNull();
    return isOwnText ? LongText(info.stored(field)) : LongText(info.displayText(field));
}

} // namespace

WholeValueDialog::WholeValueDialog(VXDocument &document, InfoList infos, GlyphField field, QWidget *parent)
    : QDialog(parent, Qt::Sheet),
      m_document(document),
      m_infos(std::move(infos)),
      m_field(field),
      m_text(longTextOf(*m_infos.front(), field)),
      m_edit(new TextBox(this)),
      m_partLabel(plainLabel(tr("Part"), this)),
      m_number(new QSpinBox(this)),
      m_count(plainLabel({}, this)),
      m_previous(new QPushButton(tr("&Previous"), this)),
      m_next(new QPushButton(tr("&Next"), this))
{
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(fieldTitle(field));
    build();
    connect(m_number, &QSpinBox::valueChanged, this, [this](int number) { showPart(number - 1); });
    connect(m_previous, &QPushButton::clicked, this, [this] { showPart(m_part - 1); });
    connect(m_next, &QPushButton::clicked, this, [this] { showPart(m_part + 1); });
    m_edit->setLongPaste([this](const QString &part, qsizetype caret) { return takeLongPaste(part, caret); });
    connect(m_edit, &TextBox::textChanged, &document, &Document::pendingTextChanged);
    document.addPendingTexts(this, [this] { return pendingTexts(); });
    connect(&document, &QObject::destroyed, this, [this] { done(Rejected); });
    showPlace();
}

void WholeValueDialog::build()
{
    constexpr QSize kUsual {560, 420};
    constexpr qsizetype kLongestName = 60;
    const QString of = m_infos.size() == 1
        ? tr("%1 of “%2”")
              .arg(fieldTitle(m_field),
                   shownText(m_infos.front()
                                 ->stored(GlyphField::Name)
                                 .beginning(m_infos.front()->sourceData(), kLongestName + 2),
                             kLongestName))
        : tr("%1 of %2 records").arg(fieldTitle(m_field), QLocale().toString(qlonglong(m_infos.size())));
    auto *caption = plainLabel(of, this);
    caption->setWordWrap(true);
    caption->setBuddy(m_edit);
    m_edit->setAccessibleName(of);
    m_edit->setTabChangesFocus(true);
    m_number->setAccessibleName(tr("Part"));
    m_number->setKeyboardTracking(false);
    auto *removeAll = new QPushButton(tr("&Remove All"), this);
    connect(removeAll, &QPushButton::clicked, this, [this] { setText({}); });
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->addButton(removeAll, QDialogButtonBox::ResetRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &WholeValueDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    for (QPushButton *button : {m_previous, m_next, removeAll})
        button->setAutoDefault(false);
    auto *parts = new QHBoxLayout;
    for (QWidget *widget : std::initializer_list<QWidget *> {m_partLabel, m_number, m_count})
        parts->addWidget(widget);
    parts->addStretch();
    parts->addWidget(m_previous);
    parts->addWidget(m_next);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(caption);
    layout->addWidget(m_edit, 1);
    layout->addLayout(parts);
    layout->addWidget(buttons);
    resize(kUsual);
    m_edit->setFocus();
}

// Parts

void WholeValueDialog::showPart(qsizetype index)
{
    takePart();
    m_part = qBound<qsizetype>(0, index, partCount() - 1);
    showPlace();
}

void WholeValueDialog::setText(const QString &text, qsizetype place)
{
    m_text = LongText(text);
    m_isOther = true;
    m_part = m_text.partAt(place);
    showPlace();
    m_document.pendingTextChanged();
}

/// Shows the part that is the current one now.
void WholeValueDialog::showPlace()
{
    const QSignalBlocker quiet(m_edit);
    const QSignalBlocker quietNumber(m_number);
    m_edit->setPlainText(m_text.part(m_part));
    m_loaded = m_edit->exactText();
    m_number->setRange(1, static_cast<int>(partCount()));
    m_number->setValue(static_cast<int>(m_part) + 1);
    m_count->setText(tr("of %1").arg(QLocale().toString(qlonglong(partCount()))));
    m_previous->setEnabled(m_part > 0);
    m_next->setEnabled(m_part + 1 < partCount());
}

/// What was typed into the part that is shown.
void WholeValueDialog::takePart()
{
    const QString text = m_edit->exactText();
    if (text == m_loaded)
        return;
    m_text.setPart(m_part, text);
    m_loaded = text;
}

/// A part that would grow too long for the editor: the text is cut into new parts.
bool WholeValueDialog::takeLongPaste(const QString &part, qsizetype caret)
{
    m_text.setPart(m_part, part);
    m_part = m_text.partBehind(m_part, caret);
    showPlace();
    m_document.pendingTextChanged();
    return true;
}

// The whole

bool WholeValueDialog::isChanged()
{
    takePart();
    return m_isOther || m_text.isChanged();
}

QJsonArray WholeValueDialog::pendingTexts()
{
    if (!isChanged())
        return {};
    return {m_isOther ? pendingText(m_document, m_infos, m_field, m_text.text())
                      : pendingEdits(m_document, m_infos, m_field, m_text)};
}

// Storing

void WholeValueDialog::reject()
{
    if (!m_isStoring)
        QDialog::reject();
}

void WholeValueDialog::accept()
{
    if (m_isStoring)
        return;
    if (isChanged() && isStoredApart()) {
        storeApart();
        return;
    }
    Error error;
    if (isChanged() && !setFieldFromText(m_document, m_infos, m_field, m_text.text(), &error)) {
        m_edit->setFocus();
        ErrorBubble::show(m_edit, error);
        return;
    }
    QDialog::accept();
    tellStored();
}

/// Whether putting the text together takes longer than a key may wait; lists are made of their texts at once.
bool WholeValueDialog::isStoredApart() const
{
    constexpr qsizetype kMuch = 1 << 20;
    switch (m_field) {
    case GlyphField::Name:
    case GlyphField::Unicodes:
    case GlyphField::AltNames:
        return false;
    default:
        return m_text.originalSize() > kMuch;
    }
}

void WholeValueDialog::storeApart()
{
    showStoring(true);
    runApart([self = QPointer<WholeValueDialog>(this), text = m_text, field = m_field] {
        FieldValue value;
        Error error;
        try {
            value = text.value();
            error = objectionToLongText(field, value.view());
        } catch (const std::bad_alloc &) {
            error = {u"EditError"_s, ENOMEM, tr("There is not enough memory for it."), {}, {}};
        }
        runOnMainThread([self, value, error] {
            if (self)
                self->takeStored(value, error);
        });
    });
}

/// All is dimmed but the word that says why, which takes the place of the number of the part.
void WholeValueDialog::showStoring(bool isStoring)
{
    m_isStoring = isStoring;
    for (QWidget *part : findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        part->setEnabled(!isStoring || part == m_count);
    for (QWidget *part : std::initializer_list<QWidget *> {m_partLabel, m_number})
        part->setVisible(!isStoring);
    if (isStoring)
        m_count->setText(tr("Storing…"));
}

void WholeValueDialog::takeStored(const FieldValue &value, const Error &error)
{
    showStoring(false);
    showPlace();
    if (!error.domain.isEmpty()) {
        m_edit->setFocus();
        ErrorBubble::show(m_edit, error);
        return;
    }
    setFieldToValue(m_document, m_infos, m_field, value);
    QDialog::accept();
    tellStored();
}

void WholeValueDialog::tellStored()
{
    m_document.flushChanges();
    if (const std::optional<FieldRemark> remark = remarkOnValue(m_document, m_infos, m_field))
        Q_EMIT remarked(*remark);
}

} // namespace runebook
