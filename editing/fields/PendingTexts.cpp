#include "editing/fields/PendingTexts.h"

#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"

#include <QCoreApplication>
#include <unordered_set>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(PendingTexts)
};

/// The places of the records as pairs of first and last.
QJsonArray rangesOf(const VXDocument &document, const InfoList &infos)
{
    std::unordered_set<const VXGlyphInfo *> wanted;
    for (const InfoPtr &info : infos)
        wanted.insert(info.get());
    QJsonArray ranges;
    qsizetype first = -1;
    qsizetype place = 0;
    const auto close = [&] {
        if (first >= 0)
            ranges << QJsonArray {first, place - 1};
        first = -1;
    };
    for (const InfoPtr &info : document.infos()) {
        if (!wanted.contains(info.get()))
            close();
        else if (first < 0)
            first = place;
        ++place;
    }
    close();
    return ranges;
}

InfoList recordsOf(const VXDocument &document, const QJsonObject &pending)
{
    InfoList infos;
    for (const QJsonArray ranges = pending.value("records"_L1).toArray(); const QJsonValue &value : ranges) {
        const QJsonArray range = value.toArray();
        const qsizetype last = qMin(range.at(1).toInteger(-1), document.countOfInfos() - 1);
        for (qsizetype place = qMax<qint64>(range.at(0).toInteger(-1), 0); place <= last; ++place)
            infos.push_back(document.objectInInfosAtIndex(place));
    }
    // The list may be older than the text, and its places others.
    const QString name = pending.value("name"_L1).toString();
    if (!infos.empty() && infos.front()->name() == name)
        return infos;
    const InfoPtr named = document.infoForName(name);
    return named ? InfoList {named} : InfoList();
}

/// Puts the edits into the text that they were made in. False, and their texts alone, for another text.
bool putInto(const QString &original, const QJsonObject &pending, QString &text)
{
    bool fits = pending.value("of"_L1).toInteger() == original.size();
    qsizetype done = 0;
    QStringList whole;
    for (const QJsonArray edits = pending.value("edits"_L1).toArray(); const QJsonValue &value : edits) {
        const qsizetype begin = value["begin"_L1].toInteger();
        const qsizetype length = value["length"_L1].toInteger();
        fits = fits && begin >= done && length >= 0 && length <= original.size() - begin;
        if (fits)
            whole << original.mid(done, begin - done) << value["text"_L1].toString();
        text += value["text"_L1].toString();
        done = begin + length;
    }
    if (fits)
        text = whole.join(QString()) + original.mid(done);
    return fits;
}

} // namespace

QJsonObject pendingText(const VXDocument &document, const InfoList &infos, GlyphField field,
                        const QString &text)
{
    const QJsonArray ranges = rangesOf(document, infos);
    const auto first = static_cast<std::size_t>(ranges.at(0).toArray().at(0).toInteger());
    return {{u"field"_s, keyOfField(field)},
            {u"text"_s, text},
            {u"records"_s, ranges},
            {u"name"_s, ranges.isEmpty() ? QString() : document.infos()[first]->name()}};
}

QJsonObject pendingEdits(const VXDocument &document, const InfoList &infos, GlyphField field,
                         const LongText &text)
{
    QJsonArray edits;
    for (const TextEdit &edit : text.edits())
        edits << QJsonObject {{u"begin"_s, edit.begin}, {u"length"_s, edit.length}, {u"text"_s, edit.text}};
    QJsonObject pending = pendingText(document, infos, field, {});
    pending.remove(u"text"_s);
    pending.insert(u"edits"_s, edits);
    pending.insert(u"of"_s, text.originalSize());
    return pending;
}

QStringList takePendingTexts(VXDocument &document, const QJsonArray &texts)
{
    QStringList refused;
    for (const QJsonValue &value : texts) {
        const QJsonObject pending = value.toObject();
        const std::optional<GlyphField> field = fieldForKey(pending.value("field"_L1).toString());
        const InfoList infos = field ? recordsOf(document, pending) : InfoList();
        QString text = pending.value("text"_L1).toString();
        Error error;
        if (infos.empty())
            error.description = Texts::tr("The record is not there.");
        else if (pending.contains("edits"_L1) && !putInto(infos.front()->displayText(*field), pending, text))
            error.description = Texts::tr("The text that it was typed into is another one.");
        else if (setFieldFromText(document, infos, *field, text, &error))
            continue;
        refused << Texts::tr("“%1” was being typed into “%2” of “%3” and could not be put there. %4")
                       .arg(text, field ? fieldTitle(*field) : QString(), pending.value("name"_L1).toString(),
                            error.text());
    }
    return refused;
}

} // namespace runebook
