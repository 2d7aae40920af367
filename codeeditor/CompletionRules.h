#pragma once

#include "codeeditor/Completion.h"

#include <QStringList>
#include <QStringView>
#include <functional>

namespace runebook {

/// The rules by which a text tells what could be written in it. No widgets, and nothing is run.

/// What stands before the caret: in "x = Doc['A'].na" the path of the object is Doc/[], the start "na".
struct CompletionContext {
    bool afterDot = false;
    /// The way to the object in front of the dot: names and "[]" for an item of what came before, with "/"
    /// between; a first step "@os.path" is a module. Empty when it cannot be told, or without a dot.
    QString path;
    QString start; ///< of the name that is being typed
    QString front; ///< what of the partial word stands before it, the dot included
};

/// \a range is the partial word in front of the caret, as the view finds it, \a end its end. Names that
/// \a text itself binds by import, for or = are followed to what they are bound to.
CompletionContext completionContext(const QString &text, int start, int end);

/// The names of \a text that begin with \a start, in the order of their first appearance, each once, with
/// what their definitions tell. The one around \a caret is not looked at, nor what \a isSkipped (strings and
/// comments). With \a afterDot only what stands behind a dot, else only what does not.
CompletionList namesInText(const QString &text, const QString &start, bool afterDot, int caret,
                           const std::function<bool(int)> &isSkipped);

/// Puts \a more behind \a list, without the names that are there.
void appendNew(CompletionList &list, const CompletionList &more);

/// The first sentence of a help text, in one line.
QString firstSentence(const QString &help);

} // namespace runebook
