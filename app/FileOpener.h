#pragma once

#include "platform/documents/DocumentController.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <optional>

class QProgressDialog;

namespace runebook {

/// Opens any number of files: the first at once, the others one in each turn of the event loop, so that the
/// program can be used meanwhile. Very many come up behind the first, with a progress bar that can be
/// cancelled. What cannot be opened is told at the end.
class FileOpener : public QObject
{
    Q_OBJECT
public:
    /// So many files are opened without a progress bar, each in front of the other.
    static constexpr qsizetype kFew = 20;

    using QObject::QObject;
    ~FileOpener() override;

    /// Relative paths start at the current folder.
    void open(const QStringList &paths);
    bool isOpening() const { return !m_paths.isEmpty(); }

Q_SIGNALS:
    /// Nothing is left to open.
    void finished();

private:
    void openNext();
    void openBehind();
    void showProgress();
    void cancel();
    void finish();

    QStringList m_paths;
    QStringList m_failures;
    qsizetype m_failureCount = 0;
    QPointer<QProgressDialog> m_progress;
    std::optional<DocumentController::OpeningMany> m_openingMany; ///< while there is a progress bar
};

} // namespace runebook
