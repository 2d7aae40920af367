#pragma once

#include "editing/compare/CompareMenus.h"
#include "editing/compare/ShownRecords.h"

namespace Ui {
class VXCompareDataWindow;
}

namespace runebook {

class CompareNotices;
class CompareSheet;
class FieldFilter;
class ListedChange;

/// What stands in the compare window and the list of its features, connected with each other. What a feature
/// does stands with each of them.
class CompareWindowContent : public QObject
{
    Q_OBJECT
public:
    /// The widgets become the window's.
    explicit CompareWindowContent(QMainWindow &window);
    ~CompareWindowContent() override;

    ComparedDocuments &documents() { return m_documents; }
    ListedKeys &keys() { return m_keys; }
    ShownRecords &records() { return m_records; }
    CompareSheet &sheet() const { return *m_sheet; }
    CompareModes &modes() const { return *m_modes; }
    FieldFilter &fieldFilter() const { return *m_fieldFilter; }
    DifferenceSteps &steps() const { return *m_steps; }
    TakeCommands &taking() const { return *m_taking; }
    CompareEditing &editing() const { return *m_editing; }
    ReportCommands &reports() const { return *m_reports; }

    /// Begins to follow choices and settings.
    void follow();
    /// Enables each command that can act now.
    void validate();

private:
    void setUpParts();
    void setUpDocumentChoosers();
    void makeFeatures();
    void showState();

    QMainWindow &m_window;
    std::unique_ptr<Ui::VXCompareDataWindow> m_ui;
    CompareSheet *m_sheet;
    ComparedDocuments m_documents;
    ListedKeys m_keys;
    ShownRecords m_records;
    std::unique_ptr<ListedChange> m_change;
    std::unique_ptr<CompareModes> m_modes;
    std::unique_ptr<OverlookCommands> m_overlooking;
    std::unique_ptr<FieldFilter> m_fieldFilter;
    std::unique_ptr<DifferenceSteps> m_steps;
    std::unique_ptr<TakeCommands> m_taking;
    std::unique_ptr<CompareEditing> m_editing;
    std::unique_ptr<ReportCommands> m_reports;
    std::unique_ptr<CompareNotices> m_notices;
    std::unique_ptr<CompareMenus> m_menus;
};

} // namespace runebook
