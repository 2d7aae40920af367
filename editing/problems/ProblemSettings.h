#pragma once

#include "editing/problems/ProblemKinds.h"
#include "platform/defaults/Setting.h"

#include <QStringList>

namespace runebook {

namespace Settings {

/// Ids of the kinds of problems that are not looked for.
inline const Setting<QStringList> kLeftOutProblems("LeftOutProblemKinds");

} // namespace Settings

inline ProblemKindSet leftOutProblems()
{
    ProblemKindSet kinds = 0;
    for (const QString &id : Settings::kLeftOutProblems.value()) {
        if (const auto kind = problemKindOfId(id))
            kinds |= setOf(*kind);
    }
    return kinds & kOptionalKinds;
}

inline void setLeftOutProblems(ProblemKindSet kinds)
{
    QStringList ids;
    for (const ProblemKind kind : allProblemKinds()) {
        if (kinds & kOptionalKinds & setOf(kind))
            ids += idOfProblemKind(kind);
    }
    Settings::kLeftOutProblems.setOrReset(ids);
}

} // namespace runebook
