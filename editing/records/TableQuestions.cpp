#include "editing/records/TableQuestions.h"

#include "editing/fields/DelegateOperation.h"

namespace runebook {

namespace {

/// What \a delegate answers to the question of that signature; \a otherwise when it has no such operation.
template <typename Answer, typename... Arguments>
Answer ask(QObject *delegate, const char *signature, Answer otherwise, const Arguments &...arguments)
{
    const QMetaMethod asked = delegateOperation(delegate, signature);
    if (asked.isValid())
        asked.invoke(delegate, Qt::DirectConnection,
                     QReturnArgument<Answer>(QMetaType::fromType<Answer>().name(), otherwise),
                     QArgument<Arguments>(QMetaType::fromType<Arguments>().name(), arguments)...);
    return otherwise;
}

} // namespace

QObject *TableQuestions::columnDataCell(int column, QObject *table, int row) const
{
    return ask<QObject *>(m_delegate, "tableColumnInTableViewDataCellForRow(int,QObject*,int)", nullptr,
                          column, table, row);
}

QObject *TableQuestions::dataCell(QObject *table, int column, int row) const
{
    return ask<QObject *>(m_delegate, "tableViewDataCellForTableColumnRow(QObject*,int,int)", nullptr, table,
                          column, row);
}

void TableQuestions::willDisplayCell(QObject *table, QObject *cell, int column, int row) const
{
    const QMetaMethod told =
        delegateOperation(m_delegate, "tableViewWillDisplayCellForTableColumnRow(QObject*,QObject*,int,int)");
    if (told.isValid())
        told.invoke(m_delegate, Qt::DirectConnection, Q_ARG(QObject *, table), Q_ARG(QObject *, cell),
                    Q_ARG(int, column), Q_ARG(int, row));
}

bool TableQuestions::shouldEdit(QObject *table, int column, int row) const
{
    return ask(m_delegate, "tableViewShouldEditTableColumnRow(QObject*,int,int)", true, table, column, row);
}

QObject *TableQuestions::viewAt(int column, int row, bool isMade) const
{
    return ask<QObject *>(m_delegate, "viewAtColumnRowMakeIfNecessary(int,int,bool)", nullptr, column, row,
                          isMade);
}

bool TableQuestions::shouldShowExpansion(QObject *table, int column, int row) const
{
    return ask(m_delegate, "tableViewShouldShowCellExpansionForTableColumnRow(QObject*,int,int)", false,
               table, column, row);
}

void TableQuestions::tellOfCopy(QObject *controller, const InfoPtr &info, const InfoPtr &copy) const
{
    const QMetaMethod told =
        delegateOperation(m_delegate, "arrayControllerDidCopyObjectCopy(QObject*,InfoPtr,InfoPtr)");
    if (told.isValid())
        told.invoke(m_delegate, Qt::DirectConnection, Q_ARG(QObject *, controller), Q_ARG(InfoPtr, info),
                    Q_ARG(InfoPtr, copy));
}

} // namespace runebook
