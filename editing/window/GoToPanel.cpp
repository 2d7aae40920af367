#include "editing/window/GoToPanel.h"

#include "editing/window/EditCommands.h"
#include "platform/PlainLabel.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace runebook {

GoToPanel::GoToPanel(const VXDocument &document, QWidget *parent)
    : QDialog(parent), m_document(document), m_field(new QLineEdit(this)), m_found(plainLabel({}, this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Go to Name or Code Point"));
    auto *label = new QLabel(tr("&Name, code point or character:"), this);
    label->setBuddy(m_field);
    m_field->setMaxLength(std::numeric_limits<int>::max());
    m_field->setPlaceholderText(tr("A.sc, 0041, U+1F600, ß"));
    m_field->setMinimumWidth(320);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_goButton = buttons->button(QDialogButtonBox::Ok);
    m_goButton->setText(tr("Go"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_field);
    layout->addWidget(m_found);
    layout->addWidget(buttons);
    connect(m_field, &QLineEdit::textChanged, this, &GoToPanel::showFound);
    connect(buttons, &QDialogButtonBox::accepted, this, &GoToPanel::go);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    showFound();
}

void GoToPanel::showFound()
{
    const InfoPtr info = infoForNameOrCodePoint(m_document, m_field->text());
    m_goButton->setEnabled(info != nullptr);
    if (info)
        m_found->setText(info->name().left(60) + QStringLiteral("  ") + info->unicode().left(12));
    else
        m_found->setText(m_field->text().trimmed().isEmpty() ? QString() : tr("There is no such glyph."));
}

void GoToPanel::go()
{
    if (const InfoPtr info = infoForNameOrCodePoint(m_document, m_field->text())) {
        Q_EMIT chosen(info);
        accept();
    }
}

} // namespace runebook
