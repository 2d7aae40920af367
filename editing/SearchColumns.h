#pragma once

#include "document/VXDocument.h"
#include "platform/Predicate.h"

#include <map>
#include <vector>

namespace runebook {

/// Answers which records of a document pass a predicate, by searching columns of folded UTF-8: one for each
/// searched key and folding, made on first use and kept in step with edits. Main thread only.
class SearchColumns
{
public:
    explicit SearchColumns(const VXDocument &document);
    ~SearchColumns();

    /// Tells of a changed field; the record's text in the columns is taken anew at the next search.
    void noteChange(const VXDocument::Change &change);
    /// The list has other records or another order: all columns go.
    void reset();

    /// For every place of the document's info list whether the record there passes; nothing and an error
    /// when a regular expression gave up.
    std::optional<std::vector<bool>> evaluate(const Predicate &predicate, Error *error = nullptr);

private:
    const VXDocument &m_document;
    struct Column;
    std::map<std::pair<QString, int>, Column> m_columns;
};

/// The value that a predicate sees under a key of a record. Besides the fields, "accents" is the marks and
/// "description" the desc, as searches have always called them.
class InfoSubject final : public PredicateSubject
{
public:
    explicit InfoSubject(const VXGlyphInfo &info) :
        m_info(info)
    {
    }
    PredicateValue valueForKey(const QString &key) const override;

private:
    const VXGlyphInfo &m_info;
};

} // namespace runebook
