#include "editing/merge/MergeDialog.h"

#include "editing/fields/SignalColors.h"
#include "platform/PlainLabel.h"
#include "platform/PlainText.h"
#include "platform/documents/DocumentController.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

enum Role { DocumentRole = Qt::UserRole, PathRole };

const std::array<const char *, 3> kNames {QT_TRANSLATE_NOOP("runebook::MergeDialog", "&Base:"),
                                          QT_TRANSLATE_NOOP("runebook::MergeDialog", "&Ours:"),
                                          QT_TRANSLATE_NOOP("runebook::MergeDialog", "&Theirs:")};
const std::array<const char *, 3> kPlainNames {QT_TRANSLATE_NOOP("runebook::MergeDialog", "Base"),
                                               QT_TRANSLATE_NOOP("runebook::MergeDialog", "Ours"),
                                               QT_TRANSLATE_NOOP("runebook::MergeDialog", "Theirs")};

} // namespace

MergeDialog *MergeDialog::open(QWidget *parent)
{
    auto *dialog = new MergeDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
    return dialog;
}

MergeDialog::MergeDialog(QWidget *parent)
    : QDialog(parent),
      m_key(new QComboBox(this)),
      m_error(plainLabel({}, this)),
      m_progress(new QProgressBar(this)),
      m_form(new QWidget(this))
{
    setWindowTitle(tr("Merge"));
    auto *form = new QFormLayout(m_form);
    form->setContentsMargins({});
    for (const MergeSide side : {MergeSide::Base, MergeSide::Ours, MergeSide::Theirs}) {
        const QString name = tr(kPlainNames[std::size_t(side)]);
        auto *chooser = new QComboBox(m_form);
        chooser->setAccessibleName(name);
        chooser->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        chooser->setMinimumContentsLength(30);
        fill(*chooser);
        m_choosers[std::size_t(side)] = chooser;
        auto *file = new QPushButton(tr("File…"), m_form);
        file->setAutoDefault(false);
        file->setAccessibleName(tr("%1: choose a file").arg(name));
        connect(chooser, &QComboBox::currentIndexChanged, this, &MergeDialog::showReady);
        connect(file, &QPushButton::clicked, this, [this, side] { askForFile(side); });
        auto *row = new QHBoxLayout;
        row->addWidget(chooser, 1);
        row->addWidget(file);
        auto *label = new QLabel(tr(kNames[std::size_t(side)]), m_form);
        label->setBuddy(chooser);
        form->addRow(label, row);
    }
    m_key->addItems({tr("Name"), tr("Unicode"), tr("Production name")});
    form->addRow(tr("Match by &key:"), m_key);
    m_key->setAccessibleName(tr("Match by key"));

    m_error->setWordWrap(true);
    QPalette colors = m_error->palette();
    colors.setColor(QPalette::WindowText, SignalColors::warningText(palette()));
    m_error->setPalette(colors);
    m_error->hide();
    m_progress->setRange(0, 100);
    m_progress->setAccessibleName(tr("Merging…"));
    m_progress->hide();
    constexpr int kLookMs = 50;
    m_look.setInterval(kLookMs);
    connect(&m_look, &QTimer::timeout, this, [this] { m_progress->setValue(m_merging->percent()); });
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_merge = buttons->addButton(tr("&Merge"), QDialogButtonBox::AcceptRole);
    m_merge->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, &MergeDialog::merge);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_form);
    layout->addWidget(m_error);
    layout->addWidget(m_progress);
    layout->addWidget(buttons);
    showReady();
}

MergeDialog::~MergeDialog()
{
    if (m_merging)
        m_merging->cancel();
}

void MergeDialog::fill(QComboBox &chooser)
{
    for (Document *document : DocumentController::shared().documentList()) {
        auto *ours = qobject_cast<VXDocument *>(document);
        if (!ours)
            continue;
        chooser.addItem(ours->windowTitle());
        chooser.setItemData(chooser.count() - 1, QVariant::fromValue<QObject *>(ours), DocumentRole);
        if (ours->fileURL().isEmpty())
            continue;
        chooser.addItem(tr("%1 (on disk)").arg(ours->windowTitle()));
        chooser.setItemData(chooser.count() - 1, ours->fileURL(), PathRole);
        chooser.setItemData(chooser.count() - 1, escapedToolTip(ours->fileURL()), Qt::ToolTipRole);
    }
    chooser.setCurrentIndex(-1);
    chooser.setPlaceholderText(tr("An open document or a file"));
}

void MergeDialog::askForFile(MergeSide side)
{
    auto *dialog = new QFileDialog(this, tr(kPlainNames[std::size_t(side)]), {},
                                   tr("Glyph data (*.xml);;All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, side](const QString &path) { setFile(side, path); });
    dialog->open();
}

void MergeDialog::setFile(MergeSide side, const QString &path)
{
    QComboBox &chooser = *m_choosers[std::size_t(side)];
    chooser.addItem(QFileInfo(path).fileName());
    chooser.setItemData(chooser.count() - 1, path, PathRole);
    chooser.setItemData(chooser.count() - 1, escapedToolTip(path), Qt::ToolTipRole);
    chooser.setCurrentIndex(chooser.count() - 1);
}

void MergeDialog::showReady()
{
    m_error->hide();
    m_merge->setEnabled(m_form->isEnabled()
                        && std::all_of(m_choosers.begin(), m_choosers.end(), [](const QComboBox *chooser) {
                               return chooser && chooser->currentIndex() >= 0;
                           }));
}

QString MergeDialog::errorText() const
{
    return m_error->isHidden() ? QString() : m_error->text();
}

void MergeDialog::showError(const QString &text)
{
    m_form->setEnabled(true);
    m_progress->hide();
    m_look.stop();
    showReady();
    m_error->setText(text);
    m_error->setAccessibleName(text);
    m_error->show();
}

std::optional<MergeSource> MergeDialog::sourceOf(MergeSide side) const
{
    const QComboBox &chooser = *m_choosers[std::size_t(side)];
    const QString path = chooser.currentData(PathRole).toString();
    if (!path.isEmpty())
        return MergeSource {{}, path};
    // It may have been closed since; then it is not among the open ones any more.
    const auto *chosen = chooser.currentData(DocumentRole).value<QObject *>();
    for (Document *document : DocumentController::shared().documentList()) {
        if (const auto *open = qobject_cast<VXDocument *>(document); open && open == chosen)
            return MergeSource {textOfDocument(*open), {}};
    }
    return {};
}

void MergeDialog::merge()
{
    Error error;
    if (!DocumentController::shared().commitEditing(&error)) {
        showError(error.text());
        return;
    }
    MergeSources sources;
    MergeTitles titles;
    for (const MergeSide side : {MergeSide::Base, MergeSide::Ours, MergeSide::Theirs}) {
        const QString name = m_choosers[std::size_t(side)]->currentText();
        const std::optional<MergeSource> source = sourceOf(side);
        if (!source) {
            showError(tr("“%1” is not open any more.").arg(name));
            return;
        }
        sources[std::size_t(side)] = *source;
        titles[std::size_t(side)] = name;
    }
    m_error->hide();
    m_form->setEnabled(false);
    m_merge->setEnabled(false);
    m_merging = std::make_shared<MergeProgress>();
    m_progress->setValue(0);
    m_progress->show();
    m_look.start();
    prepareMergeApart(std::move(sources), CompareKey(m_key->currentIndex()), m_merging, this,
                      [this, titles](PreparedMerge prepared) {
                          if (isVisible())
                              finish(std::move(prepared), titles);
                      });
}

void MergeDialog::finish(PreparedMerge prepared, const MergeTitles &titles)
{
    Error error;
    MergeWindow *window = showMerge(std::move(prepared), titles,
                                    tr("%1 merged").arg(titles[std::size_t(MergeSide::Ours)]), &error);
    if (!window) {
        showError(error.text());
        return;
    }
    accept();
    Q_EMIT merged(window);
}

} // namespace runebook
