#pragma once

#include "document/TableForm.h"
#include "platform/documents/FileSaver.h"

namespace runebook {

/// Produces a table in large blocks. Records that were read from the form's own table and are as they were
/// read are copied byte for byte; of changed ones the cells that did not change are.
class TableWriter
{
public:
    /// \a infos must stay as it is until the text was produced.
    TableWriter(const InfoList &infos, TableFormPtr form) : m_infos(&infos), m_form(std::move(form)) { }

    /// Always has something to say; stops when the sink refuses a block.
    bool operator()(const BlockSink &sink, Error *error) const;

private:
    const InfoList *m_infos;
    TableFormPtr m_form;
};

} // namespace runebook
