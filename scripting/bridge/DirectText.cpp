#include "scripting/bridge/DirectText.h"

#include "scripting/python/OperationScope.h"
#include "scripting/python/ScriptRun.h"

#include <map>

namespace runebook::bridge {

namespace {

// A map, not a hash: entries are kept by address. Never destroyed: the interpreter is not either.
std::map<std::pair<const QMetaObject *, QByteArray>, DirectText> &accesses()
{
    static auto &map = *new std::map<std::pair<const QMetaObject *, QByteArray>, DirectText>;
    return map;
}

} // namespace

void registerDirectText(const QMetaObject &meta, const QByteArray &property, const DirectText &access)
{
    accesses().insert_or_assign({&meta, property}, access);
}

const DirectText *directText(const QMetaObject &meta, const QByteArray &property)
{
    const auto known = accesses().find({&meta, property});
    return known != accesses().end() ? &known->second : nullptr;
}

PyObject *readDirectly(const DirectText &access, const void *address)
{
    const std::optional<std::string_view> text = access.read(address, access.key);
    return text ? pythonText(*text) : nullptr;
}

bool isDirectText(const DirectText *access, PyObject *value)
{
    return access && access->write && (isKind(value, python::kUnicodeSubclass) || isNone(value));
}

bool writeDirectly(const DirectText &access, void *address, PyObject *value)
{
    return guarded<bool>(false, [&] {
        constexpr qsizetype kMostKept = 4096;
        // The memory of one text serves the next. Taken away meanwhile: who hears of the change may set
        // texts.
        static QString spare;
        QString text = std::exchange(spare, {});
        if (!readText(value, text))
            return false;
        {
            const OperationScope scope;
            access.write(address, access.key, text);
        }
        if (text.capacity() <= kMostKept)
            spare = std::move(text);
        return !ScriptRun::raiseKeptEnd();
    });
}

} // namespace runebook::bridge
