#pragma once

#include "editing/search/SearchFilter.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

namespace runebook {

/// A search that shows what a mode can do.
struct SearchExample {
    SearchSettings settings;
    QString text; ///< to be typed
    QString finds; ///< what it finds, in a few words

    /// Where it looks, for a person: the mode's title, with the options that are on.
    QString place() const;
};

/// Examples for every mode and option, in the order of the search menu.
class SearchExamples
{
    Q_DECLARE_TR_FUNCTIONS(SearchExamples)
public:
    static QList<SearchExample> all();
};

} // namespace runebook
