#include "document/TableReader.h"

#include "document/GlyphDataReader.h"
#include "platform/FilePath.h"
#include "platform/ParallelParts.h"
#include "platform/TurningWindows.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TableReader)
};

constexpr std::size_t kMostProblems = 1000;

Error tableError(const QString &reason, const QString &suggestion = {})
{
    return {u"User"_s, 1, {}, reason, suggestion};
}

QString reasonOf(DelimitedRow::Fault fault)
{
    return fault == DelimitedRow::Fault::OpenQuote
        ? Texts::tr("the quotes that begin the cell do not end")
        : Texts::tr("something other than a separator stands behind the quotes that end the cell");
}

/// A problem whose line is still the place in the text.
struct Met {
    const char *place;
    TableProblem problem;
};

/// Some rows of a table, and what they gave.
struct Part {
    std::string_view text;
    InfoList infos;
    std::vector<TableForm::Aside> asides; ///< those in front of the first row are behind -1
    std::vector<Met> problems;
    qsizetype problemCount = 0;
    qsizetype rowsLeftOut = 0;
    std::string codePointPrefix;
    bool hasCodePoints = false;

    void add(const char *place, TableProblem problem)
    {
        ++problemCount;
        rowsLeftOut += problem.left == TableProblem::Left::Row;
        problem.record = std::ssize(infos);
        if (problems.size() < kMostProblems)
            problems.push_back({place, std::move(problem)});
    }
};

/// Reads the rows of one part.
class RowReader
{
public:
    RowReader(const TableForm &form, Part &part)
        : m_form(form), m_part(part), m_source(new SourceBytes(form.source))
    {
        for (const TableColumn &column : form.columns)
            m_fields.push_back(column.field);
    }

    void read()
    {
        DelimitedRows rows(m_part.text, m_form.sourceSeparator);
        while (rows.next(m_row)) {
            if (isSound())
                readRecord();
            else
                setAside();
        }
    }

private:
    qsizetype offsetOf(const char *place) const { return place - m_form.source.constData(); }

    /// Whether the row is one of the table; not for lines that are blank or cannot be read.
    bool isSound()
    {
        if (m_row.isBlank())
            return false;
        const qsizetype columns = std::ssize(m_fields);
        const qsizetype cells = std::ssize(m_row.cells);
        if (m_row.fault != DelimitedRow::Fault::None) {
            tell(cells, reasonOf(m_row.fault), TableProblem::Left::Row);
            return false;
        }
        // Spreadsheets write rows of separators for lines in which nothing stands.
        if (m_row.line.size() < m_row.cells.size())
            return false;
        if (cells < columns) {
            tell(
                cells,
                Texts::tr("the row has %1 of %2 cells").arg(QString::number(cells), QString::number(columns)),
                TableProblem::Left::Row);
            return false;
        }
        return true;
    }

    void readRecord()
    {
        VXGlyphInfo::Reading glyph(m_source);
        glyph.setDirection(VXGlyphInfo::DirectionNotSet);
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            if (!m_row.cells[i].empty() && m_fields[i])
                readOne(glyph, i);
        }
        if (glyph.info().stored(GlyphField::Name).isAbsent())
            glyph.setUnknownName();
        glyph.setLine(static_cast<quint64>(offsetOf(m_row.line.data())),
                      m_row.line.size() + m_row.lineEnd.size());
        glyph.setAsRead();
        if (m_part.infos.empty())
            m_part.infos.reserve(m_part.text.size() / (m_row.line.size() + 1) + 16);
        if (std::any_of(m_row.cells.begin() + std::ssize(m_fields), m_row.cells.end(),
                        [](std::string_view cell) { return !cell.empty(); }))
            tell(std::ssize(m_fields), Texts::tr("the cell stands in no column"), TableProblem::Left::Value);
        m_part.infos.push_back(glyph.take());
        m_last = offsetOf(m_row.line.data());
    }

    void readOne(VXGlyphInfo::Reading &glyph, std::size_t i)
    {
        const GlyphField field = *m_fields[i];
        const std::string_view text = textOfCell(m_row.cells[i], m_buffer);
        if (!readCell(glyph, field, text, text.data() != m_buffer.data()))
            tell(qsizetype(i), objectionToCell(field, FieldValue::textOfUtf8(text)),
                 TableProblem::Left::Value);
        if (field == GlyphField::Unicodes && !m_part.hasCodePoints) {
            m_part.hasCodePoints = true;
            m_part.codePointPrefix = codePointPrefixOf(text);
        }
    }

    void tell(qsizetype cell, const QString &reason, TableProblem::Left left)
    {
        const QString heading =
            cell < std::ssize(m_form.columns) ? m_form.columns[std::size_t(cell)].heading : QString();
        m_part.add(m_row.line.data(), {0, cell + 1, heading, reason, left});
    }

    void setAside()
    {
        const qsizetype begin = offsetOf(m_row.line.data());
        const qsizetype end = begin + std::ssize(m_row.line) + std::ssize(m_row.lineEnd);
        std::vector<TableForm::Aside> &asides = m_part.asides;
        if (!asides.empty() && asides.back().end == begin)
            asides.back().end = end;
        else
            asides.push_back({m_last, begin, end});
    }

    const TableForm &m_form;
    Part &m_part;
    SourcePtr m_source; // of its own: threads that count the users of one would wait
    std::vector<std::optional<GlyphField>> m_fields;
    DelimitedRow m_row;
    std::string m_buffer;
    qsizetype m_last = -1;
};

/// Parts of the rows \a text, each for a thread.
std::vector<Part> partsOf(std::string_view text, char separator)
{
    constexpr qsizetype kSmallest = 1 << 20;
    const std::size_t size = text.size() / std::size_t(usefulParts(std::ssize(text), kSmallest)) + 1;
    const bool hasQuotes = text.find('"') != text.npos;
    std::vector<Part> parts;
    while (text.size() > size) {
        std::size_t end = 0;
        if (hasQuotes) {
            // Where a row ends within quotes can only be told from the front.
            DelimitedRows rows(text, separator);
            DelimitedRow row;
            while (text.size() - rows.rest().size() < size && rows.next(row)) { }
            end = text.size() - rows.rest().size();
        } else {
            end = std::min(text.find('\n', size), text.size() - 1) + 1;
        }
        parts.emplace_back().text = text.substr(0, end);
        text.remove_prefix(end);
    }
    if (!text.empty() || parts.empty())
        parts.emplace_back().text = text;
    return parts;
}

/// The records, problems and lines of all parts together.
TableReading joined(std::vector<Part> &parts, TableForm form, std::vector<TableProblem> headProblems)
{
    TableReading reading;
    reading.problemCount = std::ssize(headProblems);
    reading.problems = std::move(headProblems);
    const char *counted = form.source.constData();
    qsizetype line = 1;
    qsizetype last = -1; // the row in front of a part
    bool hasCodePoints = false;
    for (Part &part : parts) {
        const qsizetype before = std::ssize(reading.infos);
        for (Met &met : part.problems) {
            if (reading.problems.size() >= kMostProblems)
                break;
            const std::string_view between(counted, static_cast<std::size_t>(met.place - counted));
            line += lineAt(between, between.size()) - 1;
            counted = met.place;
            met.problem.line = line;
            met.problem.offset = met.place - form.source.constData();
            met.problem.record += before;
            reading.problems.push_back(std::move(met.problem));
        }
        reading.problemCount += part.problemCount;
        reading.rowsLeftOut += part.rowsLeftOut;
        for (TableForm::Aside aside : part.asides) {
            if (aside.behind < 0)
                aside.behind = last;
            form.asides.push_back(aside);
        }
        if (part.hasCodePoints && !std::exchange(hasCodePoints, true))
            form.codePointPrefix = part.codePointPrefix;
        if (!part.infos.empty())
            last = part.infos.back()->lineOffset();
        if (reading.infos.empty())
            reading.infos = std::move(part.infos);
        else
            std::move(part.infos.begin(), part.infos.end(), std::back_inserter(reading.infos));
    }
    reading.form = std::make_shared<const TableForm>(std::move(form));
    return reading;
}

/// Reads the headings: what the columns are, and what is wrong with them.
class HeadReader
{
public:
    HeadReader(TableForm &form, TableReader::Bad bad) : m_form(form), m_bad(bad) { }

    bool read(const DelimitedRow &row, Error *error)
    {
        if (row.fault != DelimitedRow::Fault::None)
            return fail(error, tableError(Texts::tr("Line 1: %1.").arg(reasonOf(row.fault))));
        std::string buffer;
        for (const std::string_view cell : row.cells)
            addColumn(FieldValue::textOfUtf8(textOfCell(cell, buffer)));
        m_form.format.quotesEverything = std::all_of(
            row.cells.begin(), row.cells.end(), [](std::string_view cell) { return cell.starts_with('"'); });
        return isTable(error);
    }
    std::vector<TableProblem> takeProblems() { return std::move(m_problems); }

private:
    void addColumn(const QString &heading)
    {
        TableColumn column {heading, fieldOfHeading(heading), std::ssize(m_form.columns)};
        if (const TableColumn *former = column.field ? m_form.columnOf(*column.field) : nullptr) {
            const QString reason = former->heading == heading
                ? Texts::tr("another column has the same heading")
                : Texts::tr("the column “%1” stands for the same field").arg(former->heading);
            m_problems.push_back({1, column.place + 1, heading, reason, TableProblem::Left::Column});
            column.field.reset();
        }
        // What records have, but no table: a key that takes no text.
        VXGlyphInfo scratch;
        if (!column.field && fieldForKey(heading) && !scratch.setValueForKey(u"test"_s, heading))
            m_invalid << heading;
        m_form.columns.push_back(column);
    }

    bool isTable(Error *error) const
    {
        const bool isStrict = m_bad == TableReader::Bad::Fails;
        if (isStrict && m_form.columns.size() < 2)
            return fail(error,
                        tableError({},
                                   Texts::tr("Please open a tab seperated file. The first line should "
                                             "contain the keys for each column.")));
        if (isStrict && !m_invalid.isEmpty())
            return fail(
                error,
                tableError({},
                           (m_invalid.size() == 1 ? Texts::tr("The tabbed file contains an invalid field: %1")
                                                  : Texts::tr("The tabbed file contains invalid fields: %1"))
                               .arg(m_invalid.join(kListSeparator))));
        const bool isKnown = std::any_of(m_form.columns.begin(), m_form.columns.end(),
                                         [](const TableColumn &column) { return column.field.has_value(); });
        if (!isKnown)
            return fail(error,
                        tableError(Texts::tr("No column is headed by a field."),
                                   Texts::tr("The first line should contain the keys for each column, such "
                                             "as name, unicode and category.")));
        return true;
    }

    TableForm &m_form;
    TableReader::Bad m_bad;
    std::vector<TableProblem> m_problems;
    QStringList m_invalid;
};

} // namespace

QString TableProblem::sentence() const
{
    const QString place = heading.isEmpty()
        ? Texts::tr("Line %1, column %2").arg(QString::number(line), QString::number(column))
        : Texts::tr("Line %1, column %2 (%3)").arg(QString::number(line), QString::number(column), heading);
    return place + ": "_L1 + reason + u'.';
}

std::optional<TableReading> TableReader::read(const QString &path, Error *error) const
{
    Error reason;
    try {
        std::optional<QByteArray> bytes = readWholeFile(path, error);
        if (!bytes)
            return {};
        std::optional<TableReading> reading;
        doApart(bytes->size(), [&] { reading = read(*std::exchange(bytes, QByteArray()), &reason); });
        if (reading)
            return reading;
    } catch (const std::bad_alloc &) {
        reason = {u"ReadError"_s, ENOMEM, {}, Texts::tr("There is not enough memory for it."), {}};
    }
    if (reason.domain == "ReadError"_L1)
        reason.description = Texts::tr("“%1” could not be read.").arg(shownPath(path));
    fail(error, reason);
    return {};
}

std::optional<TableReading> TableReader::read(const QByteArray &bytes, Error *error) const
{
    std::optional<DelimitedText> decoded = delimitedText(bytes, error);
    if (!decoded)
        return {};
    TableForm form;
    form.source = decoded->utf8;
    form.format.encoding = decoded->encoding;
    form.format.hasByteOrderMark = decoded->hasByteOrderMark;
    std::string_view text = decoded->text();
    while (!text.empty() && (text.front() == '\n' || text.front() == '\r'))
        text.remove_prefix(1);
    form.format.separator = m_options.separator.value_or(separatorOf(text, m_options.likelySeparator));
    form.sourceSeparator = form.format.separator;
    form.keepsLines = true;

    DelimitedRows rows(text, form.sourceSeparator);
    DelimitedRow head;
    rows.next(head);
    HeadReader headReader(form, m_options.bad);
    if (!headReader.read(head, error))
        return {};
    form.headEnd = form.source.size() - std::ssize(rows.rest());
    form.format.lineEnd = head.lineEnd.empty() ? "\n" : std::string(head.lineEnd);
    form.format.endsWithLineEnd = text.ends_with('\n') || text.ends_with('\r');

    std::vector<Part> parts = partsOf(rows.rest(), form.sourceSeparator);
    inParallel(std::ssize(parts),
               [&](qsizetype part) { RowReader(form, parts[static_cast<std::size_t>(part)]).read(); });
    TableReading reading = joined(parts, std::move(form), headReader.takeProblems());
    if (m_options.bad == Bad::Fails) {
        const auto fatal =
            std::find_if(reading.problems.begin(), reading.problems.end(),
                         [](const auto &each) { return each.left != TableProblem::Left::Value; });
        if (fatal != reading.problems.end()) {
            fail(error, tableError(fatal->sentence()));
            return {};
        }
    }
    return reading;
}

char separatorOfSuffix(const QString &path)
{
    return QFileInfo(path).suffix().compare("csv"_L1, Qt::CaseInsensitive) == 0 ? ',' : '\t';
}

bool isTablePath(const QString &path)
{
    constexpr QLatin1StringView kSuffixes[] {"txt"_L1, "tsv"_L1, "csv"_L1};
    const QString suffix = QFileInfo(path).suffix();
    return std::any_of(std::begin(kSuffixes), std::end(kSuffixes), [&](QLatin1StringView each) {
        return suffix.compare(each, Qt::CaseInsensitive) == 0;
    });
}

} // namespace runebook
