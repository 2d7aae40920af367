#pragma once

#include "document/VXDocument.h"
#include "editing/search/FieldAspect.h"

#include <QDeadlineTimer>

namespace runebook {

/// One value of a field that becomes another in every record of a document that has it, shown or not; of a
/// list, that entry. An empty text stands for no value, on either side: so records without one get it, and a
/// value can be taken away. Knows no widget.
class ValueRename
{
    Q_DECLARE_TR_FUNCTIONS(ValueRename)
public:
    /// Why values of \a aspect cannot be renamed, in words; null when they can.
    static QString obstacle(const FieldAspect &aspect);

    ValueRename(VXDocument &document, const FieldAspect &aspect, const QString &from, const QString &to);

    /// Looks for the records until \a deadline, at least for a while; true when they are known.
    bool findUntil(const QDeadlineTimer &deadline);
    /// How many records have the value, once they are known.
    qsizetype records() const { return std::ssize(m_found); }
    const InfoList &found() const { return m_found; }
    /// Why the field cannot have the new text in these records, in words; an empty domain when it can.
    Error objection() const;
    /// Goes on until \a deadline; true when all is done. Whoever calls it has an undo group open.
    bool applyUntil(const QDeadlineTimer &deadline);
    /// How far both have come, from 0 to 1.
    double progress() const;
    /// How the step is called.
    QString actionName() const;

private:
    bool hasValue(const VXGlyphInfo &info) const;
    void apply(VXGlyphInfo &info);
    bool isEntry() const { return m_aspect.isList(); }

    VXDocument &m_document;
    FieldAspect m_aspect;
    QString m_from;
    QString m_to;
    std::string m_fromUtf8;
    InfoList m_found;
    std::size_t m_next = 0; ///< record to be looked at
    std::size_t m_done = 0; ///< of those found
};

} // namespace runebook
