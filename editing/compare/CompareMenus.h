#pragma once

#include "editing/compare/ComparedDocuments.h"

class QAction;
class QMainWindow;
class QMenu;

namespace runebook {

class CompareEditing;
class CompareModes;
class DifferenceSteps;
class OverlookCommands;
class ReportCommands;
class TakeCommands;

/// The features of the compare window whose commands stand in its menus.
struct CompareFeatures {
    CompareModes &modes;
    OverlookCommands &overlooking;
    DifferenceSteps &steps;
    TakeCommands &taking;
    CompareEditing &editing;
    ReportCommands &reports;
};

/// The menu bar of the compare window. The commands are those of its features, which also know when they can
/// act.
class CompareMenus : public QObject
{
    Q_OBJECT
public:
    CompareMenus(QMainWindow &window, ComparedDocuments &documents, const CompareFeatures &features);

Q_SIGNALS:
    void compareAgainRequested();

private:
    QMenu *addMenu(const QString &title);
    void buildFileMenu();
    void buildEditMenu();
    void buildViewMenu();
    void buildCompareMenu();
    void buildWindowMenu();

    QMainWindow &m_window;
    ComparedDocuments &m_documents;
    CompareFeatures m_features;
};

} // namespace runebook
