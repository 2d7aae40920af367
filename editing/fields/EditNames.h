#pragma once

#include "model/VXGlyphInfo.h"

#include <QCoreApplication>
#include <QLocale>
#include <QString>

namespace runebook {

/// The name of an edit for the Edit menu and the history: \a one for one record, \a many with the number in
/// the place of %1 for several.
inline QString editName(const QString &one, const QString &many, qsizetype count)
{
    return count == 1 ? one : many.arg(QLocale().toString(static_cast<qlonglong>(count)));
}

struct EditNames {
    Q_DECLARE_TR_FUNCTIONS(EditNames)
};

/// The records of an edit in its name: "A", "A and 11 Others".
inline QString recordsInName(const InfoList &infos)
{
    constexpr qsizetype kLongest = 24;
    if (infos.empty())
        return EditNames::tr("No Record");
    const VXGlyphInfo &first = *infos.front();
    QString name = first.stored(GlyphField::Name).beginning(first.sourceData(), kLongest + 1);
    if (name.isEmpty())
        name = EditNames::tr("(no name)");
    else if (name.size() > kLongest)
        name = name.left(kLongest) + QChar(0x2026);
    const auto others = static_cast<qlonglong>(infos.size()) - 1;
    if (others == 0)
        return name;
    QString text = others == 1
        ? EditNames::tr("%1 and 1 Other")
        : EditNames::tr("%1 and %2 Others").replace(QStringLiteral("%2"), QLocale().toString(others));
    return text.replace(QStringLiteral("%1"), name);
}

/// The name of an edit with its records in the place of %1: "Delete A and 11 Others".
inline QString editNameOf(QString text, const InfoList &infos)
{
    return text.replace(QStringLiteral("%1"), recordsInName(infos));
}

} // namespace runebook
