#pragma once

#include <QTest>

#include <concepts>
#include <tuple>
#include <utility>

/// A test over a table, written once: the columns with their types, the rows, and what is done with each.
///
///     TABLE(linesAreCounted, (const QString &text, int lines), {
///         row("nothing", "", 1);
///         row("two", "a\nb", 2);
///     })
///     {
///         QCOMPARE(countLines(text), lines);
///     }
///
/// stands among the slots of the class. The second argument is code that calls `row` with the row's name and
/// its values (or the values only, if the first may be the name); it may have loops and variables. Beneath is
/// a plain test with data: `program linesAreCounted:two` runs one row.
#ifdef Q_MOC_RUN
#define TABLE(name, columns, ...)                                                                            \
    void name##_data();                                                                                      \
    void name();                                                                                             \
    void name##Row columns
#else
#define TABLE(name, columns, ...)                                                                            \
    void name##_data()                                                                                       \
    {                                                                                                        \
        const runebook::TableRows row(&std::remove_pointer_t<decltype(this)>::name##Row);                    \
        row.addColumns();                                                                                    \
        __VA_ARGS__                                                                                          \
    }                                                                                                        \
    void name()                                                                                              \
    {                                                                                                        \
        runebook::TableRows(&std::remove_pointer_t<decltype(this)>::name##Row).run(*this);                   \
    }                                                                                                        \
    void name##Row columns
#endif

namespace runebook {

/// A text in a table, or a row's name: a literal will do (UTF-8).
struct TableText : QString {
    TableText() = default;
    TableText(const char *text) : QString(QString::fromUtf8(text)) { }
    TableText(const char16_t *text) : QString(QString::fromUtf16(text)) { }
    TableText(const QByteArray &text) : QString(QString::fromUtf8(text)) { }
    TableText(std::convertible_to<QString> auto text) : QString(std::move(text)) { }
};

/// What TABLE stands on: the rows of the function that takes \a Columns.
template <class Test, class... Columns> class TableRows
{
    template <class Column>
    using Given = std::conditional_t<std::is_same_v<Column, QString>, TableText, Column>;
    using Row = std::tuple<std::decay_t<Columns>...>;

public:
    explicit TableRows(void (Test::*check)(Columns...)) : m_check(check) { }

    void addColumns() const { QTest::addColumn<Row>("row"); }
    void operator()(const TableText &name, Given<std::decay_t<Columns>>... values) const
    {
        QTest::newRow(name.toUtf8().constData()) << Row(std::move(values)...);
    }
    /// A row named by its first value.
    void operator()(Given<std::decay_t<Columns>>... values) const
    {
        const std::tuple<const Given<std::decay_t<Columns>> &...> all(values...);
        operator()(TableText(std::get<0>(all)), values...);
    }
    /// Checks the row that is due.
    void run(Test &test) const
    {
        const Row row = *static_cast<Row *>(QTest::qData("row", qMetaTypeId<Row>()));
        std::apply([&](const auto &...values) { (test.*m_check)(values...); }, row);
    }

private:
    void (Test::*m_check)(Columns...);
};

} // namespace runebook
