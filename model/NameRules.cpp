#include "model/NameRules.h"

#include "model/FieldValue.h"
#include "model/GlyphList.h"

#include <QCoreApplication>
#include <algorithm>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(NameRules)
};

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

bool isPlainNameCharacter(char c)
{
    return static_cast<signed char>(c) > 0 && isNameCharacter(QLatin1Char(c));
}

} // namespace

NameObjection runebook::objectionToName(QStringView name)
{
    if (name.isEmpty())
        return NameObjection::Empty;
    if (std::any_of(name.begin(), name.end(), isSpace))
        return NameObjection::Space;
    if (!std::all_of(name.begin(), name.end(), isNameCharacter))
        return NameObjection::Character;
    return name.front() >= u'0' && name.front() <= u'9' ? NameObjection::Digit : NameObjection::None;
}

NameObjection runebook::objectionToName(std::string_view utf8)
{
    const bool isPlain = !utf8.empty() && !(utf8.front() >= '0' && utf8.front() <= '9')
        && std::all_of(utf8.begin(), utf8.end(), isPlainNameCharacter);
    return isPlain ? NameObjection::None : objectionToName(QStringView(FieldValue::textOfUtf8(utf8)));
}

QString runebook::textOfObjection(NameObjection objection)
{
    switch (objection) {
    case NameObjection::None:
        break;
    case NameObjection::Empty:
        return Texts::tr("The glyph name should not be empty.");
    case NameObjection::Space:
        return Texts::tr("The glyph name should not contain any space character.");
    case NameObjection::Character:
        return Texts::tr(
            "The name contains illegal characters.\nOnly a-z, A-Z, 0-9, underscore, hyphen, and period are "
            "allowed.");
    case NameObjection::Digit:
        return Texts::tr("The name shouldn’t start with a number (0-9).");
    }
    return {};
}

QString runebook::textOfTakenName(const QString &name)
{
    return Texts::tr("There is already an info with the same name: %1").arg(name);
}

QString runebook::productionNameFor(const QString &name, const QString &codePoint)
{
    if (name == "CR"_L1 || name == "DEL"_L1 || codePoint.isNull())
        return {};
    const QString listed = GlyphList::names().value(codePoint);
    if (!listed.isEmpty() && !listed.startsWith("afii"_L1) && !listed.startsWith("SF"_L1)
        && !GlyphList::isIgnored(listed))
        return listed != name ? listed : QString();
    if (codePoint.size() == 4)
        return "uni"_L1 + codePoint;
    return codePoint.size() == 5 ? u'u' + codePoint : QString();
}
