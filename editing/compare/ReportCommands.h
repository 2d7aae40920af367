#pragma once

#include "editing/compare/CountedWork.h"
#include "editing/compare/ShownRecords.h"

class QAction;
class QWidget;

namespace runebook {

enum class ReportFormat;

/// Reports of what differs, as `runebook --compare` prints them, copied or saved. Every field counts,
/// whatever is overlooked.
class ReportCommands : public QObject
{
    Q_OBJECT
public:
    enum Command {
        CopyReport,
        CopyReportOfSelected,
        SaveReport,
        SaveReportOfSelected,
        JsonReports,
        CommandCount
    };
    enum class Scope { All, Selected };

    ReportCommands(const ComparedDocuments &documents, ShownRecords &records, QWidget &window);

    QAction *action(Command command) const { return m_actions[command]; }
    /// Null where there are no two documents, or when \a progress stops it.
    QString report(Scope scope, ReportFormat format, const WorkProgress &progress = {});
    /// False, and the reason shown, when it cannot be written.
    bool save(const QString &path, Scope scope, ReportFormat format);
    /// For somebody who looks on: very much shows its progress, and Esc stops it.
    void copy(Scope scope);
    void askWhereToSave(Scope scope);
    void validate();

private:
    QString reportWithProgress(Scope scope, const QString &title);
    bool write(const QString &path, const QString &report);

    const ComparedDocuments &m_documents;
    ShownRecords &m_records;
    QWidget &m_window;
    std::array<QAction *, CommandCount> m_actions {};
};

} // namespace runebook
