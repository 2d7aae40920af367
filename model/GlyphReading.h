#pragma once

#include "model/VXGlyphInfo.h"

/// A record while it is read from a file: filled without undo step or notice, since nobody else has it yet.
class VXGlyphInfo::Reading
{
public:
    /// Of bytes of \a source, with nothing in it: not even a name.
    explicit Reading(const runebook::SourcePtr &source)
        : m_info(std::make_shared<VXGlyphInfo>(runebook::FieldValue()))
    {
        m_info->m_source = source;
    }

    /// The record as far as it was read.
    const VXGlyphInfo &info() const { return *m_info; }
    /// The same for setters that do more than store a value.
    VXGlyphInfo &info() { return *m_info; }
    /// The record, which is read; this is of no use any more.
    InfoPtr take() { return std::move(m_info); }

    /// \a bytes lie in the source.
    void setPiece(runebook::GlyphField field, std::string_view bytes) { setValue(field, pieceOf(bytes)); }
    void setValue(runebook::GlyphField field, runebook::FieldValue value)
    {
        m_info->m_values[static_cast<std::size_t>(field)] = std::move(value);
    }
    /// The same with all that follows from the value.
    void store(runebook::GlyphField field, std::string_view bytes)
    {
        m_info->exchange(field, pieceOf(bytes));
    }
    void setUnknownName() { setValue(runebook::GlyphField::Name, unknownName()); }
    void setDirection(int direction) { m_info->m_direction = static_cast<qint8>(direction); }
    void setCase(int letterCase) { m_info->m_case = static_cast<quint8>(letterCase); }
    void updateUnicodeChar() { m_info->updateUnicodeChar(); }
    /// The place of the line that it was read from, in bytes of the file, and for which versions the file's
    /// line is what a writer prints for it. Lines that are too long or too far away are not kept.
    void setLine(quint64 offset, quint64 length, quint8 versions = 0)
    {
        if (!runebook::FieldValue::canBePiece(offset, length))
            return;
        m_info->m_line = runebook::FieldValue::piece(nullptr, offset, length);
        m_info->m_lineVersions = versions;
    }
    bool hasLine() const { return m_info->m_line.isPiece(); }
    /// What the file holds of it was looked at.
    void setAsRead() { m_info->m_lineVersions |= kAsRead; }

private:
    quint64 placeOf(std::string_view bytes) const
    {
        return static_cast<quint64>(bytes.data() - m_info->sourceData());
    }
    runebook::FieldValue pieceOf(std::string_view bytes) const
    {
        return runebook::FieldValue::piece(m_info->sourceData(), placeOf(bytes), bytes.size());
    }

    InfoPtr m_info;
};
