#include "editing/replace/VXFindReplaceWindowController.h"

#include "editing/fields/EditNames.h"
#include "editing/fields/MarkedTextDelegate.h"
#include "editing/fields/SignalColors.h"
#include "editing/replace/ReplacePreviewModel.h"
#include "editing/replace/ReplaceSettings.h"
#include "platform/LongWork.h"
#include "platform/Unattended.h"
#include "platform/UndoManager.h"
#include "ui_VXFindReplaceWindowController_11.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QPushButton>
#include <chrono>

using namespace runebook;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qsizetype kShownChanges = 100;
constexpr auto kPause = 150ms; // in the typing, before names are checked
constexpr int kSliceMs = 8;

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
    m_previewTimer.setInterval(0);
    connect(&m_previewTimer, &QTimer::timeout, this, &VXFindReplaceWindowController::previewMore);
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
    for (const int tag : FindReplace::tags())
        m_ui->fieldPopup->addItem(FindReplace::titleForTag(tag), tag);
    selectItemWithTag(Settings::kReplaceField.value());
    m_ui->findField->setText(Settings::kReplaceSearch.value());
    m_ui->replaceField->setText(Settings::kReplaceBy.value());

    connect(m_ui->fieldPopup, &QComboBox::currentIndexChanged, this,
            &VXFindReplaceWindowController::updatePreview);
    for (const QCheckBox *option : {m_ui->matchCase, m_ui->wholeValue, m_ui->isPattern})
        connect(option, &QCheckBox::toggled, this, &VXFindReplaceWindowController::showOptions);
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

void VXFindReplaceWindowController::setShownInfos(const InfoList &infos)
{
    m_worksOnShown = true;
    setSelectedInfos(infos);
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
    Settings::kReplaceSearch.set(m_ui->findField->text());
    Settings::kReplaceBy.set(m_ui->replaceField->text());
    Settings::kReplaceField.set(selectedTag());
}

void VXFindReplaceWindowController::cancel()
{
    keepTexts(); // they are offered the next time
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

ReplaceOptions VXFindReplaceWindowController::options() const
{
    return {m_ui->matchCase->isChecked(), m_ui->wholeValue->isChecked(), m_ui->isPattern->isChecked()};
}

void VXFindReplaceWindowController::showOptions()
{
    const ReplaceOptions now = options();
    m_ui->findField->setPlaceholderText(now.isUsual() ? tr("Exactly this text, upper and lower case as typed")
                                            : now.isPattern ? tr("A regular expression")
                                                            : tr("This text"));
    m_ui->replaceField->setPlaceholderText(
        now.isPattern ? tr("\\1 is the first group; nothing: what was found is removed")
                      : tr("Nothing: the text found is removed"));
    updatePreview();
}

FindReplace VXFindReplaceWindowController::typedReplacement() const
{
    return {m_ui->findField->text(), m_ui->replaceField->text(), selectedTag(), options()};
}

/// All records of the document to which the selected ones belong.
const InfoList &VXFindReplaceWindowController::allInfos() const
{
    const auto *document = m_selectedInfos.empty()
        ? nullptr
        : qobject_cast<VXDocument *>(m_selectedInfos.front()->documentObject());
    return document ? document->infos() : m_selectedInfos;
}

void VXFindReplaceWindowController::_doReplace()
{
    const FindReplace replacement(Settings::kReplaceSearch.value(), Settings::kReplaceBy.value(),
                                  selectedTag(), options());
    ReplaceSummary summary;
    if (replacement.isUseful() && !m_selectedInfos.empty())
        summary = replaceAll(replacement);
    Q_EMIT replaced(summary);
    Q_EMIT ended();
}

ReplaceSummary VXFindReplaceWindowController::replaceAll(const FindReplace &replacement)
{
    const auto slice = [] { return QDeadlineTimer(kSliceMs); };
    const auto part = [](std::size_t done, std::size_t all) { return double(done) / double(all + 1); };
    LongWork work(tr("Replacing…"), parentWidget());
    const InfoList &all = allInfos();
    FindReplace::NameScan names;
    while (!replacement.nameProblemsMore(m_selectedInfos, all, slice(), names)) {
        if (!work.goOn(part(names.next, all.size()) / 2))
            return {};
    }
    GlyphInfoOwner *document = m_selectedInfos.front()->document();
    UndoManager *undo = document ? document->undoManager() : nullptr;
    const UndoGroup group(undo);
    FindReplace::Progress progress;
    bool goesOn = true;
    while (goesOn && !replacement.applyMore(m_selectedInfos, slice(), progress))
        goesOn = work.goOn(0.5 + part(progress.next, m_selectedInfos.size()) / 2);
    if (!goesOn || !replacement.problem().isNull()) {
        if (undo)
            undo->abandonGroup();
        return {};
    }
    if (undo)
        undo->setActionName(editName(tr("Replace"), tr("Replace in %1 Records"), progress.summary.records));
    progress.summary.problems = names.problems;
    return progress.summary;
}

// What would change

QString VXFindReplaceWindowController::countText(const ReplaceSummary &summary) const
{
    const auto number = [this](qsizetype count) { return locale().toString(qlonglong(count)); };
    const QString selected = number(std::ssize(m_selectedInfos));
    if (m_selectedInfos.empty())
        return m_worksOnShown ? tr("No records are shown.") : tr("No records are selected.");
    if (const QString problem = m_previewed->problem(); !problem.isNull())
        return problem;
    const QString among =
        m_worksOnShown ? tr("Shown records: %1").arg(selected) : tr("Selected records: %1").arg(selected);
    if (m_ui->findField->text().isEmpty())
        return among;
    const bool isComplete = m_preview.next >= m_selectedInfos.size();
    if (!isComplete && summary.records == 0)
        return tr("Looking… %1 %").arg(m_preview.next * 100 / m_selectedInfos.size());
    if (summary.records == 0)
        return tr("Nothing to replace.") + u' ' + among;
    QString text = tr("Records that change: %1 of %2. Occurrences: %3.")
                       .arg(number(summary.records), selected, number(summary.occurrences));
    if (!isComplete)
        text += u' ' + tr("Looking… %1 %").arg(m_preview.next * 100 / m_selectedInfos.size());
    else if (summary.records > kShownChanges)
        text += u' ' + tr("The first %1 changes:").arg(number(kShownChanges));
    return text;
}

void VXFindReplaceWindowController::updatePreview()
{
    m_previewed = std::make_unique<FindReplace>(typedReplacement());
    m_preview = {};
    m_names = {};
    m_problemsTimer.start(kPause);
    previewMore();
}

void VXFindReplaceWindowController::previewMore()
{
    const std::size_t shown = m_preview.summary.first.size();
    const bool isFirst = m_preview.next == 0;
    const bool isComplete =
        m_previewed->previewMore(m_selectedInfos, kShownChanges, QDeadlineTimer(kSliceMs), m_preview);
    if (!isComplete)
        m_previewTimer.start();
    else
        m_previewTimer.stop();
    if (isComplete && m_preview.summary.leftOut.records > 0)
        m_problemsTimer.start(0);
    m_ui->countLabel->setText(countText(m_preview.summary));
    m_ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(m_preview.summary.records > 0);
    if (isFirst || m_preview.summary.first.size() != shown)
        m_changes->setPreviews(m_preview.summary.first);
}

void VXFindReplaceWindowController::updateProblems()
{
    if (!m_previewed->nameProblemsMore(m_selectedInfos, allInfos(), QDeadlineTimer(kSliceMs), m_names)) {
        m_problemsTimer.start(0);
        return;
    }
    m_problemsTimer.stop();
    const NameProblems &problems = m_names.problems;
    QStringList sentences;
    if (problems.invalid)
        sentences << tr("Names that become invalid: %1.").arg(locale().toString(qlonglong(problems.invalid)));
    if (problems.repeated)
        sentences << tr("Names that more than one record will have: %1.")
                         .arg(locale().toString(qlonglong(problems.repeated)));
    if (const QString leftOut = m_preview.summary.leftOut.text(); !leftOut.isNull())
        sentences << leftOut;
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, SignalColors::warningText(colors));
    m_ui->problemsLabel->setPalette(colors);
    m_ui->problemsLabel->setText(sentences.join(u' '));
}
