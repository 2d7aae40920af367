#pragma once

#include "codeeditor/TextRange.h"

#include <QList>
#include <QString>
#include <QStringView>

namespace runebook {

/// What an editing action does to a text: the piece to replace, by what, and what is selected afterwards.
struct TextEdit {
    TextRange replaced;
    QString replacement;
};

struct LineEdit {
    QList<TextEdit> edits; // ascending, in the positions of the text before any of them
    TextRange selection; // in the text after all of them

    /// The text that the edits make of \a text.
    QString appliedTo(const QString &text) const;
};

/// The rules of the actions that work on whole lines. A line ends with its "\n". Ranges outside the text are
/// clamped to it. No widgets, so that each rule can be seen and tested on a text.

/// The whole lines that \a range touches, their breaks included; a range that ends right behind a break does
/// not touch the next line.
TextRange lineBlock(QStringView text, TextRange range);

/// The indentation for a line that follows \a endedLine: its leading spaces and tabs, and one tab more when
/// it ends with a colon.
QString indentationAfter(QStringView endedLine);

/// Comments or uncomments the selected lines: the first character of the block decides which. Visits the
/// 1st, 3rd, 5th ... line of the block, deliberately.
LineEdit toggleComment(QStringView text, TextRange selection);

/// One tab before each selected line. Without a final newline the last of several lines is left alone.
LineEdit shiftRight(QStringView text, TextRange selection);

/// Puts a copy of the selected lines behind them and selects in the copy what was selected.
LineEdit duplicateLines(QStringView text, TextRange selection);

/// Exchanges the selected lines with the line in front of them, or behind; without edits where there is none.
LineEdit moveLinesUp(QStringView text, TextRange selection);
LineEdit moveLinesDown(QStringView text, TextRange selection);

/// Makes one line of the selected ones, or of the line and the next: a blank stands where each ended, unless
/// nothing is beside it. Without edits in the last line.
LineEdit joinLines(QStringView text, TextRange selection);

/// What one step of indentation is in \a text: a tab, or so many blanks as its indented lines suggest. A tab
/// where nothing is indented.
QString indentStep(QStringView text);

/// Takes away one tab, or else up to four spaces, before each selected line.
LineEdit shiftLeft(QStringView text, TextRange selection);

} // namespace runebook
