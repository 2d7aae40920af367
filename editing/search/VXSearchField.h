#pragma once

#include "editing/search/SearchExamples.h"
#include "platform/Error.h"

#include <QColor>
#include <QLineEdit>
#include <QTimer>
#include <optional>

class QMenu;
namespace runebook {
class SearchChip;
}
Q_MOC_INCLUDE(<QMenu>)

/// The search field of a document window: a text, the menu that chooses where and how to search, the recent
/// searches, a mark when the text cannot be searched for. It knows nothing of records; its window does, like
/// this:
///
///     auto *field = new VXSearchField(toolbar);
///     field->setUpSearchMenu();
///     connect(field, &VXSearchField::searchChanged, this, &VXWindowController::filterInfos);
///     connect(field, &VXSearchField::goToTableRequested, table, qOverload<>(&QWidget::setFocus));
///
///     // filterInfos(): with the text and the settings of this moment
///     auto [predicate, problem] = SearchFilter(SearchSettings::current()).result(field->stringValue());
///     Error gaveUp;
///     if (!listController->setFilterPredicate(predicate, &gaveUp))
///         problem = gaveUp;
///     field->setProblem(problem);
class VXSearchField : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(QString stringValue READ stringValue WRITE setStringValue)
public:
    Q_INVOKABLE explicit VXSearchField(QWidget *parent = nullptr);
    ~VXSearchField() override;

public: // the text
    Q_INVOKABLE QString stringValue() const { return text(); }
    /// Announces nothing: whoever sets it filters.
    Q_INVOKABLE void setStringValue(const QString &text);
    /// Empties the field as a user does.
    Q_INVOKABLE void clearSearch();

public: // the search menu
    /// Builds the menu.
    Q_INVOKABLE void setUpSearchMenu();
    /// The menu; null before setUpSearchMenu(). Its actions have their tag as data.
    Q_INVOKABLE QMenu *searchMenu() const { return m_menu; }
    /// What the items of modes and options do.
    Q_INVOKABLE void searchMode(int tag);
    /// Ticks \a item as the settings want it and tells whether it can be chosen.
    Q_INVOKABLE bool validateMenuItem(QAction *item) const;
    /// Opens the menu below the field.
    void showSearchMenu();
    /// Opens the sheet with examples, as F1 does.
    void showHelp();
    /// All fields again, without options: what the chip beside the icons does.
    void searchEverywhere();

public: // problems
    /// Marks the field and says why, or takes the mark away. While the user types, the reason shows itself
    /// only after a pause.
    void setProblem(const std::optional<runebook::Error> &problem);
    const std::optional<runebook::Error> &problem() const { return m_problem; }

Q_SIGNALS:
    /// The user changed the text or, with or without one, a setting: the filter has to be built again.
    void searchChanged();
    /// Besides searchChanged(), when the user changed a setting.
    void settingsChanged();
    /// The user wants to go on in the results.
    void goToTableRequested();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void updateChip();
    void placeChip();
    void chooseMenuItem(QAction *item);
    void updateMenu();
    void takeExample(const runebook::SearchExample &example);
    void rememberSearch();
    void updatePrompt();
    void updateMark();
    void showProblem();

    QMenu *m_menu = nullptr;
    QAction *m_clearAction;
    QAction *m_problemAction;
    std::optional<runebook::Error> m_problem;
    QColor m_mark; ///< the background while there is a problem
    QTimer m_pause; ///< since the last change of a text that has a problem
    runebook::SearchChip *m_chip; ///< where is searched, when it is not everywhere
    QAction *m_helpAction;
};
