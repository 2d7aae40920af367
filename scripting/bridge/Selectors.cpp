#include "scripting/bridge/Selectors.h"

#include <algorithm>
#include <cctype>

namespace runebook::bridge {

namespace {

/// Long names with many arguments have very many ways to be put apart; nobody writes most of them.
constexpr qsizetype kMaxSplits = 800;

/// Where a further label may begin.
QList<qsizetype> boundaries(const QByteArray &name)
{
    QList<qsizetype> places;
    for (qsizetype i = 1; i < name.size(); ++i) {
        if (std::isupper(static_cast<unsigned char>(name[i])))
            places << i;
    }
    return places;
}

QByteArray splitAt(const QByteArray &name, const QList<qsizetype> &places)
{
    QByteArray selector;
    qsizetype start = 0;
    for (const qsizetype end : places + QList<qsizetype> {name.size()}) {
        QByteArray label = name.mid(start, end - start);
        if (start > 0)
            label[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(label[0])));
        selector += label + '_';
        start = end;
    }
    return selector;
}

/// Adds every choice of \a count places out of those from \a next on.
void choose(const QByteArray &name, const QList<qsizetype> &from, qsizetype next, int count,
            QList<qsizetype> &chosen, QList<QByteArray> &selectors)
{
    if (count == 0) {
        selectors << splitAt(name, chosen);
        return;
    }
    for (qsizetype i = next; i + count <= from.size() && selectors.size() < kMaxSplits; ++i) {
        chosen << from[i];
        choose(name, from, i + 1, count - 1, chosen, selectors);
        chosen.removeLast();
    }
}

QList<QByteArray> splits(const QByteArray &name, int arguments)
{
    QList<QByteArray> selectors;
    QList<qsizetype> chosen;
    choose(name, boundaries(name), 0, arguments - 1, chosen, selectors);
    return selectors;
}

bool beginsWithPreposition(const QByteArray &label)
{
    constexpr const char *kWords[] = {"In", "At", "With", "From", "To", "For", "Of", "By", "Format"};
    return std::any_of(std::begin(kWords), std::end(kWords), [&label](const char *word) {
        const QByteArray text(word);
        return label.startsWith(text)
            && (label.size() == text.size() || std::isupper(static_cast<unsigned char>(label[text.size()])));
    });
}

} // namespace

QList<Selector> selectorsOf(const QByteArray &name, int arguments, bool canFail)
{
    QList<Selector> selectors {{name, false, false}};
    if (arguments == 0) {
        // A name of the language gets its underscore in C++ already ("delete_").
        const QByteArray withSender = name.endsWith('_') ? name : name + '_';
        if (withSender == name)
            selectors.clear();
        selectors << Selector {withSender, false, true};
        if (canFail)
            selectors << Selector {name + "Error_", true, false};
        return selectors;
    }
    for (const QByteArray &selector : splits(name, arguments)) {
        selectors << Selector {selector, false, false};
        if (canFail)
            selectors << Selector {selector + "error_", true, false};
    }
    return selectors;
}

/// How well labels go with the names of their arguments: "infoForKey_values_" with "key" and "values".
static int fitOf(const QByteArray &selector, const QList<QByteArray> &parameters)
{
    const QList<QByteArray> labels = selector.split('_');
    int fit = 0;
    for (qsizetype i = 0; i < parameters.size() && i < labels.size(); ++i) {
        if (!parameters[i].isEmpty() && labels[i].toLower().endsWith(parameters[i].toLower()))
            fit += 2;
        QByteArray capital = labels[i];
        if (!capital.isEmpty())
            capital[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(capital[0])));
        if (i > 0 && beginsWithPreposition(capital))
            ++fit;
    }
    return fit;
}

static QByteArray usualByWords(const QByteArray &name, int arguments)
{
    if (arguments == 0)
        return name;
    QList<qsizetype> likely;
    for (const qsizetype place : boundaries(name)) {
        if (beginsWithPreposition(name.mid(place)))
            likely << place;
    }
    if (likely.size() < arguments - 1)
        likely = boundaries(name);
    if (likely.size() < arguments - 1)
        return name;
    return splitAt(name, likely.mid(0, arguments - 1));
}

QByteArray usualSelector(const QByteArray &name, int arguments, const QList<QByteArray> &parameters)
{
    QByteArray best = usualByWords(name, arguments);
    if (arguments < 2 || parameters.isEmpty())
        return best;
    int bestFit = fitOf(best, parameters);
    for (const QByteArray &selector : splits(name, arguments)) {
        if (const int fit = fitOf(selector, parameters); fit > bestFit) {
            best = selector;
            bestFit = fit;
        }
    }
    return best;
}

} // namespace runebook::bridge
