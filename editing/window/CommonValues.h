#pragma once

#include "editing/fields/FieldEditing.h"

#include <QObject>
#include <QTimer>
#include <vector>

namespace runebook {

/// What several records have in common, field by field. Of very many records the first are looked at when
/// somebody asks; whether the rest have the same values turns out right after, in slices of idle time.
class CommonValues : public QObject
{
    Q_OBJECT
public:
    explicit CommonValues(QObject *parent);

    const InfoList &infos() const { return m_infos; }
    /// Other records; what was asked about the ones before is forgotten.
    void setInfos(InfoList infos);
    /// What the records have in \a field, as far as it is known now.
    CommonValue valueOf(GlyphField field);

Q_SIGNALS:
    /// A value that was given as a common one is none.
    void foundMixed(runebook::GlyphField field);

private:
    struct Progress {
        GlyphField field;
        std::size_t next; ///< record that was not compared
    };

    void compareMore();
    bool advance(Progress &progress);

    InfoList m_infos;
    std::vector<Progress> m_open; ///< fields that some records were not asked for
    QTimer m_timer; ///< runs while there are any
};

} // namespace runebook
