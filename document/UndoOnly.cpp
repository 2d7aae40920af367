#include "document/UndoOnly.h"

#include "model/VXGlyphInfo.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(UndoOnly)
};

QString stepName(UndoManager &history, int step)
{
    const QString name = history.stack()->text(step);
    return name.isEmpty() ? Texts::tr("Change") : name;
}

/// "changed the Category of A" of the touched; in the history of a document things are records.
QString deedText(const UndoTouch &touch)
{
    constexpr qsizetype kLongest = 60;
    const auto *info = static_cast<const VXGlyphInfo *>(touch.thing);
    const QString name = info->stored(GlyphField::Name).beginning(info->sourceData(), kLongest);
    const QString record = name.isEmpty() ? Texts::tr("a record without a name") : name;
    if (touch.part == UndoTouch::kWhole)
        return Texts::tr("put in, moved or removed %1", "“Delete A” later ... A").arg(record);
    return Texts::tr("changed the %2 of %1", "“Replace” later ... the Category of A")
        .arg(record, titleOfField(static_cast<GlyphField>(touch.part)));
}

QString reasonText(UndoManager &history, int step, const UndoManager::Obstacle &obstacle)
{
    const QString later = stepName(history, obstacle.step);
    switch (obstacle.reason) {
    case UndoManager::Obstacle::Unknown:
        return obstacle.step == step
            ? Texts::tr("not all that it changed is known.")
            : Texts::tr("“%1” came later, and not all that it changed is known.").arg(later);
    case UndoManager::Obstacle::SameThing:
        return Texts::tr("“%1” later %2.").arg(later, deedText(obstacle.touch));
    case UndoManager::Obstacle::SamePlaces:
        return Texts::tr("“%1” later changed the order of the list at the same places.").arg(later);
    case UndoManager::Obstacle::Gone:
        break;
    }
    return Texts::tr("records that it changed are no longer in the document.");
}

} // namespace

bool undoOnly(UndoManager &history, int step, Error *error)
{
    if (step < 0 || step >= history.stack()->index())
        return fail(
            error, {u"UndoError"_s, 1, Texts::tr("There is no such step that could be taken back."), {}, {}});
    const QString name = stepName(history, step);
    const auto obstacle = history.undoOnly(step, Texts::tr("Take Back “%1”").arg(name));
    if (!obstacle)
        return true;
    const bool isLater = obstacle->step != step;
    return fail(
        error,
        {u"UndoError"_s,
         2,
         Texts::tr("“%1” cannot be taken back alone: %2").arg(name, reasonText(history, step, *obstacle)),
         {},
         isLater ? Texts::tr("Take back the later step first, or go back in the history.")
                 : Texts::tr("Go back to it in the history.")});
}

} // namespace runebook
