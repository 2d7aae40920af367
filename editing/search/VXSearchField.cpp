#include "editing/search/VXSearchField.h"

#include "editing/fields/ErrorBubble.h"
#include "editing/fields/SignalColors.h"
#include "editing/search/SearchChip.h"
#include "editing/search/SearchHelpSheet.h"
#include "editing/search/SearchMenu.h"

#include <QActionGroup>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QStatusTipEvent>
#include <QToolButton>
#include <chrono>

using namespace runebook;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto kPauseBeforeReason = 800ms;
constexpr qreal kRadius = 3;
constexpr int kLongestText = 10'000;
constexpr int kLongestTitle = 40;
constexpr double kTint = 0.18;

QColor mixed(const QColor &base, const QColor &tint)
{
    const auto part = [](int from, int to) { return qRound(from + (to - from) * kTint); };
    return {part(base.red(), tint.red()), part(base.green(), tint.green()), part(base.blue(), tint.blue())};
}

/// A text for a tool tip, which would take markup in it for its own.
QString escapedTip(const QString &text)
{
    return u"<p style='white-space:pre-wrap'>"_s + text.toHtmlEscaped() + u"</p>"_s;
}

/// A search text as the title of a menu item.
QString menuTitle(QString text)
{
    if (text.size() > kLongestTitle)
        text = text.left(kLongestTitle) + u'…';
    return u"   "_s + text.replace(u'\t', u' ').replace(u'&', u"&&"_s);
}

} // namespace

VXSearchField::VXSearchField(QWidget *parent) : QLineEdit(parent)
{
    // Not as long as it gets, as elsewhere: every keystroke lays out the whole text, 4 ms for a thousand
    // characters, and what a careless paste loses here is no data.
    setMaxLength(kLongestText);
    setAccessibleName(tr("Search"));
    for (const QString &icon : {u":/icons/search.svg"_s, u":/icons/chevron-down.svg"_s}) {
        QAction *options = addAction(QIcon(icon), QLineEdit::LeadingPosition);
        options->setText(tr("Search options"));
        options->setToolTip(tr("Choose where and how to search (Alt+Down)"));
        connect(options, &QAction::triggered, this, &VXSearchField::showSearchMenu);
    }

    m_clearAction = addAction(QIcon(u":/icons/clear.svg"_s), QLineEdit::TrailingPosition);
    m_clearAction->setText(tr("Clear search"));
    m_clearAction->setToolTip(tr("Clear the search (Esc)"));
    m_clearAction->setVisible(false);
    connect(m_clearAction, &QAction::triggered, this, &VXSearchField::clearSearch);
    m_problemAction = addAction(QIcon(u":/icons/problems.svg"_s), QLineEdit::TrailingPosition);
    m_problemAction->setText(tr("Why nothing is searched"));
    m_problemAction->setVisible(false);
    connect(m_problemAction, &QAction::triggered, this, &VXSearchField::showProblem);

    m_chip = new SearchChip(this);
    connect(m_chip, &SearchChip::clicked, this, &VXSearchField::searchEverywhere);
    m_helpAction = new QAction(tr("How to Search…"), this);
    m_helpAction->setShortcut(Qt::Key_F1);
    m_helpAction->setShortcutContext(Qt::WidgetShortcut); // elsewhere the key opens the documentation
    connect(m_helpAction, &QAction::triggered, this, &VXSearchField::showHelp);

    m_pause.setSingleShot(true);
    m_pause.setInterval(kPauseBeforeReason);
    connect(&m_pause, &QTimer::timeout, this, [this] {
        if (hasFocus())
            showProblem();
    });
    connect(this, &QLineEdit::textEdited, this, &VXSearchField::searchChanged);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString &text) { m_clearAction->setVisible(!text.isEmpty()); });
    // Another window may have chosen another mode.
    const auto follow = [this] { updatePrompt(); };
    Settings::kSearchState.onChange(this, follow);
    Settings::kSearchMatchesCase.onChange(this, follow);
    Settings::kSearchIsRegex.onChange(this, follow);
    updatePrompt();
    updateMark();
}

VXSearchField::~VXSearchField() = default;

// The text

void VXSearchField::setStringValue(const QString &text)
{
    setText(text);
}

void VXSearchField::clearSearch()
{
    if (text().isEmpty())
        return;
    rememberSearch();
    setStringValue({});
    Q_EMIT searchChanged();
}

void VXSearchField::rememberSearch()
{
    if (!m_problem)
        RecentSearches::add(text());
}

void VXSearchField::showHelp()
{
    auto *sheet = new SearchHelpSheet(this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &SearchHelpSheet::chosen, this, &VXSearchField::takeExample);
    sheet->open();
}

void VXSearchField::takeExample(const SearchExample &example)
{
    example.settings.store();
    setStringValue(example.text);
    setFocus();
    Q_EMIT settingsChanged();
    Q_EMIT searchChanged();
}

// The search menu

void VXSearchField::setUpSearchMenu()
{
    delete m_menu;
    m_menu = new QMenu(tr("Search options"), this);
    m_menu->setToolTipsVisible(true);
    auto *modes = new QActionGroup(m_menu);
    // None is ticked until one was chosen.
    modes->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (const SearchMenu::Item &item : SearchMenu::items()) {
        QAction *action = item.isSeparator() ? m_menu->addSeparator() : m_menu->addAction(item.title);
        action->setData(item.tag);
        action->setProperty("tag", item.tag); // as scripts ask for it
        action->setToolTip(item.help);
        action->setStatusTip(item.help);
        action->setWhatsThis(item.help);
        const bool isMode = !item.isSeparator() && item.tag <= SearchMenu::kLastModeTag;
        action->setCheckable(isMode || item.tag == SearchMenu::kMatchCaseTag
                             || item.tag == SearchMenu::kRegexTag);
        if (isMode)
            modes->addAction(action);
    }
    connect(m_menu, &QMenu::aboutToShow, this, &VXSearchField::updateMenu);
    connect(m_menu, &QMenu::aboutToShow, this, [this] {
        if (m_menu->actions().contains(m_helpAction))
            return;
        m_menu->addSeparator();
        m_menu->addAction(m_helpAction);
    });
    connect(m_menu, &QMenu::triggered, this, &VXSearchField::chooseMenuItem);
    // Tool tips only show under the mouse; the window's status line also follows the keys.
    connect(m_menu, &QMenu::hovered, this, [this](QAction *item) {
        QStatusTipEvent tip(item->statusTip());
        QCoreApplication::sendEvent(this, &tip);
    });
    connect(m_menu, &QMenu::aboutToHide, this, [this] {
        QStatusTipEvent tip({});
        QCoreApplication::sendEvent(this, &tip);
    });
    updateMenu();
}

void VXSearchField::updateMenu()
{
    const QStringList recents = RecentSearches::texts();
    QAction *clearRecents = nullptr;
    const QList<QAction *> items = m_menu->actions();
    for (QAction *item : items) {
        const int tag = item->data().toInt();
        if (item->property("representedObject").isValid()) {
            delete item;
            continue;
        }
        item->setEnabled(validateMenuItem(item));
        if (tag == SearchMenu::kRecentsTitleTag || tag == SearchMenu::kClearRecentsTag)
            item->setVisible(!recents.isEmpty());
        if (tag == SearchMenu::kRecentsTag)
            item->setVisible(false); // the recent searches stand in its place
        if (tag == SearchMenu::kClearRecentsTag)
            clearRecents = item;
    }
    for (const QString &text : recents) {
        auto *item = new QAction(menuTitle(text), m_menu);
        item->setData(SearchMenu::kRecentsTag);
        item->setProperty("representedObject", text);
        item->setToolTip(escapedTip(text));
        m_menu->insertAction(clearRecents, item);
    }
}

bool VXSearchField::validateMenuItem(QAction *item) const
{
    const int tag = item->data().toInt();
    const SearchMenu::ItemState state = SearchMenu::stateOfItem(tag, SearchSettings::current());
    item->setChecked(item->isCheckable() && state.isTicked);
    const bool isTitle = tag == SearchMenu::kRecentsTitleTag && !item->isSeparator();
    return state.isEnabled && !isTitle;
}

void VXSearchField::showSearchMenu()
{
    if (m_menu)
        m_menu->popup(mapToGlobal(QPoint(0, height())));
}

void VXSearchField::chooseMenuItem(QAction *item)
{
    const int tag = item->data().toInt();
    if (item == m_helpAction)
        return; // it acts by itself
    if (tag == SearchMenu::kClearRecentsTag) {
        RecentSearches::clear();
    } else if (tag == SearchMenu::kRecentsTag) {
        setStringValue(item->property("representedObject").toString());
        rememberSearch();
        setFocus();
        Q_EMIT searchChanged();
    } else {
        searchMode(tag);
    }
}

void VXSearchField::searchMode(int tag)
{
    if (!SearchMenu::choose(tag))
        return;
    Q_EMIT settingsChanged();
    Q_EMIT searchChanged();
}

void VXSearchField::updatePrompt()
{
    const QString prompt = SearchMenu::prompt(SearchSettings::current());
    setPlaceholderText(prompt);
    updateChip();
    if (m_problem)
        return;
    setToolTip(tr("%1. F1 shows examples; Alt+Down opens the menu.").arg(prompt));
    setAccessibleDescription(toolTip());
}

// The chip

void VXSearchField::searchEverywhere()
{
    const SearchSettings usual {static_cast<int>(SearchMode::All), false, false};
    if (SearchSettings::current() == usual)
        return;
    usual.store();
    setFocus();
    Q_EMIT settingsChanged();
    Q_EMIT searchChanged();
}

void VXSearchField::updateChip()
{
    const SearchSettings settings = SearchSettings::current();
    const bool isUsual =
        settings.effectiveMode() == SearchMode::All && !settings.matchCase && !settings.regex;
    m_chip->setPlace(isUsual ? QString() : SearchMenu::placeOf(settings));
    placeChip();
}

/// Behind the icons, in front of the text.
void VXSearchField::placeChip()
{
    int left = 0;
    for (const QToolButton *icon : findChildren<QToolButton *>()) {
        const bool isLeading = icon != m_chip && icon->isVisibleTo(this) && icon->x() < width() / 2;
        left = isLeading ? qMax(left, icon->geometry().right() + 1) : left;
    }
    const bool isShown = !m_chip->text().isEmpty();
    m_chip->setVisible(isShown);
    const QSize size = m_chip->sizeHint().boundedTo({width() / 2, height() - 6});
    m_chip->setGeometry(left + 2, (height() - size.height()) / 2, size.width(), size.height());
    const int margin = isShown ? size.width() + 4 : 0;
    if (textMargins().left() != margin)
        setTextMargins(margin, 0, 0, 0);
}

// Problems

void VXSearchField::setProblem(const std::optional<Error> &problem)
{
    m_problem = problem;
    m_problemAction->setVisible(problem.has_value());
    if (problem) {
        const QString reason = problem->text();
        setToolTip(escapedTip(reason));
        m_problemAction->setToolTip(escapedTip(reason));
        setAccessibleDescription(reason);
        m_pause.start();
    } else {
        m_pause.stop();
        updatePrompt();
    }
    updateMark();
}

void VXSearchField::showProblem()
{
    if (m_problem && isVisible())
        ErrorBubble::show(this, *m_problem);
}

void VXSearchField::updateMark()
{
    const QPalette theme = QApplication::palette(this);
    const QColor mark = m_problem ? mixed(theme.color(QPalette::Base), SignalColors::error(theme)) : QColor();
    // Setting a palette is announced, which leads here again.
    if (mark == m_mark)
        return;
    m_mark = mark;
    // Only the colour that differs, so that the others go on following the theme.
    QPalette colors;
    if (mark.isValid())
        colors.setColor(QPalette::Base, mark);
    setPalette(colors);
}

void VXSearchField::paintEvent(QPaintEvent *event)
{
    QLineEdit::paintEvent(event);
    if (!m_problem)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(SignalColors::error(QApplication::palette(this)), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), kRadius, kRadius);
}

// Events

bool VXSearchField::event(QEvent *event)
{
    // Escape is the field's own while there is something to clear, whatever it means to the window.
    if (event->type() == QEvent::ShortcutOverride && !text().isEmpty()
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
        event->accept();
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent *>(event)->key() == Qt::Key_F1)
        event->accept();
    return QLineEdit::event(event);
}

void VXSearchField::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    placeChip();
}

void VXSearchField::showEvent(QShowEvent *event)
{
    QLineEdit::showEvent(event);
    placeChip();
}

void VXSearchField::keyPressEvent(QKeyEvent *event)
{
    const bool isAlone = event->modifiers() == Qt::NoModifier || event->modifiers() == Qt::KeypadModifier;
    switch (event->key()) {
    case Qt::Key_F1:
        showHelp();
        return;
    case Qt::Key_Backspace:
        if (text().isEmpty() && isAlone) {
            searchEverywhere();
            return;
        }
        break;
    case Qt::Key_Escape:
        if (text().isEmpty())
            event->ignore();
        else
            clearSearch();
        return;
    case Qt::Key_Down:
        if (event->modifiers().testFlag(Qt::AltModifier)) {
            showSearchMenu();
            return;
        }
        if (isAlone) {
            rememberSearch();
            Q_EMIT goToTableRequested();
            return;
        }
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        rememberSearch();
        break;
    default:
        break;
    }
    QLineEdit::keyPressEvent(event);
}

void VXSearchField::focusOutEvent(QFocusEvent *event)
{
    // A popup gives the focus back.
    if (event->reason() != Qt::PopupFocusReason)
        rememberSearch();
    QLineEdit::focusOutEvent(event);
}

void VXSearchField::changeEvent(QEvent *event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::PaletteChange)
        updateMark();
}
