#pragma once

#include "editing/many/RecordPlan.h"

#include <QDialog>
#include <QTimer>
#include <memory>

class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QPushButton;

namespace runebook {

class PlanModel;
class PreviewTable;

/// A sheet that shows a plan, row by row, before it is carried out: options beside a preview whose rows can
/// be taken out, a count below. Each kind of plan adds its options and makes it anew when they change; a
/// change of the document does that too. Whoever opens the sheet carries takePlan() out once it was accepted.
class PlanSheet : public QDialog
{
    Q_OBJECT
public:
    ~PlanSheet() override;
    /// The plan, which is whole, of a sheet that was accepted; the sheet is done then.
    std::unique_ptr<RecordPlan> takePlan();
    void accept() override;

protected:
    /// \a doIt is the button's text without a count.
    PlanSheet(VXDocument &document, const QString &title, const QString &doIt, QWidget *parent);
    virtual std::unique_ptr<RecordPlan> makePlan() = 0;
    /// What was chosen is kept for the next time.
    virtual void remember() = 0;
    /// Puts the options beside the preview; \a form is filled already, \a first gets the focus.
    void setOptions(QWidget *form, QWidget *first);
    /// Finds out again, in the next turn of the event loop, what would happen.
    void refreshLater();
    VXDocument &document() const { return m_document; }

private:
    void refresh();
    void planMore();
    void showCounts();

    VXDocument &m_document;
    QString m_doIt;
    std::unique_ptr<RecordPlan> m_plan;
    PlanModel *m_model;
    PreviewTable *m_view;
    QLabel *m_summary;
    QDialogButtonBox *m_buttons;
    QPushButton *m_accept;
    QTimer m_refreshTimer;
    QTimer m_planTimer;
    QTimer m_countTimer;
    bool m_isWhole = false;
};

} // namespace runebook
