#include "editing/VXFindReplaceWindowController.h"

#include "editing/MarkedTextDelegate.h"
#include "editing/ReplacePreviewModel.h"
#include "editing/SignalColors.h"
#include "platform/Unattended.h"
#include "platform/UndoManager.h"
#include "platform/UserDefaults.h"
#include "ui_VXFindReplaceWindowController_11.h"

#include <QHeaderView>
#include <QPushButton>
#include <chrono>

using namespace runebook;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qsizetype kShownChanges = 100;

QString searchKey()
{
    return u"FindAndReplaceSearch"_s;
}

QString replaceKey()
{
    return u"FindAndReplaceReplace"_s;
}

QString fieldKey()
{
    return u"FindAndReplaceField"_s;
}

} // namespace

VXFindReplaceWindowController::VXFindReplaceWindowController(QWidget *parent)
    : QDialog(parent),
      m_ui(std::make_unique<Ui::VXFindReplaceWindowController>()),
      m_changes(new ReplacePreviewModel(this))
{
    m_ui->setupUi(this);
    setUpFields();
    setUpTable();

    QPushButton *replace = m_ui->buttonBox->button(QDialogButtonBox::Ok);
    replace->setText(tr("&Replace"));
    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &VXFindReplaceWindowController::doReplace);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &VXFindReplaceWindowController::cancel);
    m_problemsTimer.setSingleShot(true);
    m_problemsTimer.setInterval(150ms);
    connect(&m_problemsTimer, &QTimer::timeout, this, &VXFindReplaceWindowController::updateProblems);
    updatePreview();
}

VXFindReplaceWindowController::~VXFindReplaceWindowController()
{
    // A field that loses the focus because its window goes still tells of the end of its editing.
    for (QLineEdit *field : {m_ui->findField, m_ui->replaceField})
        field->disconnect(this);
}

void VXFindReplaceWindowController::setUpFields()
{
    for (int tag = FindReplace::kFirstTag; tag <= FindReplace::kLastTag; ++tag)
        m_ui->fieldPopup->addItem(FindReplace::titleForTag(tag), tag);
    const UserDefaults &defaults = UserDefaults::standard();
    selectItemWithTag(defaults.integerForKey(fieldKey()));
    m_ui->findField->setText(defaults.stringForKey(searchKey()));
    m_ui->replaceField->setText(defaults.stringForKey(replaceKey()));

    connect(m_ui->fieldPopup, &QComboBox::currentIndexChanged, this,
            &VXFindReplaceWindowController::updatePreview);
    for (QLineEdit *field : {m_ui->findField, m_ui->replaceField}) {
        connect(field, &QLineEdit::textChanged, this, &VXFindReplaceWindowController::updatePreview);
        connect(field, &QLineEdit::editingFinished, this, &VXFindReplaceWindowController::keepTexts);
    }
}

void VXFindReplaceWindowController::setUpTable()
{
    QTableView *table = m_ui->changesTable;
    table->setModel(m_changes);
    table->setItemDelegateForColumn(ReplacePreviewModel::BeforeColumn,
                                    new MarkedTextDelegate(MarkedTextDelegate::Mark::Removed, this));
    table->setItemDelegateForColumn(ReplacePreviewModel::AfterColumn,
                                    new MarkedTextDelegate(MarkedTextDelegate::Mark::Inserted, this));
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 6);
}

void VXFindReplaceWindowController::setSelectedInfos(const InfoList &infos)
{
    m_selectedInfos = infos;
    updatePreview();
}

int VXFindReplaceWindowController::selectedTag() const
{
    return m_ui->fieldPopup->currentData().toInt();
}

void VXFindReplaceWindowController::selectItemWithTag(int tag)
{
    m_ui->fieldPopup->setCurrentIndex(qMax(0, m_ui->fieldPopup->findData(tag)));
}

int VXFindReplaceWindowController::runDialogModalForWindow(QObject *, QObject *object)
{
    auto *window = qobject_cast<QWidget *>(object);
    if (window && window != parentWidget())
        setParent(window, windowFlags());
    setWindowFlag(Qt::Sheet, window != nullptr);
    if (isUnattended())
        show();
    else
        exec();
    return 0;
}

void VXFindReplaceWindowController::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    raise();
    activateWindow();
    m_ui->findField->setFocus();
    m_ui->findField->selectAll();
}

void VXFindReplaceWindowController::keepTexts()
{
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setObjectForKey(m_ui->findField->text(), searchKey());
    defaults.setObjectForKey(m_ui->replaceField->text(), replaceKey());
    defaults.setObjectForKey(selectedTag(), fieldKey());
}

void VXFindReplaceWindowController::cancel()
{
    QDialog::reject();
    Q_EMIT ended();
}

void VXFindReplaceWindowController::reject()
{
    cancel();
}

void VXFindReplaceWindowController::doReplace()
{
    keepTexts();
    accept();
    // The dialog is to be gone from the screen before a long edit begins.
    QTimer::singleShot(10ms, this, &VXFindReplaceWindowController::_doReplace);
}

FindReplace VXFindReplaceWindowController::typedReplacement() const
{
    return {m_ui->findField->text(), m_ui->replaceField->text(), selectedTag()};
}

NameProblems VXFindReplaceWindowController::problemsOf(const FindReplace &replacement) const
{
    if (m_selectedInfos.empty())
        return {};
    const auto *document = qobject_cast<VXDocument *>(m_selectedInfos.front()->documentObject());
    return replacement.nameProblems(m_selectedInfos, document ? document->infos() : m_selectedInfos);
}

void VXFindReplaceWindowController::_doReplace()
{
    const UserDefaults &defaults = UserDefaults::standard();
    const FindReplace replacement(defaults.stringForKey(searchKey()), defaults.stringForKey(replaceKey()),
                                  selectedTag());
    ReplaceSummary summary;
    if (replacement.isUseful() && !m_selectedInfos.empty()) {
        const NameProblems problems = problemsOf(replacement);
        GlyphInfoOwner *document = m_selectedInfos.front()->document();
        const UndoGroup group(document ? document->undoManager() : nullptr, tr("Replace"));
        summary = replacement.apply(m_selectedInfos);
        summary.problems = problems;
    }
    Q_EMIT replaced(summary);
    Q_EMIT ended();
}

// What would change

QString VXFindReplaceWindowController::countText(const ReplaceSummary &summary) const
{
    const auto number = [this](qsizetype count) { return locale().toString(qlonglong(count)); };
    const auto selected = static_cast<qsizetype>(m_selectedInfos.size());
    if (m_selectedInfos.empty())
        return tr("No records are selected.");
    if (m_ui->findField->text().isEmpty())
        return tr("Selected records: %1").arg(number(selected));
    if (summary.records == 0)
        return tr("Nothing to replace. Selected records: %1").arg(number(selected));
    QString text = tr("Records that change: %1 of %2. Occurrences: %3.")
                       .arg(number(summary.records), number(selected), number(summary.occurrences));
    if (summary.records > kShownChanges)
        text += u' ' + tr("The first %1 changes:").arg(number(kShownChanges));
    return text;
}

void VXFindReplaceWindowController::updatePreview()
{
    ReplaceSummary summary = typedReplacement().preview(m_selectedInfos, kShownChanges);
    m_ui->countLabel->setText(countText(summary));
    m_ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(summary.records > 0);
    m_changes->setPreviews(std::move(summary.first));
    m_problemsTimer.start();
}

void VXFindReplaceWindowController::updateProblems()
{
    const NameProblems problems = problemsOf(typedReplacement());
    QStringList sentences;
    if (problems.invalid)
        sentences << tr("Names that become invalid: %1.").arg(locale().toString(qlonglong(problems.invalid)));
    if (problems.repeated)
        sentences << tr("Names that more than one record will have: %1.")
                         .arg(locale().toString(qlonglong(problems.repeated)));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, SignalColors::warningText(colors));
    m_ui->problemsLabel->setPalette(colors);
    m_ui->problemsLabel->setText(sentences.join(u' '));
}
