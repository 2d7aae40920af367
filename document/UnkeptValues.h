#pragma once

#include "document/SavableForm.h"
#include "document/TableForm.h"
#include "model/VXGlyphInfo.h"
#include "platform/Error.h"
#include "platform/documents/SavingLosses.h"

#include <QCoreApplication>
#include <QSet>
#include <optional>
#include <vector>

namespace runebook {

/// The values of a document that a file would not keep, and which of them were accepted to be lost. Looks at
/// the records again only when they have changed, or the form of the file is another one.
class UnkeptValues
{
    Q_DECLARE_TR_FUNCTIONS(UnkeptValues)
public:
    /// What a save would write.
    struct Content {
        const InfoList &infos;
        quint8 fileVersion;
        quint8 readVersion; ///< of the file that the records were read from
        quint64 revision; ///< another one after every change
        TableFormPtr table = {}; ///< the table that a save would write; null for glyph data
        TableFormPtr readTable = {}; ///< the one that the records were read from; null for none
    };
    struct Fix {
        InfoPtr info;
        std::vector<FieldFix> fields;
    };

    /// All but those that were accepted; those that take other records with them cannot be.
    SavingLosses losses(const Content &content);
    /// Whether a value would take other records with it.
    bool takesOthers(const Content &content);
    void accept(const Content &content);
    /// What brings values into a form that a file keeps, where nobody has to decide.
    std::vector<Fix> fixes(const Content &content);

    /// Why the file \a url was not written, and what a file that was written does not hold.
    static Error refusal(const QString &url, const SavingLosses &losses);
    static Error notice(const QString &url, const SavingLosses &losses, const QString &domain);

private:
    struct Record {
        qsizetype place;
        bool takesOthers;
    };

    const std::vector<Record> &unkept(const Content &content);
    void findInTable(const Content &content, std::vector<Record> &found) const;
    void findInGlyphData(const Content &content, std::vector<Record> &found) const;
    void addAsides(const Content &content, SavingLosses &losses) const;

    std::vector<Record> m_records;
    std::optional<quint64> m_revision; ///< at which they were found
    bool m_isOfTable = false;
    std::vector<TableColumn> m_columns; ///< of the table for which they were found
    QSet<size_t> m_accepted; ///< by the values of the record
};

} // namespace runebook
