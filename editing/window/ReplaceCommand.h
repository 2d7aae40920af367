#pragma once

#include "editing/window/WindowParts.h"

#include <QObject>

namespace runebook {

class Problems;
struct ReplaceSummary;

/// Find and Replace over the selected records of a document window, or all that are shown, and the word
/// afterwards on the problems it has led to.
class ReplaceCommand : public QObject
{
    Q_OBJECT
public:
    ReplaceCommand(const WindowParts &parts, Problems &problems, QObject *parent);
    void run();

private:
    /// A word on the problems that were not there \a before (by kind; empty: unknown).
    void tellOfNewProblems(const QList<qsizetype> &before, const ReplaceSummary &summary);
    void showNewProblems(const QList<qsizetype> &before, const QString &leftOut);

    WindowParts m_parts;
    Problems &m_problems;
};

} // namespace runebook
