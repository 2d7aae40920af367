#pragma once

#include <QVariantMap>

class VXSimpleSplitView;
class VXSplitViewWindowController;

namespace runebook {

class WindowProblems;
class WindowSearch;
struct WindowParts;

/// The parts of a document window whose state the next start of the program puts back.
struct RestoredParts {
    VXSplitViewWindowController &window;
    const WindowParts &parts;
    WindowSearch &search;
    WindowProblems &problems;
    VXSimpleSplitView &contentSplit;
};

/// Selection, search, columns, scroll position, sizes and what is shown.
QVariantMap encodedState(const RestoredParts &restored);
/// Puts back what \a state has; the rest stays as it is.
void restoreState(const RestoredParts &restored, const QVariantMap &state);

} // namespace runebook
