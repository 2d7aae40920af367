#pragma once

#include "editing/compare/ShownRecords.h"

#include <QMainWindow>

namespace runebook {
class CompareWindowContent;
}

/// Sets two open documents side by side: lists the glyphs that one lacks or that differ, shows the records of
/// the chosen ones, tells the fields that disagree, and takes fields and records across. One for the program,
/// made on first use and kept. The defaults "FilterKey" and "FilterMode" are observed live.
///
/// It is a list of features, and has the names by which scripts and other classes know what they do.
class VXCompareDataWindow : public QMainWindow
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit VXCompareDataWindow(QWidget *parent = nullptr);
    ~VXCompareDataWindow() override;

public: // outlets
    Q_INVOKABLE QObject *documentsController() const;
    Q_INVOKABLE runebook::DocumentChoice *leftDocList();
    Q_INVOKABLE runebook::DocumentChoice *rightDocList();
    /// The keys of the chosen mode; finishes a comparison that is still going on.
    Q_INVOKABLE runebook::KeyList *filteredKeys();
    Q_INVOKABLE runebook::InfoChoice *leftInfoList();
    Q_INVOKABLE runebook::InfoChoice *rightInfoList();
    /// A part of the window by its name, such as the caption "leftLableName", or null.
    Q_INVOKABLE QWidget *outlet(const QString &name) const;
    Q_INVOKABLE bool hasObservers() const { return m_hasObservers; }
    /// Begins to follow the choices and the defaults. Part of making the window; nothing more happens when it
    /// is called again.
    Q_INVOKABLE void awakeFromNib();
    /// With the context "FilterKeySelection": updateContent(), with any other: updateFilters().
    Q_INVOKABLE void observeValueForKeyPathOfObjectChangeContext(const QString &keyPath, QObject *object,
                                                                 const QVariantMap &change,
                                                                 const QVariant &context);

public: // comparing
    /// Takes in the documents that are open now, compares, and comes to the front.
    Q_INVOKABLE void showWindow();
    /// The same with these documents chosen, which are open.
    void showDocuments(VXDocument *left, VXDocument *right);
    /// The property by which glyphs are told apart.
    Q_INVOKABLE QString filterKey() const;
    /// Makes the key list anew. With very long lists it goes on in the background, to be cancelled, and the
    /// list appears later.
    Q_INVOKABLE void updateFilters();
    Q_INVOKABLE void showOnlyRight();
    Q_INVOKABLE void showOnlyLeft();
    Q_INVOKABLE void showDifferent();
    /// Folds fields that are the same on both sides away, or unfolds them; remembered.
    Q_INVOKABLE void toggleOnlyDifferences();
    /// What is overlooked where records are compared; remembered.
    runebook::CompareOptions options() const;
    Q_INVOKABLE void toggleIgnoreCase();
    Q_INVOKABLE void toggleIgnoreSpaces();
    /// The field is named by its key.
    Q_INVOKABLE void setFieldIgnored(const QString &key, bool isIgnored);
    /// Lists only records that differ in a field, named by its key; in any for an empty text.
    Q_INVOKABLE void filterByField(const QString &key);
    /// Shows the records of the selected keys and colours the captions. Those of very many keys are found in
    /// the background and appear later.
    Q_INVOKABLE void updateContent();
    /// Red when the distinct values of a property differ, otherwise the normal colour of texts. A list that
    /// is absent has no values.
    Q_INVOKABLE QColor colorForValuesOthersKey(const std::optional<InfoList> &values,
                                               const std::optional<InfoList> &others,
                                               const QString &key) const;
    /// Colours the captions. The one for code points always stays as it is.
    Q_INVOKABLE void markDifferentValuesOthers(const InfoList &values, const InfoList &others);
    /// The number of keys in a mode; -1 while it is not known.
    Q_INVOKABLE qsizetype countOfKeysInMode(int mode) const;

public: // taking: the target's records become like those of the other side, in place, as one undo step
    /// Takes the records of the selected keys into the left document: every field of those that both have,
    /// and what it lacks, behind the neighbour that it follows on the right. The next difference is selected.
    Q_INVOKABLE void takeLeft();
    Q_INVOKABLE void takeRight();
    /// The same for all keys that are listed.
    Q_INVOKABLE void takeAllLeft();
    Q_INVOKABLE void takeAllRight();
    /// Takes one field, named by its key, of the records of the selected keys into the left document.
    Q_INVOKABLE void takeFieldLeft(const QString &key);
    Q_INVOKABLE void takeFieldRight(const QString &key);
    /// Removes the records of the selected keys that only one side has.
    Q_INVOKABLE void removeShown();
    /// Takes back what was done last in either document.
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    /// Saves both documents, if changed.
    Q_INVOKABLE void saveDocuments();

public: // reports, as `runebook --compare` prints them
    /// \a scope is "all" or "selected", \a format "text" or "json". Every field counts, whatever is
    /// overlooked.
    Q_INVOKABLE QString reportOfFormat(const QString &scope, const QString &format);
    /// False, and the reason shown, when it cannot be written.
    Q_INVOKABLE bool saveReportOfFormat(const QString &path, const QString &scope, const QString &format);

public: // copying: a copy is appended to the other document, nothing is replaced
    /// Copies the first record of the right pane into the left document.
    Q_INVOKABLE void copyLeft();
    Q_INVOKABLE void copyRight();
    /// Copies all records of the right pane into the left document, as one undo step.
    Q_INVOKABLE void copyAllLeft();
    Q_INVOKABLE void copyAllRight();

public: // moving
    /// Behind the last one comes the first again, and the window says so.
    Q_INVOKABLE void selectNextDifference();
    Q_INVOKABLE void selectPreviousDifference();
    /// Ends a comparison that goes on in the background.
    Q_INVOKABLE void cancelComparison();
    /// How long a comparison keeps its caller waiting before it goes on in the background.
    void setPatience(std::chrono::milliseconds patience);

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    std::unique_ptr<runebook::CompareWindowContent> m_content;
    bool m_hasObservers = false;
};
