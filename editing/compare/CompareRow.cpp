#include "editing/compare/CompareRow.h"

#include "platform/PlainLabel.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QLabel>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CompareRow)
};

QList<ChoiceCells::Choice> choicesOf(GlyphField field)
{
    const auto tr = [](const char *text) { return Texts::tr(text); };
    if (field == GlyphField::Case) {
        return {{VXGlyphInfo::noCase, tr("No case")}, {VXGlyphInfo::upper, tr("Upper")},
                {VXGlyphInfo::lower, tr("Lower")},    {VXGlyphInfo::smallCaps, tr("Small caps")},
                {VXGlyphInfo::minor, tr("Minor")},    {VXGlyphInfo::other, tr("Other")}};
    }
    QList<ChoiceCells::Choice> choices {{VXGlyphInfo::DirectionNotSet, tr("Not set")}};
    for (int direction = VXGlyphInfo::BIDI; direction <= VXGlyphInfo::VTR; ++direction)
        choices.append({direction, VXGlyphInfo::stringFromDirection(direction)});
    return choices;
}

/// What a person hears when coming to a field.
QString spokenName(ComparedDocuments::Side side, const ComparedField &field, bool differs)
{
    const QString title = titleOf(field);
    const QString place = side == ComparedDocuments::Left ? Texts::tr("%1, left").arg(title)
                                                          : Texts::tr("%1, right").arg(title);
    return differs ? Texts::tr("%1, different").arg(place) : place;
}

} // namespace

bool isChoice(GlyphField field)
{
    return field == GlyphField::Case || field == GlyphField::Direction;
}

CompareHalf CompareHalf::make(ComparedDocuments::Side side, const ComparedField &field, QWidget *parent)
{
    const QString outlet = (side == ComparedDocuments::Left ? u"leftLable"_s : u"rightLable"_s)
        + QString::fromLatin1(field.name);
    CompareHalf half;
    half.label = plainLabel(titleOf(field), parent);
    if (isChoice(field.field)) {
        half.cells = new ChoiceCells(titleOf(field), choicesOf(field.field), parent);
        half.cells->setObjectName(outlet);
    } else {
        half.value = new CompareField(parent);
        half.value->setAccessibleName(spokenName(side, field, false));
        half.label->setObjectName(outlet);
        half.label->setBuddy(half.value);
    }
    return half;
}

void CompareRow::place(QGridLayout &grid, int line, bool isNarrow) const
{
    for (const ComparedDocuments::Side side : ComparedDocuments::kSides) {
        const CompareHalf &half = sides[side];
        const int column = side == ComparedDocuments::Left ? 0 : 3;
        half.label->setAlignment(isNarrow ? Qt::AlignLeft | Qt::AlignBottom : Qt::AlignRight | Qt::AlignTop);
        half.label->setContentsMargins(0, isNarrow ? 0 : 3, 0, 0);
        grid.removeWidget(half.label);
        grid.removeWidget(half.shown());
        grid.addWidget(half.label, line, isNarrow ? column + 1 : column);
        grid.addWidget(half.shown(), line + isNarrow, column + 1, Qt::AlignTop);
    }
    grid.removeWidget(arrowBox);
    grid.addWidget(arrowBox, line + isNarrow, 2, Qt::AlignTop | Qt::AlignHCenter);
}

void CompareRow::adjustHeight() const
{
    const int height = std::max(sides[0].value->wantedHeight(), sides[1].value->wantedHeight());
    for (const CompareHalf &half : sides)
        half.value->setFixedHeight(height);
}

int CompareRow::captionWidth() const
{
    return std::max(sides[0].label->sizeHint().width(), sides[1].label->sizeHint().width());
}

int CompareRow::leastValueWidth() const
{
    return std::max(sides[0].shown()->minimumSizeHint().width(), sides[1].shown()->minimumSizeHint().width());
}

void CompareRow::setCaptions(bool differ, const QColor &color) const
{
    for (const ComparedDocuments::Side side : ComparedDocuments::kSides) {
        const CompareHalf &half = sides[side];
        QPalette palette = half.label->palette();
        palette.setColor(QPalette::WindowText, color);
        half.label->setPalette(palette);
        if (half.cells)
            half.cells->setTitleColor(color);
        else
            half.value->setAccessibleName(spokenName(side, *field, differ));
    }
}

} // namespace runebook
