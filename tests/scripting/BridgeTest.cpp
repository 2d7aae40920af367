#include "document/VXDocument.h"
#include "platform/StandardFolders.h"
#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/KeptConsole.h"

#include <stdexcept>

using namespace runebook;
using namespace Qt::StringLiterals;

/// An object as windows and panels are: the bridge has never heard of its class.
class Panel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title MEMBER m_title)
    Q_PROPERTY(bool isOpen READ isOpen)
    Q_PROPERTY(Side side MEMBER m_side)
public:
    enum Side { Left, Right = 7 };
    Q_ENUM(Side)

    bool isOpen() const { return true; }
    Q_INVOKABLE QString overloaded(int number) { return u"number %1"_s.arg(number); }
    Q_INVOKABLE QString overloaded(const QStringList &texts) { return u"list "_s + texts.join(u'+'); }
    Q_INVOKABLE int sumOfWith(int a, int b = 40) { return a + b; }
    Q_INVOKABLE void countInTo(const QString &text, int *length, QString *upper)
    {
        *length += static_cast<int>(text.size());
        *upper = text.toUpper();
    }
    Q_INVOKABLE bool failWith(int code, runebook::Error *error = nullptr)
    {
        return code == 0 || fail(error, {u"Panel"_s, code, u"failed"_s, u"why"_s, {}});
    }
    Q_INVOKABLE void throwAnything() { throw std::runtime_error("thrown"); }
    Q_INVOKABLE void throwNumber() { throw 42; }
    Q_INVOKABLE runebook::IndexSet twice(const runebook::IndexSet &indexes)
    {
        runebook::IndexSet doubled;
        for (const qsizetype index : indexes)
            doubled.push_back(index * 2);
        return doubled;
    }
    Q_INVOKABLE QVariant echo(const QVariant &value) { return value; }
    Q_INVOKABLE QByteArray bytes(const QByteArray &value) { return value + "!"; }
    Q_INVOKABLE QObject *child(const QString &name) { return findChild<QObject *>(name); }
    Q_INVOKABLE QString nameOf(QObject *object) { return object ? object->objectName() : u"none"_s; }
    Q_INVOKABLE QString titleOf(Panel *panel) { return panel->m_title; }
    Q_INVOKABLE int sizeOf(const QVariantList &values) { return int(values.size()); }
    Q_INVOKABLE int countOf(const QList<QObject *> &objects) { return int(objects.size()); }
    Q_INVOKABLE void delete_() { ++m_deletes; }
    Q_INVOKABLE int deletes() const { return m_deletes; }
    Q_INVOKABLE quint8 small(quint8 number) { return number; }
    Q_INVOKABLE void removeChild() { qDeleteAll(children()); }

private:
    QString m_title = u"Panel"_s;
    Side m_side = Left;
    int m_deletes = 0;
};

class BridgeTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
        VXScriptingHandler::sharedHandler();
        QVERIFY(VXScriptingHandler::isPythonRunning());
    }

    TABLE(answers, (const QString &expression, const QString &answer), {
        row("p.title", "'Panel'");
        row("p.title()", "'Panel'");
        row("setattr(p, 'title', 'x') or p.title", "'x'");
        row("setattr(p, 'title', None) or p.title", "None");
        row("p.isOpen, p.isOpen()", "(True, True)");
        row("setattr(p, 'isOpen', False)", "AttributeError");
        row("p.side", "0");
        row("setattr(p, 'side', 7) or p.side", "7");
        row("p.overloaded_(3)", "'number 3'");
        row("p.overloaded_(['a', 'b'])", "'list a+b'");
        row("p.overloaded_('text')", "TypeError");
        row("p.overloaded_(1, 2)", "TypeError");
        row("p.sumOf_with_(1, 2)", "3");
        row("p.sum_ofWith_(1, 2)", "3");
        row("p.sumOfWith_(2)", "42");
        row("p.sumOfWith_(2.5)", "TypeError");
        row("p.sumOfWith_(1 << 40)", "OverflowError");
        row("p.small_(256)", "OverflowError");
        row("p.small_(-1)", "OverflowError");
        row("p.small_(255)", "255");
        row("p.countIn_to_('abc', None)", "AttributeError");
        row("p.count_in_to_('abc', None)", "TypeError");
        row("p.count_in_to_('abc', None, None)", "(3, 'ABC')");
        row("p.count_in_to_('abc', 10, None)", "(13, 'ABC')");
        row("p.failWith_(0)", "True");
        row("p.failWith_error_(0, None)", "(True, None)");
        row("[p.failWith_error_(5, None)[i] if i == 0 else p.failWith_error_(5, None)[1].code() for i in (0, "
            "1)]",
            "[False, 5]");
        row("p.failWith_(5)", "error");
        row("p.throwAnything()", "RuntimeError");
        row("p.throwAnything_(None)", "RuntimeError");
        row("p.throwNumber()", "RuntimeError");
        row("p.twice_([3, 1, 1])", "[2, 6]");
        row("p.twice_(range(3))", "[0, 2, 4]");
        row("p.twice_({5})", "[10]");
        row("p.twice_([-1])", "IndexError");
        row("p.twice_(5)", "TypeError");
        row("p.echo_(None)", "None");
        row("p.echo_(True)", "True");
        row("p.echo_(5), p.echo_(2.5), p.echo_('x'), p.echo_(b'y')", "(5, 2.5, 'x', b'y')");
        row("p.echo_({'a': [1, 'b', None]})", "{'a': [1, 'b', None]}");
        row("p.echo_([]), p.echo_(['a']), p.echo_([['a'], []])", "([], ['a'], [['a'], []])");
        row("p.echo_(object())", "TypeError");
        row("p.echo_(1 << 70)", "OverflowError");
        row("p.echo_(p) == p", "True");
        row("p.echo_(newInfo('r')).name", "'r'");
        row("p.bytes_(b'a\\0b')", "b'a\\x00b!'");
        row("p.bytes_('a')", "TypeError");
        row("p.child_('none')", "None");
        row("p.child_('kid') is p.child_('kid')", "True");
        row("p.nameOf_(p.child_('kid'))", "'kid'");
        row("p.nameOf_(None)", "'none'");
        row("p.nameOf_(newInfo('x'))", "TypeError");
        row("p.nameOf_('x')", "TypeError");
        row("p.titleOf_(p)", "'Panel'");
        row("p.titleOf_(p.child_('kid'))", "TypeError");
        row("p.sizeOf_((1, 'a')), p.countOf_([p])", "(2, 1)");
        row("p.sizeOf_({'a': 1})", "TypeError");
        row("p.countOf_({p: 1})", "TypeError");
        row("p.delete_(None) or p.delete_() or p.deletes()", "2");
        row("p.deleteLater()", "AttributeError");
        row("p.destroyed()", "AttributeError");
        row("Panel.title.__class__.__name__", "'property'");
        row("Panel.deletes(p)", "0");
        row("Panel.deletes(newInfo('x'))", "TypeError");
        row("Panel()", "TypeError");
        row("type(p) is NSClassFromString('Panel')", "True");
        row("(p.child_('kid'), p.removeChild())[0].deletes", "AttributeError");
        row("sorted(n for n in dir(p) if n.startswith('over'))", "['overloaded_']");
    })
    {
        Panel panel;
        auto *kid = new QObject(&panel);
        kid->setObjectName(u"kid"_s);
        ScriptApplication::shared().setDelegate(&panel);
        KeptConsole console;
        setScriptConsole(&console);
        runPanelCode(
            u"p = NSApplication.sharedApplication().delegate()\nPanel = type(p)\n"
            "try: print(repr((%1)), end='')\n"
            "except Exception as problem: print(type(problem).__name__, end='')\n"_s.arg(expression));
        setScriptConsole(nullptr);
        QCOMPARE(console.output + console.errors, answer);
    }

    void keepsObjectsApartFromTheirAddresses()
    {
        KeptConsole console;
        setScriptConsole(&console);
        auto panel = std::make_unique<Panel>();
        ScriptApplication::shared().setDelegate(panel.get());
        runPanelCode(u"p = NSApplication.sharedApplication().delegate()"_s);
        panel.reset();
        runPanelCode(u"try: p.deletes()\nexcept ReferenceError as gone: print(gone)\nprint(p)"_s);
        runPanelCode(u"print(NSApplication.sharedApplication().delegate())"_s);
        setScriptConsole(nullptr);
        QCOMPARE(console.output, u"the Panel is gone\n<Panel (gone)>\nNone\n"_s);
    }
};

RUNEBOOK_TEST_MAIN(BridgeTest)
#include "BridgeTest.moc"
