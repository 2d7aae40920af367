#include "document/SavableForm.h"

#include "model/FileText.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using F = GlyphField;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(SavableForm)
};

QString quoted(const QString &text)
{
    constexpr qsizetype kLongest = 80;
    QString line = text.left(kLongest);
    line.replace(u'\n', u'↵').replace(u'\t', u' ');
    return u"“"_s + (text.size() > kLongest ? line + u'…' : line) + u'”';
}

QStringList fileTexts(const QStringList &texts)
{
    QStringList kept;
    for (const QString &text : texts) {
        const QStringList parts = text.split(kListSeparator);
        for (const QString &part : parts) {
            if (const QString one = fileText(part.trimmed()); !one.isEmpty())
                kept << one;
        }
    }
    return kept;
}

QString filledLegacy(const QString &text)
{
    constexpr qsizetype kShortest = 4; // that a file gets
    bool isNumber = false;
    text.toUInt(&isNumber, 16);
    return isNumber ? text.rightJustified(kShortest, u'0') : text;
}

QStringList fixedValue(const VXGlyphInfo &info, F field)
{
    switch (field) {
    case F::Unicodes: {
        QStringList codePoints = fileTexts(info.unicodes());
        codePoints.removeDuplicates();
        return codePoints;
    }
    case F::AltNames:
        return fileTexts(info.altNames());
    case F::UnicodeLegacy:
        return {filledLegacy(fileText(info.unicodeLegacy()))};
    case F::Name: {
        // A name without the blank in front may be another record's.
        const QString name = info.name();
        return {objectionToFileText(name) == FileTextObjection::LeadingBlank ? name : fileText(name)};
    }
    default: {
        const QString text = info.stringValue(field);
        const QString kept = fileText(text);
        return {text.startsWith(u' ') ? kept.trimmed() : kept};
    }
    }
}

} // namespace

std::vector<FieldFix> savableForm(const VXGlyphInfo &info, int fileVersion)
{
    std::vector<FieldFix> fixes;
    // A quote or a line break spoils what stands behind it on the line: those fields need no other form.
    const auto add = [&](F field) {
        const QStringList fixed = fixedValue(info, field);
        if (fixed != info.entriesOf(field))
            fixes.push_back({field, fixed});
    };
    for (const RoundTrip::Loss &loss : RoundTrip(fileVersion, RoundTrip::Of::Everything).losses(info)) {
        if (loss.field != F::Case && loss.field != F::Direction)
            add(loss.field);
    }
    return fixes;
}

QString sentenceOfLoss(const VXGlyphInfo &info, const RoundTrip::Loss &loss, const QString &fieldTitle)
{
    const QString text = info.displayText(loss.field);
    if (loss.field == F::Unicodes && info.unicodes().size() > 2)
        return Texts::tr("%1 has %2 code points, of which a file keeps two.")
            .arg(fieldTitle, QString::number(info.unicodes().size()));
    if (RoundTrip::takesOthers(info, loss.field) || objectionToFileText(text) > FileTextObjection::Comment)
        return sentenceOfObjection(text, fieldTitle);
    if (loss.field == F::Name && text.isEmpty())
        return Texts::tr("The record has no name; in a file it is called %1.").arg(quoted(loss.after));
    return loss.after.isEmpty() ? Texts::tr("%1 would be lost.").arg(fieldTitle)
                                : Texts::tr("%1 would become %2.").arg(fieldTitle, quoted(loss.after));
}

} // namespace runebook
