#include "editing/merge/MergeWindow.h"

#include "platform/PlainLabel.h"
#include "platform/WindowPlacement.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTabBar>
#include <QToolButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QString numberText(qsizetype number)
{
    return QLocale().toString(qlonglong(number));
}

} // namespace

MergeWindow::MergeWindow(std::unique_ptr<MergeResolution> resolution, const MergeTitles &titles,
                         QWidget *parent)
    : QMainWindow(parent),
      m_resolution(std::move(resolution)),
      m_menus(new MergeMenus(*this, *m_resolution->document())),
      m_records(new MergeRecords(*m_resolution, this)),
      m_details(new MergeDetails(*m_resolution, *m_menus, titles, this)),
      m_firstStep(m_resolution->document()->undoManager()->stack()->index())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(u"mergeWindow"_s);
    setContextMenuPolicy(Qt::NoContextMenu);
    buildContent();
    connect(m_details, &MergeDetails::taken, this, &MergeWindow::refresh);
    connect(m_menus, &MergeMenus::chosen, this, &MergeWindow::perform);
    watchDocument();
    constexpr QSize kUsualSize {1040, 680};
    resize(kUsualSize);
    WindowPlacement::fitIntoScreen(*this);
    // On the first mode that has something.
    int mode = 0;
    while (mode + 1 < kMergeModeCount && m_records->count(MergeMode(mode)) == 0)
        ++mode;
    showMode(m_records->count(MergeMode(mode)) > 0 ? MergeMode(mode) : MergeMode::Conflicts);
    m_list->setFocus();
}

MergeWindow::~MergeWindow()
{
    sheet()->setTaker({}); // what is typed in it outlives the resolution
}

// What is in it

void MergeWindow::buildContent()
{
    m_modes = new QTabBar(this);
    m_modes->setExpanding(false);
    m_modes->setUsesScrollButtons(true);
    m_modes->setDrawBase(false);
    m_modes->setAccessibleName(tr("Shown records"));
    const std::array<QString, kMergeModeCount> titles {tr("Conflicts (%1)"), tr("Taken from theirs (%1)"),
                                                       tr("Taken from ours (%1)"), tr("Both the same (%1)")};
    for (int mode = 0; mode < kMergeModeCount; ++mode)
        m_modes->addTab(titles[std::size_t(mode)].arg(numberText(m_records->count(MergeMode(mode)))));
    connect(m_modes, &QTabBar::currentChanged, this, [this](int mode) { showMode(MergeMode(mode)); });

    m_list = new QListView(this);
    m_list->setModel(m_records);
    m_list->setUniformItemSizes(true);
    m_list->setMinimumWidth(110);
    m_list->setAccessibleName(tr("Records"));
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { showRecord(); });

    auto *splitter = new QSplitter(this);
    splitter->addWidget(m_list);
    splitter->addWidget(m_details);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({230, 810});
    splitter->setChildrenCollapsible(false);

    m_state = plainLabel({}, this);
    m_state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *lower = new QHBoxLayout;
    lower->addWidget(m_state, 1);
    for (const auto command : {MergeMenus::PreviousConflict, MergeMenus::NextConflict}) {
        auto *button = new QToolButton(this);
        button->setDefaultAction(action(command));
        button->setFocusPolicy(Qt::StrongFocus);
        button->setAccessibleName(action(command)->text().remove(u'&'));
        lower->addWidget(button);
    }
    auto *center = new QWidget(this);
    auto *layout = new QVBoxLayout(center);
    layout->addWidget(m_modes);
    layout->addWidget(splitter, 1);
    layout->addLayout(lower);
    setCentralWidget(center);
}

void MergeWindow::watchDocument()
{
    VXDocument *document = m_resolution->document();
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(0);
    connect(&m_refresh, &QTimer::timeout, this, &MergeWindow::refresh);
    const auto later = [this] { m_refresh.start(); };
    connect(m_resolution.get(), &MergeResolution::changed, this, later);
    connect(document, &VXDocument::infosChanged, this, later);
    connect(document, &VXDocument::infosInserted, this, later);
    connect(document, &VXDocument::infosRemoved, this, later);
    connect(document, &VXDocument::infosReset, this, later);
    connect(document->undoManager(), &UndoManager::changed, this, later);
    connect(document, &Document::displayNameChanged, this, later);
    connect(document, &Document::saved, this, later);
    connect(document, &Document::aboutToClose, this, [this] {
        m_closesOpen = true;
        close();
    });
    connect(document, &Document::commitEditingRequested, this, [this](Error *refusal) {
        if (!sheet()->commit() && refusal)
            *refusal = {u"EditError"_s, 1, tr("A value in the window of the merge is refused."), {}, {}};
    });
}

// Showing

qsizetype MergeWindow::currentNumber() const
{
    return m_records->numberAt(m_list->currentIndex().row());
}

void MergeWindow::showMode(MergeMode mode)
{
    sheet()->commit();
    m_modes->setCurrentIndex(int(mode));
    if (mode != m_records->mode() || !m_list->currentIndex().isValid()) {
        m_records->setMode(mode);
        showRow(mode == MergeMode::Conflicts ? std::max(0, m_records->openRow(-1, 1)) : 0);
    }
    action(MergeMenus::Command(MergeMenus::ShowConflicts + int(mode)))->setChecked(true);
    refresh();
}

void MergeWindow::showRow(int row)
{
    const QModelIndex index = m_records->index(row);
    m_list->setCurrentIndex(index);
    m_list->scrollTo(index);
}

void MergeWindow::goToConflict(int step)
{
    sheet()->commit();
    if (m_records->mode() != MergeMode::Conflicts)
        showMode(MergeMode::Conflicts);
    const int row = m_list->currentIndex().row();
    const int next = m_records->openRow(row, step);
    if (next < 0)
        return;
    showRow(next);
    if (step > 0 ? next <= row : next >= row)
        m_state->setText(mergeStateText(*m_resolution) + u"  "_s
                         + (step > 0 ? tr("Again from the first one.") : tr("Again from the last one.")));
}

/// After a record was resolved as a whole.
void MergeWindow::goOn()
{
    refresh();
    const qsizetype number = currentNumber();
    if (number >= 0 && m_resolution->isResolved(std::size_t(number)) && m_resolution->openCount() > 0)
        goToConflict(1);
}

void MergeWindow::showRecord()
{
    m_details->showRecord(m_resolution->isInForce() ? currentNumber() : -1);
    showState();
}

void MergeWindow::refresh()
{
    m_refresh.stop();
    if (!m_resolution->document())
        return;
    m_records->showStates();
    showRecord();
}

void MergeWindow::showState()
{
    VXDocument *document = m_resolution->document();
    if (!document)
        return;
    setWindowTitle(tr("Merge into %1[*]").arg(document->displayName()));
    setWindowModified(document->isDocumentEdited());
    const bool isInForce = m_resolution->isInForce();
    m_state->setText(isInForce ? mergeStateText(*m_resolution) : QString());
    m_modes->setEnabled(isInForce);
    m_list->setEnabled(isInForce);
    m_menus->enable({MergeMenus::TakeAllOurs, MergeMenus::TakeAllTheirs, MergeMenus::NextConflict,
                     MergeMenus::PreviousConflict},
                    isInForce && m_resolution->openCount() > 0);
    UndoManager &undo = *document->undoManager();
    m_menus->showHistory(undo, isInForce && (undo.lastOperation() || undo.stack()->index() > m_firstStep));
    m_menus->enable({MergeMenus::Save}, document->isDocumentEdited() || document->fileURL().isEmpty());
}

// Commands

void MergeWindow::perform(MergeMenus::Command command)
{
    using Window = MergeWindow;
    static const std::array<std::function<void(Window &)>, MergeMenus::CommandCount> operations {
        &Window::saveDocument,
        &Window::saveDocumentAs,
        &Window::close,
        &Window::undo,
        &Window::redo,
        &Window::copyText,
        [](Window &window) { window.showMode(MergeMode::Conflicts); },
        [](Window &window) { window.showMode(MergeMode::FromTheirs); },
        [](Window &window) { window.showMode(MergeMode::FromOurs); },
        [](Window &window) { window.showMode(MergeMode::Both); },
        &Window::goToNextConflict,
        &Window::goToPreviousConflict,
        [](Window &window) { window.takeField(MergeSide::Ours); },
        [](Window &window) { window.takeField(MergeSide::Theirs); },
        [](Window &window) { window.takeRecord(MergeSide::Ours); },
        [](Window &window) { window.takeRecord(MergeSide::Theirs); },
        &Window::takeRename,
        [](Window &window) { window.takeAll(MergeSide::Ours); },
        [](Window &window) { window.takeAll(MergeSide::Theirs); },
    };
    operations[command](*this);
}

void MergeWindow::takeRecord(MergeSide side)
{
    if (m_details->shown() < 0 || !sheet()->commit())
        return;
    m_resolution->take(std::size_t(m_details->shown()), side);
    goOn();
}

void MergeWindow::takeField(MergeSide side)
{
    const std::optional<GlyphField> field = sheet()->currentField();
    if (m_details->shown() < 0 || !field)
        return;
    m_resolution->takeField(std::size_t(m_details->shown()), *field, side);
    refresh();
}

void MergeWindow::takeRename()
{
    if (m_details->shown() < 0 || !sheet()->commit())
        return;
    m_resolution->takeRename(std::size_t(m_details->shown()));
    goOn();
}

void MergeWindow::takeAll(MergeSide side)
{
    if (!sheet()->commit())
        return;
    m_resolution->takeAll(side);
    refresh();
}

void MergeWindow::undo()
{
    VXDocument *document = m_resolution->document();
    if (!sheet()->commit() || !document || !action(MergeMenus::Undo)->isEnabled())
        return;
    document->undoManager()->undo();
    refresh();
}

void MergeWindow::redo()
{
    VXDocument *document = m_resolution->document();
    if (!sheet()->commit() || !document)
        return;
    document->undoManager()->redo();
    refresh();
}

void MergeWindow::copyText()
{
    if (auto *text = qobject_cast<QPlainTextEdit *>(focusWidget()))
        text->copy();
    else if (auto *line = qobject_cast<QLineEdit *>(focusWidget()))
        line->copy();
}

void MergeWindow::saveDocument()
{
    if (VXDocument *document = m_resolution->document(); document && sheet()->commit())
        DocumentPanels::save(*document, this);
}

void MergeWindow::saveDocumentAs()
{
    if (VXDocument *document = m_resolution->document(); document && sheet()->commit())
        DocumentPanels::saveAs(*document, this);
}

void MergeWindow::closeEvent(QCloseEvent *event)
{
    VXDocument *document = m_resolution->document();
    const qsizetype open = m_resolution->isInForce() ? m_resolution->openCount() : 0;
    const bool isAlone = document && !document->windowController(); // the document goes with this window
    if (m_closesOpen || !document || (open == 0 && !isAlone)) {
        event->accept();
        Q_EMIT closed();
        return;
    }
    event->ignore();
    if (open == 0 && document->isDocumentEdited()) {
        DocumentPanels::close(*document);
        return;
    }
    if (open == 0) {
        m_closesOpen = true;
        event->accept();
        Q_EMIT closed();
        document->close();
        return;
    }
    askToClose(open, isAlone);
}

void MergeWindow::askToClose(qsizetype open, bool isAlone)
{
    const VXDocument *document = m_resolution->document();
    auto *box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(tr("Unresolved Conflicts"));
    box->setIcon(QMessageBox::Warning);
    setPlainTexts(*box,
                  open == 1 ? tr("One conflict is not resolved.")
                            : tr("%1 conflicts are not resolved.").arg(QLocale().toString(qlonglong(open))),
                  !isAlone ? tr("The document keeps what ours has for them.")
                      : document->isDocumentEdited()
                      ? tr("What was resolved since the last save will be lost.")
                      : QString());
    QPushButton *close = box->addButton(tr("&Close"), QMessageBox::DestructiveRole);
    box->setDefaultButton(box->addButton(QMessageBox::Cancel));
    connect(close, &QPushButton::clicked, this, [this, isAlone] {
        m_closesOpen = true;
        if (VXDocument *left = m_resolution->document(); left && isAlone)
            left->close(); // and so does this
        else
            this->close();
    });
    box->open();
}

} // namespace runebook
