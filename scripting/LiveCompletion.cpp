#include "scripting/LiveCompletion.h"

#include "scripting/PythonFunctions.h"
#include "scripting/ScriptRun.h"
#include "scripting/bridge/PythonValue.h"

#include <QByteArray>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <optional>
#include <pthread.h>
#include <thread>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds kPatience {40};

// What a class or an object has is read out of dictionaries, through the slots of "type" itself: a class
// may have its own idea of __getattribute__, __dict__ or __mro__. The way down a dotted name ends where a
// descriptor would have to be asked; a slot is no more than a place in the object. Without imports, and
// without names that a script could have put in the way: those of builtins are taken once.
constexpr char kReader[] = R"(
def _reader(type, dict, str, len, sorted, set, builtins, main):
    classes = type.__dict__['__mro__'].__get__
    members = type.__dict__['__dict__'].__get__
    class _Slotted: __slots__ = 'x',
    class _Plain: pass
    slot = type(_Slotted.__dict__['x'])
    attributes = _Plain.__dict__['__dict__']
    own = type(attributes)
    module = type(builtins)
    missing = _Plain()

    def isKind(kind, wanted):
        for base in classes(kind):
            if base is wanted:
                return True
        return False

    def isClass(thing):
        return isKind(type(thing), type)

    def inClass(kind, name):
        for base in classes(kind):
            found = members(base)
            if name in found:
                return found[name]
        return missing

    def dictOf(thing):
        if type(thing) is module:
            return module.__dict__['__dict__'].__get__(thing)
        found = inClass(type(thing), '__dict__')
        if type(found) is not own:
            return {}
        try:
            held = found.__get__(thing)
        except Exception:
            return {}
        return held if isKind(type(held), dict) else {}

    def value(thing, name):
        if isClass(thing):
            found = inClass(thing, name)
        else:
            found = dict.get(dictOf(thing), name, missing)
            if found is not missing:
                return found
            found = inClass(type(thing), name)
        if type(found) is slot:
            try:
                return found.__get__(thing)
            except Exception:
                return missing
        return found if inClass(type(found), '__get__') is missing else missing

    def namesOf(thing):
        names = set()
        if isClass(thing):
            for base in classes(thing):
                names.update(members(base))
        else:
            names.update(dict.keys(dictOf(thing)))
            for base in classes(type(thing)):
                names.update(members(base))
        return names

    def read(path, start):
        parts = str.split(path, '.')[:-1]
        if parts:
            thing = dict.get(main, parts[0], missing)
            if thing is missing:
                thing = dict.get(builtins.__dict__, parts[0], missing)
            for part in parts[1:]:
                if thing is missing:
                    break
                thing = value(thing, part)
            names = () if thing is missing else namesOf(thing)
        else:
            names = set(dict.keys(main)) | set(dict.keys(builtins.__dict__))
        front = ''.join([part + '.' for part in parts])
        chosen = [name for name in names if type(name) is str and str.startswith(name, start)
                  and (start or not str.startswith(name, '_'))]
        return '\n'.join([front + name for name in sorted(chosen)[:1000] if str.isidentifier(name)])

    return read
)";

/// Makes the function above, in a namespace of its own.
PyObject *makeReader()
{
    using bridge::PythonRef;
    const PythonRef code(vxPy_CompileStringFlags(kReader, "<completion>", python::kFileInput, nullptr));
    const PythonRef space(vxPyDict_New());
    PyObject *builtins = vxPyImport_AddModule("builtins");
    if (!code || !space || !builtins)
        return nullptr;
    PyObject *named = vxPyModule_GetDict(builtins);
    py.PyDict_SetItemString(space.get(), "__builtins__", named);
    const PythonRef done(vxPyEval_EvalCode(code.get(), space.get(), space.get()));
    PyObject *make = done ? py.PyDict_GetItemString(space.get(), "_reader") : nullptr;
    if (!make)
        return nullptr;
    const auto builtin = [named](const char *name) { return py.PyDict_GetItemString(named, name); };
    return py.PyObject_CallFunctionObjArgs(make, builtin("type"), builtin("dict"), builtin("str"),
                                           builtin("len"), builtin("sorted"), builtin("set"), builtins,
                                           vxPyModule_GetDict(vxPyImport_AddModule("__main__")), nullptr);
}

/// The names, with the lock of the interpreter held.
QStringList readNames(const QString &partial)
{
    using bridge::PythonRef;
    static PyObject *const reader = makeReader();
    QString names;
    if (reader) {
        const PythonRef path(bridge::pythonText(partial));
        const PythonRef start(bridge::pythonText(partial.section(u'.', -1)));
        const PythonRef found(py.PyObject_CallFunctionObjArgs(reader, path.get(), start.get(), nullptr));
        if (found)
            bridge::readText(found.get(), names);
    }
    vxPyErr_Clear();
    return names.split(u'\n', Qt::SkipEmptyParts);
}

/// Asks on a thread of its own, since nobody can say beforehand how long the lock will be taken.
class Asker
{
public:
    QStringList ask(const QString &partial)
    {
        std::unique_lock lock(m_mutex);
        if (m_isBusy)
            return {}; // still waiting with an earlier question
        m_question = partial;
        m_answer.reset();
        m_isBusy = true;
        m_wake.notify_one();
        m_done.wait_for(lock, kPatience, [this] { return m_answer.has_value(); });
        return m_answer.value_or(QStringList());
    }

    void work()
    {
        // Signals are meant for the script.
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        for (;;) {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_isBusy; });
            const QString question = m_question;
            lock.unlock();
            QStringList names;
            {
                const PythonLock interpreter;
                names = readNames(question);
            }
            lock.lock();
            m_answer = names;
            m_isBusy = false;
            m_done.notify_one();
        }
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_done;
    QString m_question;
    std::optional<QStringList> m_answer;
    bool m_isBusy = false;
};

} // namespace

QStringList liveCompletions(const QString &partial)
{
    if (!vxPyGILState_Ensure || ScriptRun::isRunning())
        return {};
    // Neither is ever ended: the thread may stand in the interpreter when the process ends.
    static Asker &asker = *new Asker;
    [[maybe_unused]] static const bool isStarted = [] {
        std::thread([] { asker.work(); }).detach();
        return true;
    }();
    return asker.ask(partial);
}

} // namespace runebook
