#pragma once

class QWidget;

namespace runebook {

class Document;

/// The windows of documents as widgets, which documents do not know.
namespace DocumentWindows {

/// The window of \a document; null without one.
QWidget *of(const Document &document);
/// The window of the frontmost document; null without one.
QWidget *front();
/// Brings \a window up in front of the others, with the keyboard.
void bringToFront(QWidget &window);

} // namespace DocumentWindows

} // namespace runebook
