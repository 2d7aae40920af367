#include "editing/window/NameCommands.h"

#include "document/VXDocument.h"
#include "editing/fields/EditNames.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/ComponentLinks.h"
#include "editing/window/NameUsesSearch.h"
#include "editing/window/RenameOffer.h"
#include "editing/window/UsesDialog.h"
#include "editing/window/VisitedPlaces.h"
#include "editing/window/WindowSearch.h"

#include <QMessageBox>
#include <unordered_set>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// "3 records are composed with it: A, B and 1 other." Empty where nobody is.
QString usesText(const NameUses &uses, const InfoList &going)
{
    constexpr std::size_t kNamed = 4;
    std::unordered_set<const VXGlyphInfo *> gone;
    for (const InfoPtr &info : going)
        gone.insert(info.get());
    QStringList lines;
    for (const GlyphField field : kNamingFields) {
        QStringList names;
        std::size_t count = 0;
        for (const NameUse &use : uses.uses()) {
            if (use.field == field && !gone.contains(use.info.get()) && ++count <= kNamed)
                names << cellDisplayText(*use.info, GlyphField::Name).left(40);
        }
        if (count == 0)
            continue;
        const bool isOne = count == 1;
        const QString text = field == GlyphField::Decompose
            ? (isOne ? NameCommands::tr("One record is composed with it: %1")
                     : NameCommands::tr("%2 records are composed with it: %1"))
            : (isOne ? NameCommands::tr("One record has it among its %3: %1")
                     : NameCommands::tr("%2 records have it among their %3: %1"));
        if (count > kNamed)
            names.last() += u'…';
        lines << QString(text)
                     .replace(u"%3"_s, fieldTitle(field))
                     .replace(u"%2"_s, QLocale().toString(static_cast<qlonglong>(count)))
                     .replace(u"%1"_s, names.join(u", "_s));
    }
    return lines.join(u'\n');
}

} // namespace

NameCommands::NameCommands(const WindowParts &parts, WindowSearch &search, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_search(search),
      m_renaming(new RenameOffer(parts, this)),
      m_links(new ComponentLinks(parts, this)),
      m_places(new VisitedPlaces(parts, search, this))
{
    connect(m_renaming, &RenameOffer::showRequested, &m_search, &WindowSearch::showInfo);
    connect(m_links, &ComponentLinks::showRequested, &m_search, &WindowSearch::showInfo);
}

void NameCommands::showUses()
{
    const InfoList selected = m_parts.list.selectedObjects();
    if (selected.empty() || !m_parts.commitEditing())
        return;
    const auto maker = [this, selected] {
        return NameUses::of(m_parts.document.infos(), m_parts.document, selected);
    };
    auto *list = new UsesDialog(tr("Uses of %1").arg(recordsInName(selected)),
                                new NameUsesSearch(m_parts.document, maker, this), &m_parts.window);
    connect(list, &UsesDialog::showRequested, &m_search, &WindowSearch::showInfo);
    connect(list, &UsesDialog::selectRequested, this, [this](const InfoList &infos) {
        m_search.showInfo(infos.front()); // a filter that hides it goes
        m_parts.list.setSelectedObjectsKeepingCurrent(infos);
    });
    list->show();
}

void NameCommands::tellOfUses(QMessageBox &box, VXDocument &document, const InfoList &infos)
{
    constexpr auto kAtOnce = 40ms;
    auto *search = new NameUsesSearch(
        document, [&document, infos] { return NameUses::of(document.infos(), document, infos); }, &box);
    const auto tell = [search, &box, infos, before = box.informativeText()] {
        const QString text = usesText(search->uses(), infos);
        search->deleteLater();
        if (!text.isEmpty())
            box.setInformativeText(before + u"<br><br>"_s + text.toHtmlEscaped().replace(u'\n', u"<br>"_s));
    };
    if (search->runFor(kAtOnce))
        tell();
    else
        connect(search, &NameUsesSearch::finished, &box, tell);
}

} // namespace runebook
