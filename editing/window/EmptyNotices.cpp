#include "editing/window/EmptyNotices.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/search/SearchMenu.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/RecordCommands.h"
#include "editing/window/WindowFilters.h"
#include "editing/window/WindowProblems.h"
#include "editing/window/WindowSearch.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/Recovery.h"

#include <QLocale>

namespace runebook {

using namespace Qt::StringLiterals;

EmptyNotices::EmptyNotices(const WindowParts &parts, RecordCommands &commands, WindowSearch &search,
                           WindowFilters &filters, WindowProblems &problems, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_commands(commands),
      m_search(search),
      m_filters(filters),
      m_problems(problems),
      m_table(new EmptyTable(parts.table.viewport())),
      m_offers(parts.list)
{
    connect(&m_offers, &SearchOffers::ready, this, &EmptyNotices::update);
    update();
}

void EmptyNotices::update()
{
    if (!m_table)
        return; // the window is going
    const bool isSearch = !m_parts.searchField.stringValue().isEmpty();
    EmptyTable::Notice notice;
    if (m_parts.list.countOfArrangedObjects() == 0) {
        if (m_parts.document.countOfInfos() == 0)
            notice = forEmptyDocument();
        else if (isSearch)
            notice = forSearch();
        else if (m_filters.isOn())
            notice = forFilter();
        else
            notice = {
                tr("No glyph has such a problem"), {}, {{tr("Show &All"), [this] { m_problems.showAll(); }}}};
    }
    if (notice.title.isNull())
        m_offers.stop();
    m_table->showNotice(notice);
}

EmptyTable::Notice EmptyNotices::forEmptyDocument()
{
    const EmptyTable::Offer add {tr("&Add Glyph"), [this] { m_commands.add(); }};
    if (!m_parts.document.fileURL().isEmpty())
        return {tr("This file has no glyphs"), {}, {add}};
    return {tr("No glyphs yet"),
            tr("Open a glyph data file, look at the sample, or begin a file of your own."),
            {{tr("&Open…"), [this] { DocumentPanels::open(&m_parts.window); }},
             {tr("Open Sam&ple"), [this] { openSample(); }},
             add}};
}

EmptyTable::Notice EmptyNotices::forSearch()
{
    constexpr qsizetype kLongest = 40;
    const QString text = m_parts.searchField.stringValue();
    const SearchSettings settings = SearchSettings::current();
    if (m_offers.text() != text || m_offers.settings() != settings)
        m_offers.start(text, settings);
    QString shown = cellDisplayText(text);
    if (shown.size() > kLongest)
        shown = shown.left(kLongest) + u'…';
    EmptyTable::Notice notice;
    notice.title = tr("Nothing found for “%1” in %2").arg(shown, SearchMenu::placeOf(settings));
    const QString searched = SearchFilter::searchedText(text, settings.regex);
    if (searched != text)
        notice.hint =
            tr("A character that no name begins with is searched by its code point, %1.").arg(searched);
    if (settings.regex)
        addPatternHelp(notice, text);
    if (m_filters.isOn()) {
        notice.hint += (notice.hint.isEmpty() ? QString() : u"\n"_s)
            + tr("Only records that meet the conditions above the table are shown.");
        notice.offers << filterOffers();
    }
    if (!m_offers.offers().isEmpty())
        notice.hint += (notice.hint.isEmpty() ? QString() : u"\n"_s) + tr("Found elsewhere:");
    for (const SearchOffers::Offer &offer : m_offers.offers())
        notice.offers << EmptyTable::Offer {
            tr("%1: %2").arg(offer.title, QLocale().toString(static_cast<qlonglong>(offer.count))),
            [this, elsewhere = offer.settings] { searchElsewhere(elsewhere); }};
    notice.offers << EmptyTable::Offer {tr("&Clear Search"), [this] { m_parts.searchField.clearSearch(); }}
                  << EmptyTable::Offer {tr("&How to Search (F1)"),
                                        [this] { m_parts.searchField.showHelp(); }};
    return notice;
}

void EmptyNotices::addPatternHelp(EmptyTable::Notice &notice, const QString &text)
{
    notice.hint += (notice.hint.isEmpty() ? QString() : u"\n"_s)
        + tr("Regex looks at whole names only, with regard to case: .*alt.* finds “alt” anywhere in a name.");
    const QString anywhere = ".*"_L1 + text + ".*"_L1;
    if (!text.startsWith(".*"_L1) && !text.startsWith(u'^'))
        notice.offers << EmptyTable::Offer {tr("&Anywhere in the Name"), [this, anywhere] {
                                                m_parts.searchField.setStringValue(anywhere);
                                                m_search.filterInfos();
                                            }};
    notice.offers << EmptyTable::Offer {tr("&Pattern for Another Field…"),
                                        [this, text] { m_filters.addPattern(text); }};
}

QList<EmptyTable::Offer> EmptyNotices::filterOffers()
{
    return {{tr("&Switch Filter Off"), [this] { m_filters.setOn(false); }},
            {tr("C&lear Filter"), [this] { m_filters.clear(); }}};
}

EmptyTable::Notice EmptyNotices::forFilter()
{
    return {tr("No glyph meets the conditions"), {}, filterOffers()};
}

void EmptyNotices::searchElsewhere(const SearchSettings &settings)
{
    settings.store();
    m_parts.searchField.setFocus();
    m_search.filterInfos();
}

void EmptyNotices::openSample()
{
    // A copy without a file: the one that ships with the program is nobody's to save over.
    Error error;
    Document *sample =
        Recovery::openCopy(StandardFolders::resource(u"sample.xml"_s), u"public.xml"_s, tr("Sample"), &error);
    if (!sample) {
        DocumentPanels::present(error, &m_parts.window);
        return;
    }
    Document &empty = m_parts.document;
    sample->makeWindowControllers();
    if (empty.isPlaceholder())
        empty.close();
}

} // namespace runebook
