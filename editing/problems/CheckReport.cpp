#include "editing/problems/CheckReport.h"

#include "document/FileFormats.h"
#include "document/GlyphDataReader.h"
#include "document/SavableForm.h"
#include "document/TableReader.h"
#include "editing/problems/Problems.h"
#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/PlainText.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CheckReport)
};

/// One problem as it is reported.
struct Finding {
    ProblemKind kind;
    qint64 offset; ///< of its line in the file; -1 for the file as a whole
    QString record;
    QString field; ///< its key
    QString sentence;
};

QString fieldOf(ProblemKind kind)
{
    switch (kind) {
    case ProblemKind::MissingName:
    case ProblemKind::InvalidName:
    case ProblemKind::DuplicateName:
    case ProblemKind::LongName:
        return keyOfField(GlyphField::Name);
    case ProblemKind::MissingComponent:
    case ProblemKind::SelfReference:
    case ProblemKind::CircularComponent:
    case ProblemKind::AmbiguousComponent:
    case ProblemKind::UnicodeDecomposition:
        return keyOfField(GlyphField::Decompose);
    case ProblemKind::UnknownCategory:
        return keyOfField(GlyphField::Category);
    case ProblemKind::UnknownSubCategory:
        return keyOfField(GlyphField::SubCategory);
    case ProblemKind::UnknownScript:
    case ProblemKind::UnicodeScript:
        return keyOfField(GlyphField::Script);
    case ProblemKind::MissingMark:
        return keyOfField(GlyphField::Marks);
    case ProblemKind::OneSidedAnchor:
        return keyOfField(GlyphField::Anchors);
    case ProblemKind::DuplicateProduction:
    case ProblemKind::UnicodeProduction:
    case ProblemKind::FontName:
        return keyOfField(GlyphField::Production);
    case ProblemKind::UnicodeCase:
        return keyOfField(GlyphField::Case);
    case ProblemKind::UnicodeDirection:
        return keyOfField(GlyphField::Direction);
    case ProblemKind::UnicodeDescription:
        return keyOfField(GlyphField::Desc);
    case ProblemKind::RepeatingAltName:
        return keyOfField(GlyphField::AltNames);
    case ProblemKind::InvalidCodePoint:
    case ProblemKind::DuplicateCodePoint:
    case ProblemKind::ManyCodePoints:
        return keyOfField(GlyphField::Unicode);
    default:
        return {};
    }
}

/// Everything that is wrong with a document that was just read, in the order of its lines.
class Findings
{
public:
    /// Of the records that \a isAsked has; without it of all, and of the file.
    Findings(VXDocument &document, const std::optional<std::vector<bool>> &isAsked, ProblemKindSet leftOut)
        : m_document(document), m_problems(document)
    {
        m_problems.setLeftOut(leftOut);
        m_problems.finish();
        std::vector<Problem> problems;
        m_problems.append({}, 0, document.countOfInfos(), problems);
        m_problems.appendRead({}, problems);
        if (isAsked)
            std::erase_if(problems, [&](const Problem &problem) {
                const qsizetype place = problem.info ? document.indexOfObjectInInfos(problem.info) : -1;
                return place < 0 || !(*isAsked)[static_cast<std::size_t>(place)];
            });
        for (const Problem &problem : problems) {
            const bool isLoss =
                problem.kind == ProblemKind::QuoteOrBreak || problem.kind == ProblemKind::LostValue;
            if (isLoss)
                addLosses(problem);
            else
                add(problem);
        }
        std::stable_sort(m_all.begin(), m_all.end(),
                         [](const Finding &a, const Finding &b) { return a.offset < b.offset; });
    }
    const std::vector<Finding> &all() const { return m_all; }
    qsizetype hints() const
    {
        return std::count_if(m_all.begin(), m_all.end(),
                             [](const Finding &each) { return isHint(each.kind); });
    }

private:
    void add(const Problem &problem)
    {
        QString sentence = m_problems.explanation(problem);
        QString field = fieldOf(problem.kind);
        if (problem.kind >= kFirstReadProblem && problem.kind != ProblemKind::FileForm) {
            if (problem.kind == ProblemKind::UnknownAttribute)
                field = sentence;
            sentence = meaningOfProblemKind(problem.kind) + u" “"_s + sentence + u'”';
        }
        const qint64 offset =
            problem.kind >= kFirstReadProblem ? m_problems.offsetOf(problem) : problem.info->lineOffset();
        m_all.push_back(
            {problem.kind, offset, problem.info ? problem.info->name() : QString(), field, sentence});
    }
    /// One for each field.
    void addLosses(const Problem &problem)
    {
        const VXGlyphInfo &info = *problem.info;
        for (const RoundTrip::Loss &loss : RoundTrip(m_document.fileVersion()).losses(info)) {
            const bool isQuote = isStored(loss.field) && RoundTrip::hasQuoteOrBreak(info, loss.field);
            m_all.push_back({isQuote ? ProblemKind::QuoteOrBreak : ProblemKind::LostValue, info.lineOffset(),
                             info.name(), keyOfField(loss.field),
                             sentenceOfLoss(info, loss, titleOfField(loss.field))});
        }
    }

    VXDocument &m_document;
    Problems m_problems;
    std::vector<Finding> m_all;
};

/// The numbers of the lines of a text, asked for in ascending order.
class LineNumbers
{
public:
    explicit LineNumbers(const QByteArray &text) : m_text(text), m_end(text.contains('\n') ? '\n' : '\r') { }
    qsizetype at(qint64 offset)
    {
        const char *data = m_text.constData();
        m_line += std::count(data + m_counted, data + std::max(m_counted, offset), m_end);
        m_counted = std::max(m_counted, offset);
        return m_line;
    }

private:
    const QByteArray &m_text;
    char m_end;
    qint64 m_counted = 0;
    qsizetype m_line = 1;
};

/// What is told of one file.
class Report
{
public:
    virtual ~Report() = default;
    virtual void begin(const QString &file, const VXDocument &document, bool isTable) = 0;
    virtual void add(const Finding &finding, qsizetype line) = 0;
    virtual void end(qsizetype problems, qsizetype hints, CheckResult result) = 0;
    virtual void unreadable(const QString &file, const Error &error) = 0;
    virtual void finish() { }
};

class TextReport final : public Report
{
public:
    explicit TextReport(QTextStream &out) : m_out(out) { }
    void begin(const QString &file, const VXDocument &document, bool isTable) override
    {
        m_file = terminalText(file);
        m_records = document.countOfInfos();
        m_version = isTable ? Texts::tr("a table") : Texts::tr("version %1").arg(document.fileVersion());
    }
    void add(const Finding &finding, qsizetype line) override
    {
        m_out << m_file << ':';
        if (finding.offset >= 0)
            m_out << line << ':';
        m_out << (isHint(finding.kind) ? " hint " : " ") << idOfProblemKind(finding.kind) << ": ";
        if (!finding.record.isEmpty() || !finding.field.isEmpty()) {
            m_out << terminalText(finding.record) << (finding.field.isEmpty() ? "" : ".")
                  << terminalText(finding.field) << ": ";
        }
        m_out << terminalText(finding.sentence) << '\n';
    }
    void end(qsizetype problems, qsizetype hints, CheckResult) override
    {
        m_out << m_file << ": "
              << Texts::tr("%1 records, %2, %3 problems").arg(m_records).arg(m_version).arg(problems);
        if (hints > 0)
            m_out << Texts::tr(", %1 hints").arg(hints);
        m_out << '\n';
    }
    void unreadable(const QString &, const Error &) override { }

private:
    QTextStream &m_out;
    QString m_file;
    QString m_version;
    qsizetype m_records = 0;
};

QString jsonText(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

class JsonReport final : public Report
{
public:
    explicit JsonReport(QTextStream &out) : m_out(out) { }
    void begin(const QString &file, const VXDocument &document, bool isTable) override
    {
        const QJsonObject head {{u"file"_s, file},
                                {u"records"_s, qint64(document.countOfInfos())},
                                {u"version"_s, isTable ? QJsonValue() : QJsonValue(document.fileVersion())}};
        // The list of problems may be long: it is written as it comes.
        m_out << next() << jsonText(head).chopped(1) << ",\"problems\":[";
        m_isFirstProblem = true;
    }
    void add(const Finding &finding, qsizetype line) override
    {
        const auto orNull = [](const QString &text) {
            return text.isEmpty() ? QJsonValue() : QJsonValue(text);
        };
        m_out << (std::exchange(m_isFirstProblem, false) ? "\n" : ",\n")
              << jsonText({{u"line"_s, finding.offset < 0 ? QJsonValue() : QJsonValue(qint64(line))},
                           {u"record"_s, orNull(finding.record)},
                           {u"field"_s, orNull(finding.field)},
                           {u"kind"_s, QString(idOfProblemKind(finding.kind))},
                           {u"hint"_s, isHint(finding.kind)},
                           {u"sentence"_s, finding.sentence}});
    }
    void end(qsizetype, qsizetype, CheckResult result) override
    {
        m_out << "],\"status\":" << int(result) << '}';
    }
    void unreadable(const QString &file, const Error &error) override
    {
        m_out << next()
              << jsonText({{u"file"_s, file},
                           {u"status"_s, int(CheckResult::Unreadable)},
                           {u"error"_s, error.text()}});
    }
    void finish() override { m_out << (m_isFirst ? "[]\n" : "\n]\n"); }

private:
    const char *next() { return std::exchange(m_isFirst, false) ? "[\n" : ",\n"; }

    QTextStream &m_out;
    bool m_isFirst = true;
    bool m_isFirstProblem = true;
};

std::optional<QByteArray> bytesOf(const QString &file, QIODevice &input, Error *error)
{
    if (file != "-"_L1 && isTablePath(file)) // UTF-16, too
        return readWholeFile(pathFromURL(file), error);
    if (file != "-"_L1)
        return readUtf8File(pathFromURL(file), error);
    QByteArray bytes = input.readAll();
    if (isUtf8(bytes))
        return bytes;
    fail(error,
         {u"ReadError"_s,
          1,
          Texts::tr("The standard input could not be read."),
          Texts::tr("It is not UTF-8 text."),
          {}});
    return {};
}

/// By the name where that tells, otherwise by what is in it.
bool isTable(const QString &file, const QByteArray &bytes)
{
    if (isTablePath(file) || QFileInfo(file).suffix().compare("xml"_L1, Qt::CaseInsensitive) == 0)
        return isTablePath(file);
    return !bytes.contains("<glyph") && bytes.left(bytes.indexOf('\n')).contains('\t');
}

CheckResult checkFile(const QString &file, const CheckOptions &options, Report &report, QTextStream &errors,
                      QIODevice &input, const RecordChoice &choice)
{
    Error error;
    VXDocument document;
    const std::optional<QByteArray> bytes = bytesOf(file, input, &error);
    const bool isTabbed = bytes && isTable(file, *bytes);
    const QString type = isTabbed && isTablePath(file) ? typeOfPath(file)
        : isTabbed                                     ? kTableType
                                                       : kGlyphDataType;
    std::optional<std::vector<bool>> isAsked;
    const auto choose = [&] { return !choice || (isAsked = choice(document, &error)).has_value(); };
    if (!bytes || !document.readFromData(*bytes, type, &error) || !choose()) {
        errors << terminalText(u"runebook: %1: %2\n"_s.arg(file, error.text().replace(u'\n', u' ')).trimmed())
               << '\n';
        report.unreadable(file, error);
        return CheckResult::Unreadable;
    }
    const Findings findings(document, isAsked, options.leftOut);
    // The places in a table are those in its text, which may have stood in another encoding.
    LineNumbers lines(document.tableForm() ? document.tableForm()->source : *bytes);
    report.begin(file, document, isTabbed);
    for (const Finding &finding : findings.all())
        report.add(finding, lines.at(finding.offset));
    const qsizetype hints = findings.hints();
    const qsizetype problems = std::ssize(findings.all()) - hints;
    const CheckResult result =
        problems > 0 || (options.isStrict && hints > 0) ? CheckResult::Problems : CheckResult::Clean;
    report.end(problems, hints, result);
    return result;
}

} // namespace

CheckResult checkFiles(const QStringList &files, const CheckOptions &options, QTextStream &out,
                       QTextStream &errors, QIODevice &input, const RecordChoice &choice)
{
    std::unique_ptr<Report> report;
    if (options.format == ReportFormat::Json)
        report = std::make_unique<JsonReport>(out);
    else
        report = std::make_unique<TextReport>(out);
    CheckResult worst = CheckResult::Clean;
    for (const QString &file : files)
        worst = std::max(worst, checkFile(file, options, *report, errors, input, choice));
    report->finish();
    return worst;
}

} // namespace runebook
