#pragma once

#include "editing/merge/MergeHeadings.h"
#include "editing/merge/MergeMenus.h"
#include "editing/merge/MergeSheet.h"

class QLabel;
class QScrollArea;
class QToolButton;

namespace runebook {

/// What the window of a merge shows of one record: what became of it, how it can be taken as a whole, and its
/// fields on the three sides.
class MergeDetails : public QWidget
{
    Q_OBJECT
public:
    /// All three must stay. Names and enables the commands that take the record.
    MergeDetails(MergeResolution &resolution, MergeMenus &menus, const MergeTitles &titles,
                 QWidget *parent = nullptr);

    /// Shows a record by its number, -1 for none. What is being typed stays when it is the same.
    void showRecord(qsizetype number);
    qsizetype shown() const { return m_shown; }
    MergeSheet *sheet() const { return m_sheet; }

Q_SIGNALS:
    /// A field of the record was taken from a side.
    void taken();

private:
    QToolButton *makeButton(MergeMenus::Command command);
    void showNothing();
    void showTaking();
    void makeRoom();

    MergeResolution &m_resolution;
    MergeMenus &m_menus;
    QLabel *m_name;
    QLabel *m_explanation;
    QToolButton *m_takeRename;
    QToolButton *m_takeOurs;
    QToolButton *m_takeTheirs;
    MergeSheet *m_sheet;
    QScrollArea *m_area; ///< of the sheet
    qsizetype m_shown = -1;
};

} // namespace runebook
