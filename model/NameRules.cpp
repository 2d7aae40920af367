// Which names a record may have, and how the production name follows from the first code point.
#include "model/GlyphInfoOwner.h"
#include "model/VXGlyphInfo.h"

#include <QCoreApplication>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("VXGlyphInfo", text);
}

bool isSpace(QChar character)
{
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

bool isNameCharacter(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'.'
        || c == u'-' || c == u'_';
}

/// What is wrong with \a name by itself; null when nothing is.
QString objectionToName(const QString &name)
{
    if (name.isEmpty())
        return tr("The glyph name should not be empty.");
    if (std::any_of(name.begin(), name.end(), isSpace))
        return tr("The glyph name should not contain any space character.");
    if (!std::all_of(name.begin(), name.end(), isNameCharacter))
        return tr(
            "The name contains illegal characters.\nOnly a-z, A-Z, 0-9, underscore, hyphen, and period are "
            "allowed.");
    if (name.front() >= u'0' && name.front() <= u'9')
        return tr("The name shouldn’t start with a number (0-9).");
    return {};
}

} // namespace

bool VXGlyphInfo::validateName(const QString &name, Error *error) const
{
    QString objection = objectionToName(name);
    if (objection.isNull() && m_document) {
        const InfoPtr first = m_document->infoForName(name);
        if (first && first.get() != this)
            objection = tr("There is already an info with the same name: %1").arg(name);
    }
    if (objection.isNull())
        return true;
    return fail(error, {u"TesselErrorDomain"_s, 125, objection, {}, {}});
}

void VXGlyphInfo::generateUniName()
{
    const QString ownName = name();
    if (ownName == "CR"_L1 || ownName == "DEL"_L1)
        return;
    const QString codePoint = unicode();
    if (codePoint.isNull())
        return;
    const QString listed = aglfn().value(codePoint);
    if (!listed.isEmpty() && !listed.startsWith("afii"_L1) && !listed.startsWith("SF"_L1)
        && !isIgnoredGlyphListName(listed)) {
        if (listed != ownName)
            setProduction(listed);
        return;
    }
    if (codePoint.size() == 4)
        setProduction("uni"_L1 + codePoint);
    else if (codePoint.size() == 5)
        setProduction(u'u' + codePoint);
}
