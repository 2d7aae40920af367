#include "editing/compare/CompareMenus.h"

#include "editing/compare/CompareEditing.h"
#include "editing/compare/CompareModes.h"
#include "editing/compare/DifferenceSteps.h"
#include "editing/compare/OverlookCommands.h"
#include "editing/compare/ReportCommands.h"
#include "editing/compare/TakeCommands.h"
#include "platform/MainMenu.h"
#include "platform/documents/CommonMenus.h"

#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace runebook {

namespace {

/// Appends commands of a feature, with a line behind them.
template <class Feature>
void addGroup(QMenu &menu, const Feature &feature, std::initializer_list<typename Feature::Command> commands)
{
    for (const auto command : commands)
        menu.addAction(feature.action(command));
    menu.addSeparator();
}

} // namespace

CompareMenus::CompareMenus(QMainWindow &window, ComparedDocuments &documents, const CompareFeatures &features)
    : m_window(window), m_documents(documents), m_features(features)
{
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildCompareMenu();
    buildWindowMenu();
    MainMenu::contributeTo(MainMenu::Help, *addMenu(tr("&Help")), m_window);
}

QMenu *CompareMenus::addMenu(const QString &title)
{
    return m_window.menuBar()->addMenu(title);
}

void CompareMenus::buildFileMenu()
{
    QMenu *menu = addMenu(tr("&File"));
    CommonMenus::addNewAndOpen(*menu, m_window);
    menu->addSeparator();
    addGroup(*menu, m_features.editing, {CompareEditing::Save});
    addGroup(*menu, m_features.reports,
             {ReportCommands::SaveReport, ReportCommands::SaveReportOfSelected, ReportCommands::JsonReports});
    QAction *close = menu->addAction(tr("&Close"), &m_window, &QWidget::close);
    close->setShortcuts(QKeySequence::Close);
    MainMenu::contributeTo(MainMenu::File, *menu, m_window);
}

void CompareMenus::buildEditMenu()
{
    QMenu *menu = addMenu(tr("&Edit"));
    menu->addAction(m_features.editing.action(CompareEditing::Undo));
    menu->addAction(m_features.editing.action(CompareEditing::Redo));
    for (const ComparedDocuments::Side side : ComparedDocuments::kSides)
        m_features.editing.addHistory(*menu, side);
    menu->addSeparator();
    menu->addAction(m_features.editing.action(CompareEditing::CopyText));
    addGroup(*menu, m_features.steps, {DifferenceSteps::SelectAll});
    menu->addAction(m_features.reports.action(ReportCommands::CopyReport));
    menu->addAction(m_features.reports.action(ReportCommands::CopyReportOfSelected));
    MainMenu::contributeTo(MainMenu::Edit, *menu, m_window);
}

void CompareMenus::buildViewMenu()
{
    QMenu *menu = addMenu(tr("&View"));
    addGroup(*menu, m_features.modes,
             {CompareModes::ShowOnlyRight, CompareModes::ShowOnlyLeft, CompareModes::ShowDifferent});
    addGroup(*menu, m_features.modes, {CompareModes::OnlyDifferences});
    menu->addAction(m_features.overlooking.action(OverlookCommands::IgnoreCase));
    menu->addAction(m_features.overlooking.action(OverlookCommands::IgnoreSpaces));
    m_features.overlooking.addFields(*menu);
    menu->addSeparator();
    CommonMenus::addAppearance(*menu, m_window);
    MainMenu::contributeTo(MainMenu::View, *menu, m_window);
}

void CompareMenus::buildCompareMenu()
{
    QMenu *menu = addMenu(tr("&Compare"));
    addGroup(*menu, m_features.steps, {DifferenceSteps::Next, DifferenceSteps::Previous});
    addGroup(*menu, m_features.taking, {TakeCommands::TakeFieldLeft, TakeCommands::TakeFieldRight});
    addGroup(*menu, m_features.taking,
             {TakeCommands::TakeLeft, TakeCommands::TakeRight, TakeCommands::TakeAllLeft,
              TakeCommands::TakeAllRight, TakeCommands::Remove});
    addGroup(*menu, m_features.taking, {TakeCommands::CopyLeft, TakeCommands::CopyRight});
    QAction *again = menu->addAction(tr("Compare &Again"), this, &CompareMenus::compareAgainRequested);
    again->setShortcut(Qt::Key_F5);
}

void CompareMenus::buildWindowMenu()
{
    QMenu *menu = addMenu(tr("&Window"));
    MainMenu::contributeTo(MainMenu::Window, *menu, m_window);
    CommonMenus::listDocuments(*menu, m_window, [this](const Document &document) {
        return &document == m_documents.document(ComparedDocuments::Left)
            || &document == m_documents.document(ComparedDocuments::Right);
    });
}

} // namespace runebook
