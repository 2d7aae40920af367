#include "model/FileText.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView kCommentStart {"<!--"};
constexpr QLatin1StringView kCommentEnd {"-->"};

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(FileText)
};

/// Whether the unit at \a place is half of a character that stands alone.
bool isHalf(QStringView text, qsizetype place)
{
    const QChar unit = text.at(place);
    if (unit.isHighSurrogate())
        return place + 1 == text.size() || !text.at(place + 1).isLowSurrogate();
    return unit.isLowSurrogate() && (place == 0 || !text.at(place - 1).isHighSurrogate());
}

bool hasHalf(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i).isSurrogate() && isHalf(text, i))
            return true;
    }
    return false;
}

QString withoutHalves(const QString &text)
{
    QString whole;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate() || !isHalf(text, i))
            whole += text.at(i);
    }
    return whole;
}

} // namespace

FileTextObjection objectionToFileText(QStringView text)
{
    if (text.contains(kCommentStart) || text.contains(kCommentEnd))
        return FileTextObjection::Comment;
    if (text.contains(u'"') || text.contains(u'\n'))
        return FileTextObjection::QuoteOrBreak;
    if (hasHalf(text))
        return FileTextObjection::HalfCharacter;
    return text.startsWith(u' ') ? FileTextObjection::LeadingBlank : FileTextObjection::None;
}

QString sentenceOfObjection(QStringView text, const QString &fieldTitle)
{
    switch (objectionToFileText(text)) {
    case FileTextObjection::None:
        break;
    case FileTextObjection::Comment:
        return (text.contains(kCommentStart)
                    ? Texts::tr(
                        "%1 holds “<!--”, which begins a comment in a file and would hide other records.")
                    : Texts::tr(
                        "%1 holds “-->”, which ends a comment in a file and would hide other records."))
            .arg(fieldTitle);
    case FileTextObjection::QuoteOrBreak:
        return (text.contains(u'"') ? Texts::tr("%1 holds a double quote, which ends a value in a file.")
                                    : Texts::tr("%1 holds a line break, which ends a record in a file."))
            .arg(fieldTitle);
    case FileTextObjection::HalfCharacter:
        return Texts::tr("%1 holds half of a character, which no file can hold.").arg(fieldTitle);
    case FileTextObjection::LeadingBlank:
        return Texts::tr("%1 begins with a blank, which a file does not keep.").arg(fieldTitle);
    }
    return {};
}

QString offerFor(QStringView text)
{
    switch (objectionToFileText(text)) {
    case FileTextObjection::None:
        return {};
    case FileTextObjection::Comment:
        return text.contains(kCommentStart) ? Texts::tr("Write <! -- instead")
                                            : Texts::tr("Write -- > instead");
    case FileTextObjection::QuoteOrBreak:
        return text.contains(u'"') ? Texts::tr("Leave the quotes out") : Texts::tr("Write a blank instead");
    case FileTextObjection::HalfCharacter:
    case FileTextObjection::LeadingBlank:
        return Texts::tr("Leave it out");
    }
    return {};
}

QString fileText(const QString &text)
{
    if (objectionToFileText(text) == FileTextObjection::None)
        return text;
    QString kept = hasHalf(text) ? withoutHalves(text) : text;
    // First, since what stands around a quote may be a mark without it.
    kept.remove(u'"');
    kept.replace("\r\n"_L1, " "_L1);
    kept.replace(u'\n', u' ');
    kept.replace(kCommentStart, "<! --"_L1);
    kept.replace(kCommentEnd, "-- >"_L1);
    qsizetype blanks = 0;
    while (blanks < kept.size() && kept.at(blanks) == u' ')
        ++blanks;
    return kept.sliced(blanks);
}

} // namespace runebook
