#include "editing/compare/VXCompareDataWindow.h"

#include "editing/compare/CompareSettings.h"
#include "editing/fields/ErrorBubble.h"
#include "model/EditedValue.h"
#include "model/RoundTrip.h"
#include "platform/WindowPlacement.h"
#include "platform/documents/DocumentController.h"
#include "ui_VXCompareDataWindow.h"

#include <algorithm>

using namespace runebook;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A comparison in the background works so long at a time, and the window stays alive.
constexpr auto kBudget = 10ms;

/// From here on a look at every record is quicker than looking up every key.
constexpr qsizetype kManyKeys = 1000;

/// A copy whose empty fields are absent, as after every edit.
InfoPtr copyOf(const VXGlyphInfo &info)
{
    InfoPtr copy = info.copy();
    std::string buffer;
    for (const GlyphField field : RoundTrip::writtenFields()) {
        if (!copy->stored(field).isAbsent() && copy->utf8(field, buffer).empty())
            copy->clear(field);
    }
    return copy;
}

} // namespace

VXCompareDataWindow::VXCompareDataWindow(QWidget *parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::VXCompareDataWindow>()), m_sheet(new CompareSheet)
{
    m_counts.fill(-1);
    m_ui->setupUi(this);
    m_ui->detailArea->setWidget(m_sheet);
    setUpLists();
    setUpActions();
    awakeFromNib();
    showDefaults();
    showCounts();
    showState();
}

VXCompareDataWindow::~VXCompareDataWindow() = default;

void VXCompareDataWindow::awakeFromNib()
{
    if (std::exchange(m_hasObservers, true))
        return;
    connect(&m_leftDocList, &DocumentChoice::selectionIndexChanged, this,
            &VXCompareDataWindow::documentsChosen);
    connect(&m_rightDocList, &DocumentChoice::selectionIndexChanged, this,
            &VXCompareDataWindow::documentsChosen);
    connect(&m_filteredKeys, &KeyList::selectionChanged, this, [this] {
        m_wrap = Wrap::None;
        updateContent();
    });
    connect(&m_history, &CompareHistory::changed, this, &VXCompareDataWindow::showActions);
    const auto follow = [this] {
        m_picksMode = false;
        showDefaults();
        updateFilters();
    };
    Settings::kCompareKey.onChange(this, follow);
    Settings::kCompareMode.onChange(this, follow);
    Settings::kComparesWithoutCase.onChange(this, follow);
    Settings::kComparesWithoutSpaces.onChange(this, follow);
    Settings::kComparesWithoutFields.onChange(this, follow);
    Settings::kReportsComparisonsAsJson.onChange(this, [this] { showDefaults(); });
    m_workTimer.setSingleShot(true);
    connect(&m_workTimer, &QTimer::timeout, this, [this] { continueComparison(kBudget); });
    m_contentTimer.setSingleShot(true);
    connect(&m_contentTimer, &QTimer::timeout, this, &VXCompareDataWindow::updateContent);
    m_contentWorkTimer.setSingleShot(true);
    connect(&m_contentWorkTimer, &QTimer::timeout, this, [this] { continueContent(kBudget); });
}

void VXCompareDataWindow::observeValueForKeyPathOfObjectChangeContext(const QString &, QObject *,
                                                                      const QVariantMap &,
                                                                      const QVariant &context)
{
    if (context.toString() == "FilterKeySelection"_L1)
        updateContent();
    else
        updateFilters();
}

// Outlets

QObject *VXCompareDataWindow::documentsController() const
{
    return &DocumentController::shared();
}

KeyList *VXCompareDataWindow::filteredKeys()
{
    if (m_comparison && !m_isListed) {
        m_comparison->finish(m_comparedMode);
        continueComparison(0ms);
    }
    return &m_filteredKeys;
}

InfoChoice *VXCompareDataWindow::leftInfoList()
{
    finishContent();
    return &m_leftInfoList;
}

InfoChoice *VXCompareDataWindow::rightInfoList()
{
    finishContent();
    return &m_rightInfoList;
}

QWidget *VXCompareDataWindow::outlet(const QString &name) const
{
    return name.isEmpty() ? nullptr : findChild<QWidget *>(name);
}

VXDocument *VXCompareDataWindow::document(CompareSheet::Side side) const
{
    return side == CompareSheet::Left ? m_leftDocList.document() : m_rightDocList.document();
}

CompareMode VXCompareDataWindow::mode() const
{
    return Settings::kCompareMode.value();
}

CompareKey VXCompareDataWindow::key() const
{
    return Settings::kCompareKey.value();
}

QString VXCompareDataWindow::filterKey() const
{
    return propertyOfKey(key());
}

// Comparing

void VXCompareDataWindow::showWindow()
{
    showDocuments(nullptr, nullptr);
}

void VXCompareDataWindow::showDocuments(VXDocument *left, VXDocument *right)
{
    DocumentController::shared().commitEditing();
    m_picksMode = true;
    chooseDocuments(left, right);
    if (!isVisible())
        WindowPlacement::fitIntoScreen(*this);
    if (isMinimized())
        showNormal();
    show();
    raise();
    activateWindow();
}

void VXCompareDataWindow::chooseDocuments(VXDocument *left, VXDocument *right)
{
    QList<VXDocument *> documents;
    for (Document *document : DocumentController::shared().documentList()) {
        if (auto *ours = qobject_cast<VXDocument *>(document))
            documents << ours;
    }
    m_isChoosing = true;
    m_leftDocList.setContent(documents);
    m_rightDocList.setContent(documents);
    if (left)
        m_leftDocList.setSelectionIndex(static_cast<int>(documents.indexOf(left)));
    // No check against the end of the list: past it the choice stays.
    if (right)
        m_rightDocList.setSelectionIndex(static_cast<int>(documents.indexOf(right)));
    else if (documents.size() >= 2 && m_leftDocList.selectionIndex() == m_rightDocList.selectionIndex())
        m_rightDocList.setSelectionIndex(m_rightDocList.selectionIndex() + 1);
    m_isChoosing = false;
    documentsChosen();
}

/// Once everything is known of documents that the window was opened for: a list that is empty is nothing to
/// begin with.
void VXCompareDataWindow::pickMode()
{
    if (!std::exchange(m_picksMode, false) || m_counts[static_cast<std::size_t>(mode())] != 0)
        return;
    const auto found = std::find_if(m_counts.begin(), m_counts.end(), [](qsizetype n) { return n > 0; });
    if (found != m_counts.end())
        Settings::kCompareMode.set(static_cast<CompareMode>(found - m_counts.begin()));
}

void VXCompareDataWindow::documentsChosen()
{
    if (m_isChoosing)
        return;
    m_ui->leftDocuments->setCurrentIndex(m_leftDocList.selectionIndex());
    m_ui->rightDocuments->setCurrentIndex(m_rightDocList.selectionIndex());
    watchDocuments();
    updateFilters();
}

void VXCompareDataWindow::watchDocuments()
{
    for (const QMetaObject::Connection &watch : std::as_const(m_watches))
        disconnect(watch);
    m_watches.clear();
    for (const CompareSheet::Side side : {CompareSheet::Left, CompareSheet::Right}) {
        VXDocument *chosen = document(side);
        if (!chosen)
            continue;
        m_history.follow(chosen);
        const auto changed = &VXCompareDataWindow::documentHasChanged;
        m_watches << connect(chosen, &VXDocument::infosInserted, this, changed)
                  << connect(chosen, &VXDocument::infosRemoved, this, changed)
                  << connect(chosen, &VXDocument::infoReplaced, this, changed)
                  << connect(chosen, &VXDocument::infosReset, this, changed)
                  << connect(chosen, &VXDocument::infosChanged, this, changed)
                  << connect(chosen, &QObject::destroyed, this, [this] {
                         m_content.reset();
                         m_comparison.reset();
                         updateFilters();
                     });
    }
}

void VXCompareDataWindow::documentHasChanged()
{
    m_content.reset(); // it looks at the list as it was
    if (m_isChanging)
        return;
    if (m_comparison) {
        updateFilters();
        return;
    }
    // The list stays as it is while the user works through it; the records shown are those of now.
    m_isStale = true;
    m_contentTimer.start(0);
}

void VXCompareDataWindow::updateFilters()
{
    m_workTimer.stop();
    m_comparison.reset();
    m_counts.fill(-1);
    m_isListed = m_isCancelled = m_isStale = false;
    VXDocument *left = document(CompareSheet::Left);
    VXDocument *right = document(CompareSheet::Right);
    m_found = {};
    m_comparedAgain = {};
    if (!left || !right || left == right) {
        showFieldCounts();
        showKeys({});
        showCounts();
        return;
    }
    // What is still to be announced of edits made before this is no news afterwards.
    left->flushChanges();
    right->flushChanges();
    m_isStale = false;
    m_comparedMode = mode();
    m_comparison =
        std::make_unique<KeyComparison>(left->infos(), right->infos(), key(), m_comparedMode, options());
    continueComparison(m_patience);
}

void VXCompareDataWindow::continueComparison(std::chrono::milliseconds budget)
{
    if (!m_comparison)
        return;
    const bool isDone = m_comparison->runFor(budget);
    for (const CompareMode each : {CompareMode::OnlyRight, CompareMode::OnlyLeft, CompareMode::Different}) {
        if (m_comparison->isDone(each))
            m_counts[static_cast<std::size_t>(each)] = m_comparison->keys(each).size();
    }
    showCounts();
    const bool isNew = !m_isListed && m_comparison->isDone(m_comparedMode);
    if (isNew) {
        m_found = FoundKeys::of(*m_comparison, m_comparedMode);
    }
    m_isListed |= isNew;
    if (isDone)
        m_comparison.reset();
    else
        m_workTimer.start(0);
    if (isNew) {
        showFieldCounts();
        showKeys(keysToList());
    } else {
        showState();
    }
    if (isDone)
        pickMode();
}

void VXCompareDataWindow::cancelComparison()
{
    if (!m_comparison)
        return;
    m_workTimer.stop();
    m_comparison.reset();
    m_isCancelled = !m_isListed;
    if (m_isCancelled)
        showKeys({});
    showState();
}

qsizetype VXCompareDataWindow::countOfKeysInMode(int mode) const
{
    return mode >= 0 && mode < kCompareModeCount ? m_counts[static_cast<std::size_t>(mode)] : -1;
}

InfoList VXCompareDataWindow::recordsForKeys(const VXDocument &document, const QStringList &keys) const
{
    QVariantList values;
    for (const QString &each : keys)
        values << each;
    return document.infoForKeyValues(filterKey(), values).value_or(InfoList());
}

void VXCompareDataWindow::updateContent()
{
    m_contentTimer.stop();
    m_contentWorkTimer.stop();
    m_content.reset();
    const QStringList keys = m_filteredKeys.selectedObjects();
    const VXDocument *left = document(CompareSheet::Left);
    const VXDocument *right = document(CompareSheet::Right);
    if (keys.size() > kManyKeys) {
        m_content = std::make_unique<CompareContent>(keys, key(), left ? &left->infos() : nullptr,
                                                     right ? &right->infos() : nullptr, options());
        continueContent(kBudget);
        return;
    }
    const auto recordsOf = [&](const VXDocument *chosen) {
        return chosen && !keys.isEmpty() ? recordsForKeys(*chosen, keys) : InfoList();
    };
    m_leftInfoList.setContent(recordsOf(left));
    m_rightInfoList.setContent(recordsOf(right));
    for (const FieldContent &field : contentOf(m_leftInfoList.infos(), m_rightInfoList.infos(), options()))
        m_sheet->setContent(field);
    showState();
}

void VXCompareDataWindow::continueContent(std::chrono::milliseconds budget)
{
    if (!m_content)
        return;
    if (!m_content->runFor(budget)) {
        m_contentWorkTimer.start(0);
        showState();
        return;
    }
    const std::unique_ptr<CompareContent> content = std::move(m_content);
    m_contentWorkTimer.stop();
    for (const FieldContent &field : content->fields())
        m_sheet->setContent(field);
    m_leftInfoList.setContent(content->takeLeft());
    m_rightInfoList.setContent(content->takeRight());
    showState();
}

void VXCompareDataWindow::finishContent()
{
    while (m_content)
        continueContent(1000ms);
}

QColor VXCompareDataWindow::colorForValuesOthersKey(const std::optional<InfoList> &values,
                                                    const std::optional<InfoList> &others,
                                                    const QString &key) const
{
    const std::optional<GlyphField> field = fieldForKey(key);
    const bool differ =
        field && valuesDiffer(values.value_or(InfoList()), others.value_or(InfoList()), *field);
    return differ ? m_sheet->differentColor() : m_sheet->normalColor();
}

void VXCompareDataWindow::markDifferentValuesOthers(const InfoList &values, const InfoList &others)
{
    for (const ComparedField &field : comparedFields()) {
        if (field.field != GlyphField::Unicodes)
            m_sheet->setCaption(field.field, valuesDiffer(values, others, field.field));
    }
}

// Copying

void VXCompareDataWindow::copyLeft()
{
    const InfoList &infos = rightInfoList()->infos();
    if (!infos.empty())
        copyRecords({infos.front()}, CompareSheet::Left);
}

void VXCompareDataWindow::copyRight()
{
    const InfoList &infos = leftInfoList()->infos();
    if (!infos.empty())
        copyRecords({infos.front()}, CompareSheet::Right);
}

void VXCompareDataWindow::copyAllLeft()
{
    copyRecords(rightInfoList()->infos(), CompareSheet::Left);
}

void VXCompareDataWindow::copyAllRight()
{
    copyRecords(leftInfoList()->infos(), CompareSheet::Right);
}

void VXCompareDataWindow::copyRecords(const InfoList &infos, CompareSheet::Side side)
{
    if (infos.empty() || !mayChange(side))
        return;
    VXDocument *target = document(side);
    InfoList copies;
    LeftOut leftOut;
    copies.reserve(infos.size());
    for (const InfoPtr &info : infos) {
        InfoPtr copy = copyOf(*info);
        if (const QString refusal = refusalOfEdited(*copy); !refusal.isNull())
            leftOut.add(refusal);
        else
            copies.push_back(std::move(copy));
    }
    if (leftOut.records > 0)
        ErrorBubble::show(buttonOf(side), {u"Runebook"_s, 1, leftOut.text(), {}, {}});
    if (copies.empty())
        return;
    const UndoGroup group(target->undoManager(),
                          copies.size() == 1
                              ? tr("Copy “%1”").arg(copies.front()->name())
                              : tr("Copy %1 Records").arg(locale().toString(std::ssize(copies))));
    if (copies.size() == 1)
        target->addInfo(copies.front());
    else
        target->addInfos(copies);
}

// Moving

void VXCompareDataWindow::moveSelection(int step)
{
    const IndexSet rows = filteredKeys()->selectionIndexes();
    const qsizetype count = m_filteredKeys.rowCount();
    if (count == 0)
        return;
    qsizetype row = step > 0 ? 0 : count - 1;
    if (!rows.empty())
        row = step > 0 ? rows.back() + 1 : rows.front() - 1;
    const Wrap wrap = row < 0 ? Wrap::ToEnd : row >= count ? Wrap::ToTop : Wrap::None;
    row = (row + count) % count;
    m_filteredKeys.setSelectionIndexes({row});
    m_ui->keyView->scrollTo(m_filteredKeys.index(static_cast<int>(row)));
    m_wrap = wrap;
    showState();
}

void VXCompareDataWindow::selectAllKeys()
{
    m_ui->keyView->selectAll();
}
