#include "platform/MainMenu.h"

#include <utility>
#include <vector>

namespace runebook {

namespace {

std::vector<std::pair<MainMenu::Place, MainMenu::Contribution>> &contributions()
{
    static std::vector<std::pair<MainMenu::Place, MainMenu::Contribution>> list;
    return list;
}

} // namespace

void MainMenu::addContribution(Place place, Contribution contribution)
{
    contributions().emplace_back(place, std::move(contribution));
}

void MainMenu::contributeTo(Place place, QMenu &menu, QWidget &window)
{
    for (const auto &[where, contribution] : contributions()) {
        if (where == place)
            contribution(menu, window);
    }
}

} // namespace runebook
