#pragma once

#include "model/VXGlyphInfo.h"
#include "platform/documents/FileSaver.h"

#include <array>

namespace runebook {

/// All values of a record as they were when this was made, for the autosave form of what lines cannot hold.
/// Making it copies none of them, however long; what they are printed from is shared and never changes, so
/// another thread may do that.
class KeptValues
{
public:
    KeptValues(const VXGlyphInfo &info, quint64 place);

    /// Gives one line of base64, line feed included, in blocks; false once \a sink refuses one.
    bool print(const BlockSink &sink) const;

    /// A record and its place, from the bytes that such a line holds; nothing when they are no whole one.
    static std::optional<std::pair<qsizetype, InfoPtr>> read(const QByteArray &bytes);

private:
    const char *sourceData() const { return m_source ? m_source->data() : nullptr; }
    const FieldValue &value(GlyphField field) const { return m_values[static_cast<std::size_t>(field)]; }

    quint64 m_place;
    SourcePtr m_source;
    std::array<FieldValue, kStoredFieldCount> m_values;
    qint32 m_case;
    qint32 m_direction;
    quint64 m_index;
};

} // namespace runebook
