#include "platform/documents/OpenDocuments.h"

namespace runebook {

namespace {

OpenDocuments *keeper = nullptr;

} // namespace

OpenDocuments::OpenDocuments()
{
    keeper = this;
}

OpenDocuments::~OpenDocuments()
{
    keeper = nullptr;
}

OpenDocuments *OpenDocuments::current()
{
    return keeper;
}

} // namespace runebook
