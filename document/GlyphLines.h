#pragma once

#include "model/ReadNotes.h"
#include "model/VXGlyphInfo.h"

#include <QByteArray>

namespace runebook {

/// What the lines of a glyph data file hold.
struct GlyphLines {
    InfoList infos;
    ReadNotes notes;
    quint8 versionHint = 0; ///< as GlyphLineReader tells it
    /// Where lines begin that mark conflicts, or look as if they did; they are not among the notes.
    std::vector<qsizetype> markers;
};

/// Reads the lines of \a utf8 from \a begin on; a large file is read by several threads at the same time.
/// Comments may span lines. The records keep the bytes.
GlyphLines readGlyphLines(const QByteArray &utf8, qsizetype begin);
/// The same in about so many stretches, each read by a thread; the result never depends on their number. Of
/// the notes \a mostNotes are kept.
GlyphLines readGlyphLines(const QByteArray &utf8, qsizetype begin, qsizetype stretches,
                          std::size_t mostNotes = ReadNotes().mostNotes);
/// In how many stretches so many bytes are read best.
qsizetype usefulStretches(qsizetype bytes);

} // namespace runebook
