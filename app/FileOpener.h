#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

class QWidget;

namespace runebook {

/// Opens any number of files: the first at once, the others one in each turn of the event loop, so that the
/// program can be used meanwhile. Asks before it opens very many. What cannot be opened is told at the end.
class FileOpener : public QObject
{
    Q_OBJECT
public:
    /// So many files are opened without asking.
    static constexpr qsizetype kAsksAbove = 20;

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
    void ask();
    void finish();

    QStringList m_paths;
    QStringList m_failures;
    qsizetype m_failureCount = 0;
    QPointer<QWidget> m_question;
};

} // namespace runebook
