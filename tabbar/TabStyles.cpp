#include "tabbar/TabStyles.h"

#include "tabbar/PSMBigSurStyle.h"
#include "tabbar/PSMYosemiteStyle.h"

std::unique_ptr<PSMTabStyle> runebook::tabStyleNamed(const QString &name)
{
    std::unique_ptr<PSMTabStyle> styles[] = {std::make_unique<PSMYosemiteStyle>(),
                                             std::make_unique<PSMBigSurStyle>()};
    for (std::unique_ptr<PSMTabStyle> &style : styles) {
        if (style->name() == name)
            return std::move(style);
    }
    return nullptr;
}
