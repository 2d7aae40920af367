#include "editing/compare/VXCompareDataWindow.h"

#include "editing/compare/CompareEditing.h"
#include "editing/compare/CompareModes.h"
#include "editing/compare/CompareReport.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/CompareSheet.h"
#include "editing/compare/CompareWindowContent.h"
#include "editing/compare/DifferenceSteps.h"
#include "editing/compare/FieldFilter.h"
#include "editing/compare/OverlookCommands.h"
#include "editing/compare/Overlooked.h"
#include "editing/compare/ReportCommands.h"
#include "editing/compare/TakeCommands.h"
#include "platform/MainMenu.h"
#include "platform/WindowPlacement.h"
#include "platform/documents/DocumentController.h"

#include <QEvent>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kLeft = ComparedDocuments::Left;
constexpr auto kRight = ComparedDocuments::Right;

ReportCommands::Scope scopeOf(const QString &scope)
{
    return scope == "selected"_L1 ? ReportCommands::Scope::Selected : ReportCommands::Scope::All;
}

ReportFormat formatOf(const QString &format)
{
    return format == "json"_L1 ? ReportFormat::Json : ReportFormat::Text;
}

} // namespace

VXCompareDataWindow::VXCompareDataWindow(QWidget *parent)
    : QMainWindow(parent), m_content(std::make_unique<CompareWindowContent>(*this))
{
    awakeFromNib();
}

VXCompareDataWindow::~VXCompareDataWindow() = default;

void VXCompareDataWindow::awakeFromNib()
{
    if (!std::exchange(m_hasObservers, true))
        m_content->follow();
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

bool VXCompareDataWindow::event(QEvent *event)
{
    // What has the focus decides what the commands on a field mean.
    if (m_content
        && (event->type() == QEvent::ShortcutOverride || event->type() == MainMenu::validationEvent()))
        m_content->validate();
    return QMainWindow::event(event);
}

void VXCompareDataWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    // The captions carry colours of their own, which have to follow the appearance.
    if (event->type() == QEvent::PaletteChange && m_hasObservers)
        m_content->records().updateSoon();
}

// Outlets

QObject *VXCompareDataWindow::documentsController() const
{
    return &DocumentController::shared();
}

DocumentChoice *VXCompareDataWindow::leftDocList()
{
    return &m_content->documents().choice(kLeft);
}

DocumentChoice *VXCompareDataWindow::rightDocList()
{
    return &m_content->documents().choice(kRight);
}

KeyList *VXCompareDataWindow::filteredKeys()
{
    m_content->keys().finish();
    return &m_content->keys().list();
}

InfoChoice *VXCompareDataWindow::leftInfoList()
{
    m_content->records().finish();
    return &m_content->records().choice(kLeft);
}

InfoChoice *VXCompareDataWindow::rightInfoList()
{
    m_content->records().finish();
    return &m_content->records().choice(kRight);
}

QWidget *VXCompareDataWindow::outlet(const QString &name) const
{
    return name.isEmpty() ? nullptr : findChild<QWidget *>(name);
}

void VXCompareDataWindow::showWindow()
{
    showDocuments(nullptr, nullptr);
}

void VXCompareDataWindow::showDocuments(VXDocument *left, VXDocument *right)
{
    DocumentController::shared().commitEditing();
    m_content->modes().pickMode();
    m_content->documents().choose(left, right);
    if (!isVisible())
        WindowPlacement::fitIntoScreen(*this);
    if (isMinimized())
        showNormal();
    show();
    raise();
    activateWindow();
}

QString VXCompareDataWindow::filterKey() const
{
    return propertyOfKey(Settings::kCompareKey.value());
}

void VXCompareDataWindow::updateFilters()
{
    m_content->keys().update();
}

void VXCompareDataWindow::cancelComparison()
{
    m_content->keys().cancel();
}

qsizetype VXCompareDataWindow::countOfKeysInMode(int mode) const
{
    return mode >= 0 && mode < kCompareModeCount ? m_content->keys().count(static_cast<CompareMode>(mode))
                                                 : -1;
}

void VXCompareDataWindow::showOnlyRight()
{
    CompareModes::choose(CompareMode::OnlyRight);
}

void VXCompareDataWindow::showOnlyLeft()
{
    CompareModes::choose(CompareMode::OnlyLeft);
}

void VXCompareDataWindow::showDifferent()
{
    CompareModes::choose(CompareMode::Different);
}

void VXCompareDataWindow::toggleOnlyDifferences()
{
    CompareModes::toggleOnlyDifferences();
}

CompareOptions VXCompareDataWindow::options() const
{
    return overlookedOptions();
}

void VXCompareDataWindow::toggleIgnoreCase()
{
    OverlookCommands::toggleCase();
}

void VXCompareDataWindow::toggleIgnoreSpaces()
{
    OverlookCommands::toggleSpaces();
}

void VXCompareDataWindow::setFieldIgnored(const QString &key, bool isIgnored)
{
    setOverlooked(key, isIgnored);
}

void VXCompareDataWindow::filterByField(const QString &key)
{
    m_content->fieldFilter().choose(key);
}

void VXCompareDataWindow::updateContent()
{
    m_content->records().update();
}

QColor VXCompareDataWindow::colorForValuesOthersKey(const std::optional<InfoList> &values,
                                                    const std::optional<InfoList> &others,
                                                    const QString &key) const
{
    return m_content->sheet().colorFor(values.value_or(InfoList()), others.value_or(InfoList()),
                                       fieldForKey(key));
}

void VXCompareDataWindow::markDifferentValuesOthers(const InfoList &values, const InfoList &others)
{
    m_content->sheet().setCaptions(values, others);
}

void VXCompareDataWindow::takeLeft()
{
    m_content->taking().takeSelected(kLeft);
}

void VXCompareDataWindow::takeRight()
{
    m_content->taking().takeSelected(kRight);
}

void VXCompareDataWindow::takeAllLeft()
{
    m_content->taking().takeListed(kLeft);
}

void VXCompareDataWindow::takeAllRight()
{
    m_content->taking().takeListed(kRight);
}

void VXCompareDataWindow::takeFieldLeft(const QString &key)
{
    m_content->taking().takeField(kLeft, fieldForKey(key));
}

void VXCompareDataWindow::takeFieldRight(const QString &key)
{
    m_content->taking().takeField(kRight, fieldForKey(key));
}

void VXCompareDataWindow::removeShown()
{
    m_content->taking().removeSelected();
}

void VXCompareDataWindow::copyLeft()
{
    m_content->taking().copyFirst(kLeft);
}

void VXCompareDataWindow::copyRight()
{
    m_content->taking().copyFirst(kRight);
}

void VXCompareDataWindow::copyAllLeft()
{
    m_content->taking().copySelected(kLeft);
}

void VXCompareDataWindow::copyAllRight()
{
    m_content->taking().copySelected(kRight);
}

void VXCompareDataWindow::undo()
{
    m_content->editing().undo();
}

void VXCompareDataWindow::redo()
{
    m_content->editing().redo();
}

void VXCompareDataWindow::saveDocuments()
{
    m_content->editing().save();
}

void VXCompareDataWindow::setPatience(std::chrono::milliseconds patience)
{
    m_content->keys().setPatience(patience);
}

void VXCompareDataWindow::selectNextDifference()
{
    m_content->steps().go(1);
}

void VXCompareDataWindow::selectPreviousDifference()
{
    m_content->steps().go(-1);
}

QString VXCompareDataWindow::reportOfFormat(const QString &scope, const QString &format)
{
    return m_content->reports().report(scopeOf(scope), formatOf(format));
}

bool VXCompareDataWindow::saveReportOfFormat(const QString &path, const QString &scope, const QString &format)
{
    return m_content->reports().save(path, scopeOf(scope), formatOf(format));
}
