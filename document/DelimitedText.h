#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QStringList>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace runebook {

/// How the cells of a table stand in its bytes: what a program that writes tables has chosen.
struct DelimitedFormat {
    enum class Encoding : quint8 { Utf8, Utf16LittleEndian, Utf16BigEndian };

    char separator = '\t'; ///< a tab, a comma or a semicolon
    Encoding encoding = Encoding::Utf8;
    bool hasByteOrderMark = false;
    bool quotesEverything = false; ///< also cells that need no quotes
    bool endsWithLineEnd = true; ///< the last row has one
    std::string lineEnd = "\n";

    friend bool operator==(const DelimitedFormat &, const DelimitedFormat &) = default;
};

/// A table's bytes as UTF-8.
struct DelimitedText {
    QByteArray utf8; ///< the bytes themselves where they are UTF-8 already, mark included
    qsizetype begin = 0; ///< behind the mark
    DelimitedFormat::Encoding encoding = DelimitedFormat::Encoding::Utf8;
    bool hasByteOrderMark = false;

    std::string_view text() const
    {
        return {utf8.constData() + begin, static_cast<std::size_t>(utf8.size() - begin)};
    }
};

/// Decodes UTF-8 and the UTF-16 that spreadsheets write, with or without byte order mark. Nothing for other
/// bytes; the error tells the line.
std::optional<DelimitedText> delimitedText(const QByteArray &bytes, Error *error = nullptr);
/// Appends \a utf8 in another encoding.
void appendEncoded(std::string_view utf8, DelimitedFormat::Encoding encoding, std::string &output);

/// One row of a table: places in its text.
struct DelimitedRow {
    enum class Fault : quint8 {
        None,
        OpenQuote, ///< quotes that begin a cell and never end
        TextBehindQuotes ///< something else than a separator behind the quotes that end a cell
    };

    std::string_view line; ///< without the line end
    std::string_view lineEnd; ///< empty at the end of a text that has none
    std::vector<std::string_view> cells; ///< as they stand, quotes included; of a faulty row those before it
    Fault fault = Fault::None;

    bool isBlank() const { return line.empty(); }
};

/// Goes through the rows of a text: cells between separators, within double quotes those may also hold
/// separators, line breaks and, doubled, quotes. Lines end with LF, CR LF or CR. A row with a fault ends at
/// the end of the line in which the cell in question begins, so that the following ones can be read.
class DelimitedRows
{
public:
    DelimitedRows(std::string_view text, char separator) : m_rest(text), m_separator(separator) { }

    /// Takes the next row, blank lines included; false at the end of the text.
    bool next(DelimitedRow &row);
    /// What follows the row that was taken last.
    std::string_view rest() const { return m_rest; }

private:
    std::size_t endOfLine(std::size_t begin) const;
    std::size_t endOfQuotes(std::size_t begin, DelimitedRow::Fault &fault) const;

    std::string_view m_rest;
    char m_separator;
};

/// The text of a cell as it stands: without quotes around it. Lies in \a buffer where quotes were doubled.
std::string_view textOfCell(std::string_view cell, std::string &buffer);
/// Appends a cell with that text, in quotes where it needs them.
void appendCell(std::string_view text, const DelimitedFormat &format, std::string &output);

/// Tab, comma or semicolon, as the first row of \a text has it; \a likely where it has none of them.
char separatorOf(std::string_view text, char likely = '\t');
/// Which line of \a text, from 1 on, the character at \a offset stands in.
qsizetype lineAt(std::string_view text, std::size_t offset);

/// All cells of a text, as lists of texts: for small ones, such as the clipboard's. Rows with faults are left
/// out and counted; blank lines at the end are none.
struct DelimitedCells {
    std::vector<QStringList> rows;
    char separator = '\t';
    qsizetype faultyRows = 0;
};
DelimitedCells cellsOfText(std::string_view text, std::optional<char> separator = {});
/// The reverse, rows with line ends.
std::string textOfCells(const std::vector<QStringList> &rows, const DelimitedFormat &format);

} // namespace runebook
