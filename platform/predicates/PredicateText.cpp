#include "platform/predicates/PredicateText.h"

namespace runebook {

using namespace Qt::StringLiterals;

QString PredicateText::errorDomain()
{
    return u"Predicate"_s;
}

} // namespace runebook
