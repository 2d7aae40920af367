#include "app/FileConversion.h"

#include "document/FileFormats.h"
#include "document/GlyphDataReader.h"
#include "document/TableReader.h"
#include "document/UnkeptValues.h"
#include "document/VXDocument.h"
#include "editing/search/OnlyRecords.h"
#include "editing/search/SearchColumns.h"
#include "platform/FilePath.h"
#include "platform/PlainText.h"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Outcome = FileConversion::Outcome;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(FileConversion)
};

constexpr auto kStandardOutput = "-"_L1;

Error wrongUse(const QString &reason)
{
    return {u"User"_s, 2, {}, reason, {}};
}

/// One conversion while it is done.
class Conversion
{
public:
    Conversion(const FileConversion &request, QTextStream &errors)
        : m_request(request),
          m_errors(errors),
          m_inputType(typeOfPath(request.input)),
          m_outputType(request.output != kStandardOutput ? typeOfPath(request.output)
                           : m_inputType == kGlyphDataType || !request.fields.isEmpty() ? kTableType
                                                                                        : kGlyphDataType)
    {
    }

    Outcome run(QIODevice &standardOutput)
    {
        Error error;
        if (!read(&error) || !select(&error) || !chooseColumns(&error))
            return failed(error);
        if (!mayBeWritten())
            return Outcome::Refused;
        return write(standardOutput, &error) ? Outcome::Written : failed(error);
    }

private:
    void tell(const QString &text)
    {
        m_errors << "runebook: " << terminalText(QString(text).replace(u'\n', u' ')) << '\n';
    }

    Outcome failed(const Error &error)
    {
        tell(error.text());
        return Outcome::Failed;
    }

    bool read(Error *error)
    {
        const QString path = pathFromURL(m_request.input);
        const bool isTable = isTableType(m_inputType);
        const auto bytes = isTable ? readWholeFile(path, error) : readUtf8File(path, error);
        if (!bytes)
            return false;
        // Reading glyph data is lenient: what is none would be an empty list.
        if (!isTable && !bytes->contains("<glyphData") && !bytes->contains("<glyph "))
            return fail(error, inputError(Texts::tr("It is no glyph data file.")));
        Error reason;
        if (!m_document.readFromData(*bytes, m_inputType, &reason))
            return fail(error,
                        inputError(reason.failureReason.isEmpty() ? reason.recoverySuggestion
                                                                  : reason.failureReason));
        m_document.setFileType(m_inputType);
        if (const qsizetype conflicts = m_document.readNotes().count(ReadNotes::Conflict); conflicts > 0)
            return fail(error, inputError(Texts::tr("It has unresolved conflicts: %1.").arg(conflicts)));
        return true;
    }

    Error inputError(const QString &reason) const
    {
        return {u"ReadError"_s,
                2,
                Texts::tr("“%1” could not be read.").arg(shownPath(m_request.input)),
                reason,
                {}};
    }

    /// The records that are asked for, in the order of the file.
    bool select(Error *error)
    {
        m_infos = m_document.infos();
        if (m_request.search.isNull())
            return true;
        const std::optional<OnlyRecords> only = OnlyRecords::of(m_request.search, error);
        if (!only || !only->predicate)
            return only.has_value();
        const auto passing = SearchColumns(m_document).evaluate(*only->predicate, error);
        if (!passing)
            return false;
        m_infos.clear();
        for (std::size_t i = 0; i < passing->size(); ++i) {
            if ((*passing)[i])
                m_infos.push_back(m_document.infos()[i]);
        }
        return true;
    }

    bool chooseColumns(Error *error)
    {
        m_form = m_document.tableFormFor(m_outputType);
        if (m_request.fields.isEmpty())
            return true;
        if (!m_form)
            return fail(error, wrongUse(Texts::tr("--fields is for tables.")));
        std::vector<TableColumn> columns;
        for (const QString &name : m_request.fields) {
            const std::optional<TableColumn> column = columnOf(name.trimmed());
            if (!column)
                return fail(error, wrongUse(Texts::tr("No field is called “%1”.").arg(name)));
            columns.push_back(*column);
        }
        m_form = std::make_shared<const TableForm>(m_form->withColumns(std::move(columns)));
        return true;
    }

    std::optional<TableColumn> columnOf(const QString &name) const
    {
        const std::optional<GlyphField> field = fieldOfHeading(name);
        const auto found =
            std::find_if(m_form->columns.begin(), m_form->columns.end(), [&](const TableColumn &column) {
                return field ? column.field == field : column.heading == name;
            });
        if (found != m_form->columns.end())
            return *found;
        return field ? std::optional(TableColumn {headingOfField(*field), field, -1}) : std::nullopt;
    }

    /// Tells what the file that is to be written does not hold.
    bool mayBeWritten()
    {
        constexpr qsizetype kTold = 20;
        UnkeptValues unkept;
        const quint8 version = quint8(m_document.fileVersion());
        const SavingLosses losses =
            unkept.losses({m_infos, version, version, 0, m_form, m_document.tableForm()});
        QStringList lines = losses.lines(kTold) + lostOfFile();
        for (const QString &line : lines)
            tell(line);
        if (losses.takingOthers > 0) {
            tell(Texts::tr("Nothing was written: these values would take other records with them."));
            return false;
        }
        if (lines.isEmpty() || m_request.losesValues)
            return true;
        tell(Texts::tr("Nothing was written: this would be lost. “--lossy” writes all the same."));
        return false;
    }

    /// What the file that was read has besides its records, where it would be lost.
    QStringList lostOfFile() const
    {
        constexpr std::size_t kTold = 20;
        QStringList lines;
        const ReadNotes &notes = m_document.readNotes();
        const bool keepsProblems = m_form && m_form->keepsLines;
        for (const ReadNotes::Note &note : notes.notes) {
            if (note.kind == ReadNotes::TableProblem && !keepsProblems && std::size_t(lines.size()) < kTold)
                lines << note.text;
        }
        constexpr std::pair<ReadNotes::Kind, const char *> kLost[] {
            {ReadNotes::Comment, QT_TRANSLATE_NOOP("FileConversion", "Comments are left out: %1.")},
            {ReadNotes::ForeignLine,
             QT_TRANSLATE_NOOP("FileConversion", "Lines that are no glyphs are left out: %1.")},
            {ReadNotes::UnknownAttribute,
             QT_TRANSLATE_NOOP("FileConversion", "Unknown attributes are left out: %1.")},
            {ReadNotes::UnreadRest,
             QT_TRANSLATE_NOOP("FileConversion", "Unread ends of lines are left out: %1.")},
            {ReadNotes::DroppedAttribute,
             QT_TRANSLATE_NOOP("FileConversion", "Attributes are not kept as they stand: %1.")},
        };
        for (const auto &[kind, text] : kLost) {
            if (const qsizetype count = notes.count(kind); count > 0)
                lines << Texts::tr(text).arg(QLocale().toString(qlonglong(count)));
        }
        return lines;
    }

    bool write(QIODevice &standardOutput, Error *error)
    {
        const ContentProducer produce =
            formatOfType(m_outputType)->writer(m_infos, {quint8(m_document.fileVersion()), m_form});
        if (m_request.output != kStandardOutput)
            return FileSaver::save(pathFromURL(m_request.output), produce, error);
        const auto sink = [&standardOutput](std::string_view block) {
            return standardOutput.write(block.data(), qint64(block.size())) == qint64(block.size());
        };
        return produce(sink, error)
            || fail(error,
                    {u"SaveError"_s, 2, {}, Texts::tr("The standard output could not be written."), {}});
    }

    const FileConversion &m_request;
    QTextStream &m_errors;
    QString m_inputType;
    QString m_outputType;
    VXDocument m_document;
    InfoList m_infos;
    TableFormPtr m_form; ///< null for glyph data
};

} // namespace

FileConversion::Outcome FileConversion::run(QIODevice &standardOutput, QTextStream &errors) const
{
    return Conversion(*this, errors).run(standardOutput);
}

} // namespace runebook
