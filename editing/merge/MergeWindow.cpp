#include "editing/merge/MergeWindow.h"

#include "editing/fields/SignalColors.h"
#include "platform/PlainLabel.h"
#include "platform/PlainText.h"
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
#include <QScrollArea>
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

QString plainTextOf(QString actionText)
{
    return actionText.remove(u'&');
}

} // namespace

MergeWindow::MergeWindow(std::unique_ptr<MergeResolution> resolution, const MergeTitles &titles,
                         QWidget *parent)
    : QMainWindow(parent),
      m_resolution(std::move(resolution)),
      m_titles(titles),
      m_records(new MergeRecords(*m_resolution, this)),
      m_firstStep(m_resolution->document()->undoManager()->stack()->index())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(u"mergeWindow"_s);
    setContextMenuPolicy(Qt::NoContextMenu);
    buildActions();
    buildContent();
    buildMenus();
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

MergeWindow::~MergeWindow() = default;

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
    splitter->addWidget(buildDetails());
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({230, 810});
    splitter->setChildrenCollapsible(false);

    m_state = plainLabel({}, this);
    m_state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *lower = new QHBoxLayout;
    lower->addWidget(m_state, 1);
    for (const Command command : {PreviousConflict, NextConflict}) {
        auto *button = new QToolButton(this);
        button->setDefaultAction(m_actions[command]);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setAccessibleName(plainTextOf(m_actions[command]->text()));
        lower->addWidget(button);
    }
    auto *center = new QWidget(this);
    auto *layout = new QVBoxLayout(center);
    layout->addWidget(m_modes);
    layout->addWidget(splitter, 1);
    layout->addLayout(lower);
    setCentralWidget(center);
}

QWidget *MergeWindow::buildDetails()
{
    auto *details = new QWidget(this);
    auto *layout = new QVBoxLayout(details);
    layout->setContentsMargins(6, 0, 0, 0);
    m_name = plainLabel({}, details);
    QFont font = m_name->font();
    font.setBold(true);
    m_name->setFont(font);
    m_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_explanation = plainLabel({}, details);
    m_explanation->setWordWrap(true);
    const auto makeButton = [this, details](Command command) {
        auto *button = new QToolButton(details);
        button->setDefaultAction(m_actions[command]);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setFocusPolicy(Qt::StrongFocus);
        return button;
    };
    m_takeOurs = makeButton(TakeOurs);
    m_takeTheirs = makeButton(TakeTheirs);
    auto *upper = new QHBoxLayout;
    upper->addWidget(m_name, 1);
    upper->addWidget(m_takeOurs);
    upper->addWidget(m_takeTheirs);
    layout->addLayout(upper);
    layout->addWidget(m_explanation);
    auto *headings = new QHBoxLayout;
    for (const MergeSide side : {MergeSide::Ours, MergeSide::Base, MergeSide::Theirs}) {
        const QString &title = m_titles[std::size_t(side)];
        const QString words = side == MergeSide::Ours ? tr("Ours: %1")
            : side == MergeSide::Base                 ? tr("Base: %1")
                                                      : tr("Theirs: %1");
        QLabel *label = plainLabel(words.arg(title), details);
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        label->setToolTip(escapedToolTip(title));
        headings->addWidget(label, 1);
    }
    layout->addLayout(headings);
    m_sheet = new MergeSheet;
    m_sheet->setTaker([this](GlyphField field, const QString &text, Error *error) {
        return m_shown >= 0 && m_resolution->takeText(std::size_t(m_shown), field, text, error);
    });
    connect(m_sheet, &MergeSheet::takeRequested, this, [this](GlyphField field, MergeSide side) {
        if (m_shown >= 0)
            m_resolution->takeField(std::size_t(m_shown), field, side);
        refresh();
    });
    auto *area = new QScrollArea(details);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(m_sheet);
    layout->addWidget(area, 1);
    return details;
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
        if (!m_sheet->commit() && refusal)
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
    m_sheet->commit();
    m_modes->setCurrentIndex(int(mode));
    if (mode != m_records->mode() || !m_list->currentIndex().isValid()) {
        m_records->setMode(mode);
        showRow(mode == MergeMode::Conflicts ? std::max(0, m_records->openRow(-1, 1)) : 0);
    }
    m_actions[ShowConflicts + int(mode)]->setChecked(true);
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
    m_sheet->commit();
    if (m_records->mode() != MergeMode::Conflicts)
        showMode(MergeMode::Conflicts);
    const int row = m_list->currentIndex().row();
    const int next = m_records->openRow(row, step);
    if (next < 0)
        return;
    showRow(next);
    if (step > 0 ? next <= row : next >= row)
        m_state->setText(stateText() + u"  "_s
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
    const qsizetype number = currentNumber();
    const bool isSame = number == m_shown;
    if (!isSame)
        m_sheet->commit();
    m_shown = number;
    if (number < 0) {
        m_name->clear();
        m_explanation->setText(tr("There are none."));
        m_sheet->setContent({}, nullptr, {}, false);
        showState();
        return;
    }
    const auto at = std::size_t(number);
    const RecordMerge &record = m_resolution->record(at);
    const RecordSides sides = m_resolution->merge().sidesOf(record);
    m_name->setText(m_resolution->merge().keyOf(record));
    m_explanation->setText(explanation(record));
    m_sheet->setContent(sides, m_resolution->resultOf(at), rowsOf(at, sides), isSame);
    showState();
}

/// The fields that a side has changed; all that there are where the record came or went as a whole.
std::vector<MergeSheet::Row> MergeWindow::rowsOf(std::size_t number, const RecordSides &sides) const
{
    const RecordMerge &record = m_resolution->record(number);
    const auto isChanged = [&](GlyphField field, const InfoPtr &side) {
        return side && !haveSameValue(field, side.get(), sides.base.get());
    };
    const auto isThere = [](GlyphField field, const InfoPtr &side) {
        return !haveSameValue(field, side.get(), nullptr);
    };
    std::vector<MergeSheet::Row> rows;
    std::vector<MergeSheet::Row> all;
    for (const GlyphField field : mergedFields()) {
        const bool isInConflict = m_resolution->isInConflict(number, field);
        const auto merged = std::find_if(record.fields.begin(), record.fields.end(),
                                         [field](const FieldMerge &each) { return each.field == field; });
        const MergeSheet::Row row {field, merged == record.fields.end() ? record.state : merged->state,
                                   isInConflict, m_resolution->isChosen(number, field)};
        if (isInConflict || isChanged(field, sides.ours) || isChanged(field, sides.theirs))
            rows.push_back(row);
        if (isThere(field, sides.base) || isThere(field, sides.ours) || isThere(field, sides.theirs))
            all.push_back(row);
    }
    return rows.empty() ? all : rows;
}

QString MergeWindow::explanation(const RecordMerge &record) const
{
    const auto [base, ours, theirs] = record.places;
    switch (record.conflict) {
    case ConflictKind::RemovedByUs:
        return tr("Ours removed this record, theirs edited it.") + u' '
            + (m_resolution->resultOf(std::size_t(m_shown)) ? tr("It is kept.") : tr("It is removed."));
    case ConflictKind::RemovedByThem:
        return tr("Theirs removed this record, ours edited it.") + u' '
            + (m_resolution->resultOf(std::size_t(m_shown)) ? tr("It is kept.") : tr("It is removed."));
    case ConflictKind::Line:
        return tr("Both changed this record, whose line holds more than the known fields.");
    case ConflictKind::Fields:
        return base == kNoPlace ? tr("Both added this record.") : tr("Both changed the same fields.");
    case ConflictKind::None:
        break;
    }
    if (base == kNoPlace)
        return theirs == kNoPlace ? tr("Ours added this record.")
            : ours == kNoPlace    ? tr("Theirs added this record.")
                                  : tr("Both added this record.");
    if (ours == kNoPlace || theirs == kNoPlace)
        return tr("This record was removed.");
    return {};
}

QString MergeWindow::stateText() const
{
    const qsizetype all = m_resolution->conflictCount();
    const qsizetype open = m_resolution->openCount();
    if (all == 0)
        return tr("There are no conflicts.");
    if (open == 0)
        return tr("All conflicts are resolved.");
    return tr("%1 of %2 conflicts remain.").arg(numberText(open), numberText(all));
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
    m_state->setText(stateText());
    const bool isConflict =
        m_shown >= 0 && m_resolution->record(std::size_t(m_shown)).conflict != ConflictKind::None;
    const bool hasField = isConflict && m_sheet->currentField().has_value();
    const bool removes = isConflict && m_resolution->record(std::size_t(m_shown)).fields.empty()
        && m_resolution->record(std::size_t(m_shown)).conflict != ConflictKind::Line;
    const bool byUs =
        isConflict && m_resolution->record(std::size_t(m_shown)).conflict == ConflictKind::RemovedByUs;
    m_actions[TakeOurs]->setText(!removes   ? tr("Take &Ours")
                                     : byUs ? tr("Rem&ove, as Ours")
                                            : tr("Keep, as &Ours"));
    m_actions[TakeTheirs]->setText(!removes   ? tr("Take &Theirs")
                                       : byUs ? tr("Keep, as &Theirs")
                                              : tr("Remove, as &Theirs"));
    m_takeOurs->setVisible(isConflict);
    m_takeTheirs->setVisible(isConflict);
    m_takeOurs->setAccessibleName(plainTextOf(m_actions[TakeOurs]->text()));
    m_takeTheirs->setAccessibleName(plainTextOf(m_actions[TakeTheirs]->text()));
    for (const Command command : {TakeOurs, TakeTheirs})
        m_actions[command]->setEnabled(isConflict);
    for (const Command command : {TakeFieldOurs, TakeFieldTheirs})
        m_actions[command]->setEnabled(hasField);
    for (const Command command : {TakeAllOurs, TakeAllTheirs, NextConflict, PreviousConflict})
        m_actions[command]->setEnabled(m_resolution->openCount() > 0);
    UndoManager &undo = *document->undoManager();
    m_actions[Undo]->setEnabled(undo.canUndo()
                                && (undo.lastOperation() || undo.stack()->index() > m_firstStep));
    m_actions[Redo]->setEnabled(undo.canRedo());
    m_actions[Save]->setEnabled(document->isDocumentEdited() || document->fileURL().isEmpty());
}

// Commands

void MergeWindow::takeRecord(MergeSide side)
{
    if (m_shown < 0 || !m_sheet->commit())
        return;
    m_resolution->take(std::size_t(m_shown), side);
    goOn();
}

void MergeWindow::takeField(MergeSide side)
{
    const std::optional<GlyphField> field = m_sheet->currentField();
    if (m_shown < 0 || !field)
        return;
    m_resolution->takeField(std::size_t(m_shown), *field, side);
    refresh();
}

void MergeWindow::takeAll(MergeSide side)
{
    if (!m_sheet->commit())
        return;
    m_resolution->takeAll(side);
    refresh();
}

void MergeWindow::undo()
{
    VXDocument *document = m_resolution->document();
    if (!m_sheet->commit() || !document || !m_actions[Undo]->isEnabled())
        return;
    document->undoManager()->undo();
    refresh();
}

void MergeWindow::redo()
{
    VXDocument *document = m_resolution->document();
    if (!m_sheet->commit() || !document)
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
    if (VXDocument *document = m_resolution->document(); document && m_sheet->commit())
        DocumentPanels::save(*document, this);
}

void MergeWindow::saveDocumentAs()
{
    if (VXDocument *document = m_resolution->document(); document && m_sheet->commit())
        DocumentPanels::saveAs(*document, this);
}

void MergeWindow::closeEvent(QCloseEvent *event)
{
    VXDocument *document = m_resolution->document();
    const qsizetype open = m_resolution->openCount();
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
    auto *box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Warning);
    setPlainTexts(*box,
                  open == 1 ? tr("One conflict is not resolved.")
                            : tr("%1 conflicts are not resolved.").arg(numberText(open)),
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
