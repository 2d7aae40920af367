#include "editing/compare/CompareWindowContent.h"

#include "editing/compare/CompareEditing.h"
#include "editing/compare/CompareModes.h"
#include "editing/compare/CompareNotices.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/CompareSheet.h"
#include "editing/compare/DifferenceSteps.h"
#include "editing/compare/FieldFilter.h"
#include "editing/compare/ListedChange.h"
#include "editing/compare/OverlookCommands.h"
#include "editing/compare/ReportCommands.h"
#include "editing/compare/TakeCommands.h"
#include "ui_VXCompareDataWindow.h"

#include <QMainWindow>
#include <QToolBar>

namespace runebook {

CompareWindowContent::CompareWindowContent(QMainWindow &window)
    : m_window(window),
      m_ui(std::make_unique<Ui::VXCompareDataWindow>()),
      m_sheet(new CompareSheet),
      m_keys(m_documents),
      m_records(m_documents, m_keys)
{
    m_ui->setupUi(&window);
    m_ui->detailArea->setWidget(m_sheet);
    setUpParts();
    setUpDocumentChoosers();
    makeFeatures();
    showState();
}

CompareWindowContent::~CompareWindowContent() = default;

void CompareWindowContent::setUpParts()
{
    // An empty tool bar joins the title bar where the desktop draws them as one.
    QToolBar *bar = m_window.addToolBar(tr("Tool Bar"));
    bar->setMovable(false);
    bar->setMaximumHeight(1);
    bar->toggleViewAction()->setVisible(false);
    m_window.setUnifiedTitleAndToolBarOnMac(true);
    m_window.setContextMenuPolicy(Qt::NoContextMenu);
    m_ui->staleLabel->setTextFormat(Qt::PlainText);
    m_ui->splitter->setStretchFactor(0, 0);
    m_ui->splitter->setStretchFactor(1, 1);
    m_ui->splitter->setSizes({260, 980});
}

void CompareWindowContent::setUpDocumentChoosers()
{
    for (const ComparedDocuments::Side side : ComparedDocuments::kSides) {
        QComboBox *chooser = side == ComparedDocuments::Left ? m_ui->leftDocuments : m_ui->rightDocuments;
        DocumentChoice *choice = &m_documents.choice(side);
        chooser->setModel(choice);
        connect(chooser, &QComboBox::activated, choice, &DocumentChoice::setSelectionIndex);
        connect(&m_documents, &ComparedDocuments::chosen, chooser,
                [chooser, choice] { chooser->setCurrentIndex(choice->selectionIndex()); });
    }
}

void CompareWindowContent::makeFeatures()
{
    const Ui::VXCompareDataWindow &ui = *m_ui;
    m_change = std::make_unique<ListedChange>(m_documents, m_keys);
    m_modes = std::make_unique<CompareModes>(
        m_keys, *m_sheet,
        CompareModes::Widgets {{ui.onlyRightButton, ui.onlyLeftButton, ui.differentButton},
                               {ui.onlyRightCount, ui.onlyLeftCount, ui.differentCount},
                               ui.keyChooser,
                               ui.onlyDifferencesBox});
    m_overlooking = std::make_unique<OverlookCommands>(*ui.overlookedLabel);
    m_fieldFilter = std::make_unique<FieldFilter>(m_keys, *ui.fieldFilter, *ui.fieldFilterRow);
    m_steps = std::make_unique<DifferenceSteps>(
        m_keys, m_records,
        DifferenceSteps::Widgets {ui.keyView, ui.positionLabel, ui.nextButton, ui.previousButton});
    m_taking = std::make_unique<TakeCommands>(TakeCommands::Parts {m_documents,
                                                                   m_keys,
                                                                   m_records,
                                                                   *m_change,
                                                                   *m_sheet,
                                                                   *ui.keyView,
                                                                   {ui.takeLeftButton, ui.takeRightButton}});
    m_editing = std::make_unique<CompareEditing>(m_documents, *m_change, *m_sheet, m_window);
    m_reports = std::make_unique<ReportCommands>(m_documents, m_records, m_window);
    m_notices = std::make_unique<CompareNotices>(
        m_documents, m_keys, m_records,
        CompareNotices::Widgets {ui.progressRow, ui.progressBar, ui.cancelButton, ui.staleBar,
                                 ui.refreshButton, ui.pages, ui.detailArea, ui.emptyPage, ui.emptyLabel,
                                 ui.noteLabel});
    m_menus = std::make_unique<CompareMenus>(
        m_window, m_documents,
        CompareFeatures {*m_modes, *m_overlooking, *m_steps, *m_taking, *m_editing, *m_reports});
}

void CompareWindowContent::follow()
{
    const auto update = [this] { m_keys.update(); };
    connect(&m_documents, &ComparedDocuments::chosen, this, update);
    connect(m_menus.get(), &CompareMenus::compareAgainRequested, this, update);
    connect(m_editing.get(), &CompareEditing::wentInHistory, this, update);
    Settings::kCompareKey.onChange(this, update);
    Settings::kCompareMode.onChange(this, update);
    Settings::kComparesWithoutCase.onChange(this, update);
    Settings::kComparesWithoutSpaces.onChange(this, update);
    Settings::kComparesWithoutFields.onChange(this, update);
    connect(&m_keys.list(), &KeyList::selectionChanged, &m_records, &ShownRecords::update);
    connect(&m_records, &ShownRecords::found, m_sheet, &CompareSheet::showFields);
    connect(&m_keys, &ListedKeys::stateChanged, this, &CompareWindowContent::showState);
    connect(&m_records, &ShownRecords::stateChanged, this, &CompareWindowContent::showState);
}

// What is shown

void CompareWindowContent::showState()
{
    m_notices->show();
    m_steps->show();
    validate();
}

void CompareWindowContent::validate()
{
    m_taking->validate();
    m_editing->validate();
    m_reports->validate();
}

} // namespace runebook
