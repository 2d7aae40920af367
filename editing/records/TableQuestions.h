#pragma once

#include "model/VXGlyphInfo.h"

#include <QObject>
#include <QPointer>

namespace runebook {

/// What a table asks and tells a delegate, which answers what it implements as invokable operations. Columns
/// are numbers from 0.
class TableQuestions
{
public:
    /// Not owned.
    void setDelegate(QObject *delegate) { m_delegate = delegate; }
    QObject *delegate() const { return m_delegate; }

    QObject *columnDataCell(int column, QObject *table, int row) const;
    QObject *dataCell(QObject *table, int column, int row) const;
    void willDisplayCell(QObject *table, QObject *cell, int column, int row) const;
    /// True without an answer.
    bool shouldEdit(QObject *table, int column, int row) const;
    QObject *viewAt(int column, int row, bool isMade) const;
    /// False without an answer.
    bool shouldShowExpansion(QObject *table, int column, int row) const;
    /// \a controller has inserted a copy of a record.
    void tellOfCopy(QObject *controller, const InfoPtr &info, const InfoPtr &copy) const;

private:
    QPointer<QObject> m_delegate;
};

} // namespace runebook
