#include "platform/ValueTransformer.h"

#include <map>

namespace runebook {

namespace {

std::map<QString, std::unique_ptr<ValueTransformer>> &registry()
{
    static std::map<QString, std::unique_ptr<ValueTransformer>> transformers;
    return transformers;
}

} // namespace

void ValueTransformer::setForName(const QString &name, std::unique_ptr<ValueTransformer> transformer)
{
    registry()[name] = std::move(transformer);
}

const ValueTransformer *ValueTransformer::forName(const QString &name)
{
    const auto found = registry().find(name);
    return found == registry().end() ? nullptr : found->second.get();
}

} // namespace runebook
