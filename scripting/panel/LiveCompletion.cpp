#include "scripting/panel/LiveCompletion.h"

#include "codeeditor/CompletionRules.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonValue.h"
#include "scripting/python/ScriptRun.h"

#include <QCoreApplication>
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
def _reader(type, dict, str, len, sorted, set, list, tuple, property, builtins, main, modules):
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

    function = type(isKind)
    built = type(len)
    descriptors = (type(str.join), type(str.__add__), type(dict.__dict__['fromkeys']), type(''.__add__))
    code = function.__dict__['__code__'].__get__
    defaults = function.__dict__['__defaults__'].__get__
    onlyDefaults = function.__dict__['__kwdefaults__'].__get__
    help = function.__dict__['__doc__'].__get__
    flags = type.__dict__['__flags__'].__get__

    def program(name):
        held = dict.get(modules, 'MainApp', missing)
        return missing if held is missing else dict.get(dictOf(held), name, missing)

    def itemOf(thing):
        kind = thing if isClass(thing) else type(thing)
        if kind is program('VXDocument'):
            return program('VXGlyphInfo')
        for each in (list, tuple):
            if isKind(kind, each) and thing is not kind and each.__len__(thing):
                return each.__getitem__(thing, 0)
        if kind is dict and thing is not kind and dict.__len__(thing):
            for one in dict.values(thing):
                return one
        return missing

    def named(name):
        if str.startswith(name, '@'):
            return dict.get(modules, name[1:], missing)
        found = dict.get(main, name, missing)
        if found is missing:
            found = dict.get(builtins.__dict__, name, missing)
        if name == 'Doc' and (found is missing or found is None):
            found = program('VXDocument')
        return found

    def along(steps):
        thing = named(steps[0])
        for step in steps[1:]:
            if thing is missing:
                break
            thing = itemOf(thing) if step == '[]' else value(thing, step)
        return thing

    def raw(thing, name):
        if not isClass(thing):
            found = dict.get(dictOf(thing), name, missing)
            if found is not missing:
                return found
            return inClass(type(thing), name)
        return inClass(thing, name)

    def global_(name):
        found = dict.get(main, name, missing)
        return dict.get(builtins.__dict__, name, missing) if found is missing else found

    def kindOf(found):
        kind = type(found)
        if isKind(kind, type):
            return 'class'
        if kind is module:
            return 'module'
        if kind is function or kind is built or kind in descriptors:
            return 'function'
        if kind is property or inClass(kind, '__set__') is not missing:
            return 'property'
        return 'function' if inClass(kind, '__call__') is not missing else 'value'

    def textOf(found):
        return found if type(found) is str else ''

    def signatureOf(name, found):
        kind = type(found)
        if kind is function:
            about = code(found)
            given = defaults(found) or ()
            only = onlyDefaults(found) or {}
            count = about.co_argcount
            names = list(about.co_varnames)
            parts = [one + '=\u2026' if place >= count - len(given) else one
                     for place, one in enumerate_(names[:count])]
            rest = names[count:count + about.co_kwonlyargcount]
            after = count + about.co_kwonlyargcount
            if about.co_flags & 4:
                parts.append('*' + names[after])
                after += 1
            elif rest:
                parts.append('*')
            parts += [one + '=\u2026' if one in only else one for one in rest]
            if about.co_flags & 8:
                parts.append('**' + names[after])
            if parts and parts[0] in ('self', 'cls'):
                parts = parts[1:]
            return name + '(' + ', '.join(parts) + ')'
        if kind is built or kind in descriptors:
            text = textOf(members(kind)['__text_signature__'].__get__(found))
            for one in ('$self', '$module'):
                text = str.replace(str.replace(text, '(' + one + ', ', '('), '(' + one + ')', '()')
            return name + text if text else ''
        return ''

    def helpOf(found):
        kind = type(found)
        if kind is function:
            return textOf(help(found))
        if kind is built or kind in descriptors:
            return textOf(members(kind)['__doc__'].__get__(found))
        if kind is property:
            return textOf(property.__dict__['__doc__'].__get__(found))
        if kind is type and not flags(found) & (1 << 9):
            return textOf(type.__dict__['__doc__'].__get__(found))
        if isClass(found):
            return textOf(dict.get(members(found) if type(members(found)) is dict else dict(members(found)),
                                   '__doc__'))
        if kind is module:
            return textOf(dict.get(dictOf(found), '__doc__'))
        return ''

    def enumerate_(items):
        return [(place, items[place]) for place in range_(len(items))]

    range_ = builtins.range

    def about(path, name):
        holder = along(str.split(path, '/')) if path else missing
        if path and holder is missing:
            return ''
        found = raw(holder, name) if path else global_(name)
        if type(found) is slot or found is missing:
            return ''
        return signatureOf(name, found) + '\0' + helpOf(found)

    def read(path, start, asked):
        if asked:
            return about(path, asked)
        thing = missing
        if path:
            thing = along(str.split(path, '/'))
            if thing is missing:
                return ''
            names = namesOf(thing)
        else:
            names = set(dict.keys(main)) | set(dict.keys(builtins.__dict__))
        chosen = [name for name in names if type(name) is str and str.startswith(name, start)
                  and (start or not str.startswith(name, '_')) and str.isidentifier(name)]
        return '\n'.join(['!'] + [name + '\t' + kindOf(raw(thing, name) if path else global_(name))
                                  for name in sorted(chosen)[:1000]])

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
    PyObject *modules = py.PyDict_GetItemString(vxPyModule_GetDict(vxPyImport_AddModule("sys")), "modules");
    return py.PyObject_CallFunctionObjArgs(
        make, builtin("type"), builtin("dict"), builtin("str"), builtin("len"), builtin("sorted"),
        builtin("set"), builtin("list"), builtin("tuple"), builtin("property"), builtins,
        vxPyModule_GetDict(vxPyImport_AddModule("__main__")), modules, nullptr);
}

/// What the reader is asked: for names, or about one.
struct Question {
    QString path;
    QString start;
    QString asked;
};

/// The reader's answer, with the lock of the interpreter held.
QString readAnswer(const Question &question)
{
    using bridge::PythonRef;
    static PyObject *const reader = makeReader();
    QString answer;
    if (reader) {
        const PythonRef path(bridge::pythonText(question.path));
        const PythonRef start(bridge::pythonText(question.start));
        const PythonRef asked(bridge::pythonText(question.asked));
        const PythonRef found(
            py.PyObject_CallFunctionObjArgs(reader, path.get(), start.get(), asked.get(), nullptr));
        if (found)
            bridge::readText(found.get(), answer);
    }
    vxPyErr_Clear();
    return answer;
}

/// Asks on a thread of its own, since nobody can say beforehand how long the lock will be taken.
class Asker
{
public:
    QString ask(const Question &question)
    {
        std::unique_lock lock(m_mutex);
        if (m_isBusy)
            return {}; // still waiting with an earlier question
        m_question = question;
        m_answer.reset();
        m_isBusy = true;
        m_wake.notify_one();
        m_done.wait_for(lock, kPatience, [this] { return m_answer.has_value(); });
        return m_answer.value_or(QString());
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
            const Question question = m_question;
            lock.unlock();
            QString answer;
            {
                const PythonLock interpreter;
                answer = readAnswer(question);
            }
            lock.lock();
            m_answer = answer;
            m_isBusy = false;
            m_done.notify_one();
        }
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_done;
    Question m_question;
    std::optional<QString> m_answer;
    bool m_isBusy = false;
};

QString ask(const Question &question)
{
    if (!vxPyGILState_Ensure || ScriptRun::isRunning())
        return {};
    // Neither is ever ended: the thread may stand in the interpreter when the process ends.
    static Asker &asker = *new Asker;
    [[maybe_unused]] static const bool isStarted = [] {
        std::thread([] { asker.work(); }).detach();
        return true;
    }();
    return asker.ask(question);
}

/// The word for a person.
QString kindText(QStringView kind)
{
    for (const char *known :
         {QT_TRANSLATE_NOOP("Completion", "class"), QT_TRANSLATE_NOOP("Completion", "module"),
          QT_TRANSLATE_NOOP("Completion", "function"), QT_TRANSLATE_NOOP("Completion", "property")}) {
        if (kind == QLatin1StringView(known))
            return QCoreApplication::translate("Completion", known);
    }
    return {};
}

} // namespace

KnownNames liveNames(const QString &path, const QString &start)
{
    KnownNames known;
    const QStringList lines = ask({path, start, {}}).split(u'\n', Qt::SkipEmptyParts);
    known.isKnown = !path.isEmpty() && !lines.isEmpty();
    for (const QString &line : lines.mid(1))
        known.names.append({line.section(u'\t', 0, 0), kindText(line.section(u'\t', 1)), {}, {}});
    return known;
}

void describeLiveName(const QString &path, const QString &name, Completion &one)
{
    const QString answer = ask({path, {}, name});
    if (one.signature.isEmpty()) // what the text says is newer
        one.signature = answer.section(QChar(u'\0'), 0, 0);
    one.help = firstSentence(answer.section(QChar(u'\0'), 1));
}

QStringList liveCompletions(const QString &partial)
{
    const qsizetype dot = partial.lastIndexOf(u'.');
    const QString front = partial.first(dot + 1);
    const QString path = partial.first(std::max<qsizetype>(dot, 0)).replace(u'.', u'/');
    QStringList found;
    if (dot == 0)
        return found;
    for (const Completion &one : liveNames(path, partial.sliced(dot + 1)).names)
        found.append(front + one.text);
    return found;
}

} // namespace runebook
