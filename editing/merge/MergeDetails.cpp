#include "editing/merge/MergeDetails.h"

#include "platform/PlainLabel.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QStyle>
#include <QToolButton>

namespace runebook {

MergeDetails::MergeDetails(MergeResolution &resolution, MergeMenus &menus, const MergeTitles &titles,
                           QWidget *parent)
    : QWidget(parent),
      m_resolution(resolution),
      m_menus(menus),
      m_name(plainLabel({}, this)),
      m_explanation(plainLabel({}, this)),
      m_takeRename(makeButton(MergeMenus::TakeRename)),
      m_takeOurs(makeButton(MergeMenus::TakeOurs)),
      m_takeTheirs(makeButton(MergeMenus::TakeTheirs)),
      m_sheet(new MergeSheet),
      m_area(new QScrollArea(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 0, 0, 0);
    QFont font = m_name->font();
    font.setBold(true);
    m_name->setFont(font);
    m_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_explanation->setWordWrap(true);
    auto *upper = new QHBoxLayout;
    upper->addWidget(m_name, 1);
    for (QToolButton *button : {m_takeRename, m_takeOurs, m_takeTheirs})
        upper->addWidget(button);
    layout->addLayout(upper);
    layout->addWidget(m_explanation);
    layout->addWidget(new MergeHeadings(titles, this));
    m_sheet->setTaker([this](GlyphField field, const QString &text, Error *error) {
        return m_shown >= 0 && m_resolution.takeText(std::size_t(m_shown), field, text, error);
    });
    connect(m_sheet, &MergeSheet::takeRequested, this, [this](GlyphField field, MergeSide side) {
        if (m_shown >= 0)
            m_resolution.takeField(std::size_t(m_shown), field, side);
        Q_EMIT taken();
    });
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_area->setWidget(m_sheet);
    layout->addWidget(m_area, 1);
}

QToolButton *MergeDetails::makeButton(MergeMenus::Command command)
{
    auto *button = new QToolButton(this);
    button->setDefaultAction(m_menus.action(command));
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

void MergeDetails::showRecord(qsizetype number)
{
    const bool isSame = number == m_shown;
    if (!isSame)
        m_sheet->commit();
    m_shown = number;
    if (number < 0) {
        showNothing();
    } else {
        const auto at = std::size_t(number);
        m_name->setText(m_resolution.keyOf(at));
        m_explanation->setText(mergeExplanation(m_resolution, at));
        MergeSheet::Content content {
            m_resolution.sidesOf(at), m_resolution.resultOf(at), mergeRows(m_resolution, at), {}};
        if (m_resolution.isOfLines(at))
            content.lines = m_resolution.linesOf(at);
        m_sheet->setContent(content, isSame);
        makeRoom();
    }
    showTaking();
}

void MergeDetails::showNothing()
{
    m_name->clear();
    m_explanation->setText(
        m_resolution.isInForce()
            ? tr("There are none.")
            : tr("“Resolve Conflicts” was undone: the document holds all sides of the conflicts again. With Redo "
                 "they come back here."));
    m_sheet->setContent({}, false);
}

/// What it means to take a side of the record.
void MergeDetails::showTaking()
{
    const auto at = std::size_t(std::max(m_shown, qsizetype(0)));
    const ConflictKind kind = m_shown >= 0 ? m_resolution.record(at).conflict : ConflictKind::None;
    const bool isConflict = kind != ConflictKind::None;
    const bool byUs = kind == ConflictKind::RemovedByUs;
    const bool removes = byUs || kind == ConflictKind::RemovedByThem;
    const bool mayBeRenamed = m_shown >= 0 && m_resolution.renameOf(at) && !m_resolution.isRenamed(at);
    m_takeOurs->defaultAction()->setText(!removes   ? tr("Take &Ours")
                                             : byUs ? tr("Rem&ove, as Ours")
                                                    : tr("Keep, as &Ours"));
    m_takeTheirs->defaultAction()->setText(!removes   ? tr("Take &Theirs")
                                               : byUs ? tr("Keep, as &Theirs")
                                                      : tr("Remove, as &Theirs"));
    m_takeRename->setVisible(mayBeRenamed);
    m_takeOurs->setVisible(isConflict);
    m_takeTheirs->setVisible(isConflict);
    for (QToolButton *button : {m_takeRename, m_takeOurs, m_takeTheirs})
        button->setAccessibleName(button->defaultAction()->text().remove(QChar(u'&')));
    m_menus.enable({MergeMenus::TakeOurs, MergeMenus::TakeTheirs}, isConflict);
    m_menus.enable({MergeMenus::TakeRename}, mayBeRenamed);
    m_menus.enable({MergeMenus::TakeFieldOurs, MergeMenus::TakeFieldTheirs},
                   isConflict && m_sheet->currentField().has_value());
}

/// In a narrow window the list gives way, so that the three columns are seen.
void MergeDetails::makeRoom()
{
    constexpr int kMost = 440;
    const int wanted = m_sheet->minimumSizeHint().width()
        + style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, m_area);
    m_area->setMinimumWidth(std::min(wanted, kMost));
}

} // namespace runebook
