#include "platform/Unattended.h"

namespace runebook {

namespace {

bool unattended = false;

} // namespace

bool isUnattended()
{
    return unattended;
}

void setUnattended(bool isUnattended)
{
    unattended = isUnattended;
}

} // namespace runebook
