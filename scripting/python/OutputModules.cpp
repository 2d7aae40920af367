#include "scripting/python/OutputModules.h"

#include "platform/Background.h"
#include "scripting/python/ForkedProcess.h"
#include "scripting/python/MainThread.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/ScriptConsole.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace runebook {

namespace {

enum class Stream { Output, OutputContinued, Error };

ScriptConsole *ownOutput = nullptr;
ScriptConsole *panel = nullptr;

void writeTo(ScriptConsole &target, Stream stream, const QString &text)
{
    if (stream == Stream::Output)
        target.setWrite(text);
    else if (stream == Stream::OutputContinued)
        target.continueWrite(text);
    else
        target.setWriteError(text);
}

/// Texts of other threads on their way to the main thread, in the order in which they were written.
class PendingOutput
{
public:
    void add(Stream stream, const QString &text)
    {
        const std::lock_guard guard(m_mutex);
        // One text for as long as the same stream goes on: a thread that prints a million lines costs the
        // main thread one insertion, not a million.
        if (!m_texts.empty() && m_texts.back().first == stream)
            m_texts.back().second += text;
        else
            m_texts.emplace_back(stream, text);
        if (!QCoreApplication::instance() || std::exchange(m_isAnnounced, true))
            return;
        runOnMainThread([] { deliverPendingOutput(); });
    }

    std::vector<std::pair<Stream, QString>> take()
    {
        const std::lock_guard guard(m_mutex);
        m_isAnnounced = false;
        return std::exchange(m_texts, {});
    }

private:
    std::mutex m_mutex;
    std::vector<std::pair<Stream, QString>> m_texts;
    bool m_isAnnounced = false;
};

PendingOutput &pendingOutput()
{
    static PendingOutput pending;
    return pending;
}

/// QString::fromUtf8 drops a byte order mark at the beginning; here it is a character like any other.
QString textFromUtf8(QByteArrayView bytes)
{
    const QString text = QString::fromUtf8(bytes);
    return bytes.startsWith("\xEF\xBB\xBF") ? QChar(QChar::ByteOrderMark) + text : text;
}

void deliver(Stream stream, const QString &text)
{
    ScriptConsole *target = scriptConsole();
    if (!target)
        return;
    if (!target->takesAnyThread() && isForkedProcess())
        std::fputs(text.toUtf8().constData(), stream == Stream::Error ? stderr : stdout);
    else if (target->takesAnyThread() || isOnMainThread())
        writeTo(*target, stream, text);
    else // where pieces that follow each other become one text by themselves
        pendingOutput().add(stream == Stream::OutputContinued ? Stream::Output : stream, text);
}

/// The text of a str that has no plain UTF-8 form: a zero character or half a surrogate pair in it. False,
/// with the interpreter's own error left as it is, when the arguments are no such text.
bool readUnusualText(PyObject *arguments, QString &text)
{
    if (py.PyTuple_Size(arguments) != 1)
        return false;
    PyObject *given = py.PyTuple_GetItem(arguments, 0);
    if (!(py.PyType_GetFlags(given->ob_type) & python::kUnicodeSubclass))
        return false;
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    vxPyErr_Fetch(&type, &value, &traceback);
    PyObject *bytes = py.PyUnicode_AsEncodedString(given, "utf-16-le", "surrogatepass");
    if (!bytes) {
        py.PyErr_Restore(type, value, traceback);
        return false;
    }
    text = QString(reinterpret_cast<const QChar *>(vxPyBytes_AsString(bytes)), py.PyBytes_Size(bytes) / 2);
    for (PyObject *object : {bytes, type, value, traceback}) {
        if (object)
            vxPy_DecRef(object);
    }
    return true;
}

/// Where the piece of \a bytes ends that is handed over first: behind a line if it can, never inside of a
/// character.
qsizetype pieceOf(QByteArrayView bytes)
{
    constexpr qsizetype kLargestPiece = 1 << 20;
    if (bytes.size() <= kLargestPiece)
        return bytes.size();
    const qsizetype lineEnd = bytes.first(kLargestPiece).lastIndexOf('\n');
    if (lineEnd >= 0)
        return lineEnd + 1;
    qsizetype end = kLargestPiece;
    while ((static_cast<unsigned char>(bytes[end]) & 0xC0) == 0x80)
        --end;
    return end;
}

/// Hands output of many megabytes over piece by piece: windows are painted in between, and Stop works. False
/// with an error set when the script was interrupted.
bool deliverInPieces(QByteArrayView bytes)
{
    Stream stream = Stream::Output;
    while (!bytes.isEmpty()) {
        const qsizetype length = pieceOf(bytes);
        deliver(std::exchange(stream, Stream::OutputContinued), textFromUtf8(bytes.first(length)));
        bytes = bytes.sliced(length);
        if (!bytes.isEmpty() && py.PyErr_CheckSignals() != 0)
            return false;
    }
    return true;
}

/// The text of a write without a copy, where it has a form in UTF-8 at hand; null for anything else.
const char *utf8Of(PyObject *arguments, Py_ssize_t &length)
{
    PyObject *given = py.PyTuple_Size(arguments) == 1 ? py.PyTuple_GetItem(arguments, 0) : nullptr;
    if (!given || !(py.PyType_GetFlags(given->ob_type) & python::kUnicodeSubclass))
        return nullptr;
    const char *utf8 = py.PyUnicode_AsUTF8AndSize(given, &length);
    if (!utf8)
        vxPyErr_Clear();
    return utf8;
}

PyObject *capture(Stream stream, PyObject *arguments)
{
    Py_ssize_t length = 0;
    char *utf8 = nullptr;
    QString text;
    if (const char *whole = utf8Of(arguments, length); whole && stream == Stream::Output) {
        if (!deliverInPieces({whole, length}))
            return nullptr;
        return vxPy_BuildValue("s", "");
    }
    if (vxPyArg_ParseTuple(arguments, "es", "utf-8", &utf8)) {
        text = textFromUtf8(utf8);
        vxPyMem_Free(utf8);
    } else if (!readUnusualText(arguments, text)) {
        return nullptr;
    }
    deliver(stream, text);
    return vxPy_BuildValue("s", "");
}

PyObject *log_CaptureStdout(PyObject *, PyObject *arguments)
{
    return capture(Stream::Output, arguments);
}

PyObject *log_CaptureStderr(PyObject *, PyObject *arguments)
{
    return capture(Stream::Error, arguments);
}

PyObject *TesselLog_flush(PyObject *, PyObject *)
{
    return vxPy_BuildValue("s", "");
}

PyMethodDef outputFunctions[] = {
    {"write", log_CaptureStdout, python::kVarArgs, "doc for write"},
    {"flush", TesselLog_flush, python::kVarArgs, "doc for flush"},
    {nullptr, nullptr, 0, nullptr},
};

PyMethodDef errorFunctions[] = {
    {"write", log_CaptureStderr, python::kVarArgs, "doc for write"},
    {"flush", TesselLog_flush, python::kVarArgs, "doc for flush"},
    {nullptr, nullptr, 0, nullptr},
};

constexpr PyModuleDef_Base kModuleHead {{1, nullptr}, nullptr, 0, nullptr};

PyModuleDef TesselOut_module {
    kModuleHead, "TesselOut", "doc for TesselOut", -1, outputFunctions, nullptr, nullptr, nullptr, nullptr};
PyModuleDef TesselErr_module {
    kModuleHead, "TesselErr", "doc for TesselErr", -1, errorFunctions, nullptr, nullptr, nullptr, nullptr};

PyObject *createModule(PyModuleDef &definition, const char *replaced)
{
    PyObject *module = vxPyModule_Create2(&definition, python::kApiVersion);
    if (module)
        vxPySys_SetObject(replaced, module);
    return module;
}

} // namespace

ScriptConsole *scriptConsole()
{
    return ownOutput ? ownOutput : panel;
}

bool hasOwnOutput()
{
    return ownOutput != nullptr;
}

void setScriptConsole(ScriptConsole *console)
{
    ownOutput = console;
}

void setPanelConsole(ScriptConsole *console)
{
    panel = console;
}

void deliverPendingOutput()
{
    for (const auto &[stream, text] : pendingOutput().take()) {
        if (ScriptConsole *target = scriptConsole())
            writeTo(*target, stream, text);
    }
}

} // namespace runebook

PyObject *PyInit_TesselOut()
{
    return runebook::createModule(runebook::TesselOut_module, "stdout");
}

PyObject *PyInit_TesselErr()
{
    return runebook::createModule(runebook::TesselErr_module, "stderr");
}
