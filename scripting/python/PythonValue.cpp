#include "scripting/python/PythonValue.h"

#include "scripting/python/ForkedProcess.h"
#include "scripting/python/MainThread.h"

#include <algorithm>
#include <stdexcept>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

PyObject *none()
{
    py.Py_IncRef(py._Py_NoneStruct);
    return py._Py_NoneStruct;
}

PyObject *pythonText(const QString &text)
{
    if (text.isNull())
        return none();
    const auto isSurrogate = [](QChar character) { return character.isSurrogate(); };
    if (py.PyUnicode_FromKindAndData && std::none_of(text.cbegin(), text.cend(), isSurrogate)) {
        constexpr int kTwoBytes = 2;
        return py.PyUnicode_FromKindAndData(kTwoBytes, text.utf16(), text.size());
    }
    // Told explicitly: otherwise a leading byte order mark would be taken for one.
    int byteOrder = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? -1 : 1;
    return py.PyUnicode_DecodeUTF16(reinterpret_cast<const char *>(text.utf16()), text.size() * 2,
                                    "surrogatepass", &byteOrder);
}

PyObject *pythonText(std::string_view utf8)
{
    if (!utf8.data())
        return none();
    PyObject *text = py.PyUnicode_DecodeUTF8(utf8.data(), static_cast<Py_ssize_t>(utf8.size()), nullptr);
    if (!text && py.PyErr_ExceptionMatches(*py.PyExc_UnicodeDecodeError))
        vxPyErr_Clear();
    return text;
}

namespace {

/// ASCII, which most texts are, letter by letter into the memory that \a text has.
void assignAscii(QString &text, const char *ascii, qsizetype size)
{
    text.resize(size);
    std::copy_n(reinterpret_cast<const uchar *>(ascii), size, reinterpret_cast<char16_t *>(text.data()));
}

} // namespace

bool readText(PyObject *object, QString &text)
{
    if (isNone(object)) {
        text = QString();
        return true;
    }
    if (!isKind(object, python::kUnicodeSubclass)) {
        raise(*py.PyExc_TypeError, u"a str is needed, not %1"_s.arg(typeName(object)));
        return false;
    }
    Py_ssize_t size = 0;
    if (const char *utf8 = py.PyUnicode_AsUTF8AndSize(object, &size)) {
        if (size > 0 && py.PyUnicode_GetLength(object) == size) {
            assignAscii(text, utf8, size);
            return true;
        }
        // Built at its size: QString::fromUtf8 drops a byte order mark, and "" must not become null.
        const QByteArrayView bytes(utf8, size);
        text = QString::fromUtf8(bytes);
        if (bytes.startsWith("\xEF\xBB\xBF"))
            text.prepend(QChar(QChar::ByteOrderMark));
        if (text.isNull())
            text = u""_s;
        return true;
    }
    vxPyErr_Clear();
    const PythonRef encoded(py.PyUnicode_AsEncodedString(object, "utf-16-le", "surrogatepass"));
    if (!encoded)
        return false;
    text = QString(reinterpret_cast<const QChar *>(vxPyBytes_AsString(encoded.get())),
                   py.PyBytes_Size(encoded.get()) / 2);
    return true;
}

PyObject *raise(PyObject *exception, const QString &message)
{
    py.PyErr_SetString(exception, message.toUtf8().constData());
    return nullptr;
}

QString typeName(PyObject *object)
{
    const PythonRef name(
        py.PyObject_GetAttrString(reinterpret_cast<PyObject *>(object->ob_type), "__name__"));
    QString text;
    if (!name || !readText(name.get(), text))
        vxPyErr_Clear();
    return text;
}

void raiseCurrentException()
{
    try {
        throw;
    } catch (const std::out_of_range &exception) {
        py.PyErr_SetString(*py.PyExc_IndexError, exception.what());
    } catch (const std::exception &exception) {
        py.PyErr_SetString(*py.PyExc_RuntimeError, exception.what());
    } catch (...) {
        py.PyErr_SetString(*py.PyExc_RuntimeError, "an exception of the program");
    }
}

bool clearMissingAttribute()
{
    if (py.PyErr_Occurred() && py.PyErr_ExceptionMatches(*py.PyExc_AttributeError))
        vxPyErr_Clear();
    return !py.PyErr_Occurred();
}

PythonRef tupleOf(std::vector<PythonRef> items)
{
    PythonRef tuple(py.PyTuple_New(static_cast<Py_ssize_t>(items.size())));
    for (std::size_t i = 0; tuple && i < items.size(); ++i) {
        if (!items[i])
            return {};
        py.PyTuple_SetItem(tuple.get(), static_cast<Py_ssize_t>(i), items[i].release());
    }
    return tuple;
}

bool checkThread()
{
    if (isForkedProcess()) {
        raise(*py.PyExc_RuntimeError, u"documents and windows belong to the process that opened them"_s);
        return false;
    }
    // Which thread that is does not change; every operation asks.
    thread_local bool isMain = false;
    if (isMain ? QCoreApplication::instance() != nullptr : isOnMainThread()) {
        isMain = true;
        return true;
    }
    raise(*py.PyExc_RuntimeError, u"documents and windows can be used on the main thread only"_s);
    return false;
}

} // namespace runebook::bridge
