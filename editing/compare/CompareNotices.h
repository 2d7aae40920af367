#pragma once

#include "editing/compare/ShownRecords.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QScrollArea;
class QStackedWidget;

namespace runebook {

/// What the compare window says of the comparison and of the records: how far it is, that it is out of date,
/// why no record is shown, why one is listed that does not differ.
class CompareNotices : public QObject
{
    Q_OBJECT
public:
    struct Widgets {
        QWidget *progressRow;
        QProgressBar *progress;
        QPushButton *cancel;
        QWidget *staleBar;
        QPushButton *refresh;
        QStackedWidget *pages; ///< of records, or of a text in their place
        QWidget *recordsPage;
        QWidget *textPage;
        QLabel *text;
        QLabel *note;
    };

    CompareNotices(ComparedDocuments &documents, ListedKeys &keys, const ShownRecords &records,
                   const Widgets &widgets);

    /// Shows what there is now.
    void show();

private:
    QString emptyText() const;
    QString textOfEmptyList() const;
    QString noteText() const;

    ComparedDocuments &m_documents;
    ListedKeys &m_keys;
    const ShownRecords &m_records;
    Widgets m_widgets;
};

} // namespace runebook
