#include "editing/records/SortNameDialog.h"

#include "editing/records/RecordSettings.h"
#include "editing/records/SortNumbering.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <limits>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kMostDigits = 12;
constexpr qsizetype kLongestPrefixShown = 20;
constexpr int kExampleWidth = 40; // average characters

} // namespace

SortNameDialog::SortNameDialog(qsizetype recordCount, QWidget *parent)
    : QDialog(parent, parent ? Qt::Sheet : Qt::Dialog),
      m_recordCount(recordCount),
      m_prefix(new QLineEdit(this)),
      m_example(new QLabel(this))
{
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Set Sort Names"));
    SortNumbering::registerDefaults();

    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_prefix->setMaxLength(std::numeric_limits<int>::max());
    m_prefix->setObjectName(Settings::kSortNamePrefix.key());
    m_prefix->setText(Settings::kSortNamePrefix.value());
    connect(m_prefix, &QLineEdit::textChanged, this, [this](const QString &text) {
        Settings::kSortNamePrefix.set(text);
        updateExample();
    });
    form->addRow(tr("&Prefix:"), m_prefix);
    constexpr int kLeast = std::numeric_limits<int>::min();
    constexpr int kMost = std::numeric_limits<int>::max();
    form->addRow(tr("&Start:"), numberField(Settings::kSortNameStart, kLeast, kMost));
    form->addRow(tr("S&tep:"), numberField(Settings::kSortNameStep, kLeast, kMost));
    form->addRow(tr("&Digits:"), numberField(Settings::kSortNameDigits, 1, kMostDigits));

    form->addRow(tr("Example:"), m_example);
    m_example->setMinimumWidth(fontMetrics().averageCharWidth() * kExampleWidth);
    m_example->setTextFormat(Qt::PlainText);
    m_example->setAccessibleName(tr("Example"));
    m_example->setTextInteractionFlags(Qt::TextSelectableByMouse);
    updateExample();

    // After the fields, so that they come first in the order of Tab.
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addStretch();
    layout->addWidget(buttons);
    m_prefix->setFocus();
    m_prefix->selectAll();
}

QSpinBox *SortNameDialog::numberField(const Setting<int> &setting, int minimum, int maximum)
{
    auto *field = new QSpinBox(this);
    field->setObjectName(setting.key());
    field->setRange(minimum, maximum);
    field->setValue(setting.value());
    connect(field, &QSpinBox::valueChanged, this, [this, setting](int value) {
        setting.set(value);
        updateExample();
    });
    return field;
}

QString SortNameDialog::example() const
{
    SortNumbering numbering = SortNumbering::fromDefaults();
    if (numbering.prefix.size() > kLongestPrefixShown)
        numbering.prefix = u'…' + numbering.prefix.last(kLongestPrefixShown);
    const auto name = [&](qsizetype place) { return numbering.nameForNumber(numbering.numberAt(place)); };
    QStringList names;
    for (qsizetype place = 0; place < qMin<qsizetype>(m_recordCount, 3); ++place)
        names << name(place);
    if (m_recordCount > 4)
        names << u"…"_s;
    if (m_recordCount > 3)
        names << name(m_recordCount - 1);
    return names.join(u", "_s);
}

void SortNameDialog::updateExample()
{
    m_example->setText(example());
}
