#include "document/TableWriter.h"

#include <algorithm>
#include <utility>

namespace runebook {

namespace {

constexpr std::size_t kBlock = 1 << 20;

/// Prints a table, row for row, as UTF-8.
class TablePrinter
{
public:
    explicit TablePrinter(const TableForm &form) : m_form(form) { }

    void appendHead(std::string &output)
    {
        const DelimitedFormat &format = m_form.format;
        const bool isMarkInSource = m_form.keepsLines && format.encoding == DelimitedFormat::Encoding::Utf8;
        if (format.hasByteOrderMark && !isMarkInSource)
            output += "\xEF\xBB\xBF";
        if (m_form.keepsLines) {
            output += sourceText(0, m_form.headEnd);
            noteEnd(output);
        } else {
            for (const TableColumn &column : m_form.columns) {
                appendCell(column.heading.toStdString(), format, output);
                output += format.separator;
            }
            output.pop_back();
            m_isOpen = true;
            m_isOwn = true;
        }
        appendAsides(-1, output);
    }

    void append(const VXGlyphInfo &info, std::string &output)
    {
        endLine(output);
        const std::string_view line = rowOf(info);
        if (line.empty()) {
            m_row.cells.clear();
            appendRow(info, output);
            return;
        }
        if (m_form.keepsLineOf(info)) {
            output += line;
            noteEnd(line);
        } else {
            DelimitedRows(line, m_form.sourceSeparator).next(m_row);
            appendRow(info, output);
            if (m_form.keepsLines) {
                output += m_row.lineEnd;
                noteEnd(m_row.lineEnd);
            }
        }
        appendAsides(line.data() - m_form.source.constData(), output);
    }

    void appendFoot(std::string &output)
    {
        for (std::size_t i = 0; i < m_form.asides.size(); ++i) {
            if (m_form.keepsLines && !m_isWritten[i] && m_form.hasText(m_form.asides[i]))
                appendAside(i, output);
        }
        if (m_isOpen && m_isOwn && m_form.format.endsWithLineEnd)
            output += m_form.format.lineEnd;
    }

private:
    std::string_view sourceText(qsizetype begin, qsizetype end) const
    {
        return {m_form.source.constData() + begin, static_cast<std::size_t>(end - begin)};
    }

    /// The row of the record in the table that was read; empty for one that is not there.
    std::string_view rowOf(const VXGlyphInfo &info) const
    {
        if (m_form.hasRowOf(info))
            return sourceText(info.lineOffset(), info.lineOffset() + info.lineLength());
        const auto found = m_form.adopted.empty() ? m_form.adopted.end() : m_form.adopted.find(&info);
        return found == m_form.adopted.end() ? std::string_view()
                                             : sourceText(found->second.begin, found->second.end);
    }

    /// Lines of the table itself were written, as they stand there.
    void noteEnd(std::string_view written)
    {
        m_isOpen = !written.ends_with('\n') && !written.ends_with('\r');
        m_isOwn = false;
    }

    void endLine(std::string &output)
    {
        if (std::exchange(m_isOpen, false))
            output += m_form.format.lineEnd;
    }

    void appendAside(std::size_t i, std::string &output)
    {
        endLine(output);
        const std::string_view lines = sourceText(m_form.asides[i].begin, m_form.asides[i].end);
        output += lines;
        noteEnd(lines);
        m_isWritten[i] = true;
    }

    /// Those that stood behind the row at \a offset.
    void appendAsides(qsizetype offset, std::string &output)
    {
        if (!m_form.keepsLines || m_form.asides.empty())
            return;
        auto found = std::lower_bound(
            m_form.asides.begin(), m_form.asides.end(), offset,
            [](const TableForm::Aside &aside, qsizetype behind) { return aside.behind < behind; });
        for (; found != m_form.asides.end() && found->behind == offset; ++found) {
            if (const auto i = static_cast<std::size_t>(found - m_form.asides.begin()); !m_isWritten[i])
                appendAside(i, output);
        }
    }

    /// One row without its line end. The cells of the row that the record was read from are in m_row.
    void appendRow(const VXGlyphInfo &info, std::string &output)
    {
        const std::size_t begin = output.size();
        const char separator = m_form.format.separator;
        for (const TableColumn &column : m_form.columns) {
            appendCellOf(info, column, output);
            output += separator;
        }
        if (m_form.keepsLines) {
            for (std::size_t i = m_form.columns.size(); i < m_row.cells.size(); ++i) {
                output += m_row.cells[i];
                output += separator;
            }
        }
        output.pop_back();
        // A row without any text would be no record.
        if (output.find_first_not_of(separator, begin) == output.npos)
            output.insert(begin, "\"\"");
        m_isOpen = true;
        m_isOwn = true;
    }

    void appendCellOf(const VXGlyphInfo &info, const TableColumn &column, std::string &output)
    {
        const bool wasRead = column.place >= 0 && column.place < std::ssize(m_row.cells);
        const std::string_view raw =
            wasRead ? m_row.cells[static_cast<std::size_t>(column.place)] : std::string_view();
        if (wasRead && m_form.keepsLines
            && (!column.field || isCellOf(info, *column.field, textOfCell(raw, m_buffer))))
            output += raw;
        else if (!column.field)
            appendCell(textOfCell(raw, m_buffer), m_form.format, output);
        else
            appendCell(cellOf(info, *column.field, m_buffer, m_form.codePointPrefix), m_form.format, output);
    }

    const TableForm &m_form;
    std::vector<bool> m_isWritten = std::vector<bool>(m_form.asides.size());
    DelimitedRow m_row;
    std::string m_buffer;
    bool m_isOpen = false; ///< what was written last has no line end yet
    bool m_isOwn = false; ///< and is no line of the table that was read
};

} // namespace

bool TableWriter::operator()(const BlockSink &sink, Error *) const
{
    const DelimitedFormat::Encoding encoding = m_form->format.encoding;
    const auto write = [&](const std::string &utf8) {
        if (encoding == DelimitedFormat::Encoding::Utf8)
            return sink(utf8);
        std::string encoded;
        appendEncoded(utf8, encoding, encoded);
        return sink(encoded);
    };
    TablePrinter printer(*m_form);
    std::string output;
    output.reserve(kBlock + kBlock / 8);
    printer.appendHead(output);
    for (const InfoPtr &info : *m_infos) {
        printer.append(*info, output);
        if (output.size() < kBlock)
            continue;
        if (!write(output))
            return false;
        output.clear();
    }
    printer.appendFoot(output);
    return write(output);
}

} // namespace runebook
