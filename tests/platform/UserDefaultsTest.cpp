// What the user chose comes back as it was, in this run and in the next.
#include "platform/defaults/UserDefaults.h"
#include "platform/defaults/DefaultsProblem.h"
#include "platform/defaults/Setting.h"
#include "tests/Files.h"
#include "tests/Oddities.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace runebook;

class UserDefaultsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(keepsValues, (const QVariant &value), {
        row("text", QVariant(u"a"_s));
        row("empty text", QVariant(u""_s));
        row("commas and quotes", QVariant(u"a, \"b\"; c=\\d"_s));
        row("looks like a special value", QVariant(u"@Invalid()"_s));
        row("non-ASCII, line ends", QVariant(u"é€𝄞\n\r\t\u2028"_s));
        row("leading blanks", QVariant(u"  a  "_s));
        row("list of none", QVariant(QVariantList()));
        row("list of one", QVariant(QVariantList {u"a"_s}));
        row("list of one empty text", QVariant(QVariantList {u""_s}));
        row("list of two", QVariant(QVariantList {u"a"_s, 5}));
        row("list of lists",
            QVariant(QVariantList {QVariantList {u"latin"_s, u"/a,b.ttf"_s}, QVariantList {}}));
        row("texts: none", QVariant(QStringList()));
        row("texts: one", QVariant(QStringList {u"a"_s}));
        row("texts: with separators", QVariant(QStringList {u"a, b"_s, u"@c"_s, u""_s}));
        row("map", QVariant(QVariantMap {{u"a/b"_s, 1}, {u""_s, QVariantList {true}}}));
        row("empty map", QVariant(QVariantMap()));
        row("bytes", QVariant(QByteArray("\0\xFF,;", 4)));
    })
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"d.ini"_s);
        for (const QString &key : {u"key"_s, u"Group/key with blanks é"_s}) {
            {
                UserDefaults defaults(file);
                defaults.setObjectForKey(value, key);
                QCOMPARE(defaults.objectForKey(key), value);
                QVERIFY(defaults.isSet(key));
                QVERIFY(defaults.synchronize());
            }
            const UserDefaults again(file);
            QCOMPARE(again.objectForKey(key), value);
            QCOMPARE(again.objectForKey(key).typeId(), value.typeId());
            QVERIFY(again.isSet(key));
            QCOMPARE(again.arrayForKey(key),
                     value.typeId() == QMetaType::QVariantMap ? QVariantList() : value.toList());
        }
    }

    void readsNumbersAndSwitches()
    {
        const QTemporaryDir folder;
        {
            UserDefaults defaults(folder.filePath(u"d.ini"_s));
            defaults.setObjectForKey(13, u"size"_s);
            defaults.setObjectForKey(true, u"on"_s);
            defaults.setObjectForKey(false, u"off"_s);
            defaults.setObjectForKey(-0.5, u"half"_s);
        }
        const UserDefaults again(folder.filePath(u"d.ini"_s));
        QCOMPARE(again.integerForKey(u"size"_s), 13);
        QCOMPARE(again.boolForKey(u"on"_s), true);
        QCOMPARE(again.boolForKey(u"off"_s), false);
        QCOMPARE(again.objectForKey(u"half"_s).toDouble(), -0.5);
        QCOMPARE(again.stringForKey(u"size"_s), u"13"_s);
        // Nothing there: the null value of the type.
        QCOMPARE(again.integerForKey(u"none"_s), 0);
        QCOMPARE(again.boolForKey(u"none"_s), false);
        QVERIFY(again.stringForKey(u"none"_s).isNull());
        QVERIFY(again.arrayForKey(u"none"_s).isEmpty());
        QVERIFY(!again.objectForKey(u"none"_s).isValid());
        QVERIFY(!again.isSet(u"none"_s));
    }

    void fallsBackToWhatIsRegistered()
    {
        const QTemporaryDir folder;
        UserDefaults defaults(folder.filePath(u"d.ini"_s));
        defaults.registerDefaults({{u"size"_s, 13}, {u"code"_s, u"print()"_s}});
        defaults.registerDefaults({{u"size"_s, 14}});
        QCOMPARE(defaults.integerForKey(u"size"_s), 14);
        QVERIFY(!defaults.isSet(u"size"_s));
        defaults.setObjectForKey(0, u"size"_s);
        QCOMPARE(defaults.integerForKey(u"size"_s), 0);
        QVERIFY(defaults.isSet(u"size"_s));
        defaults.removeObjectForKey(u"size"_s);
        QCOMPARE(defaults.integerForKey(u"size"_s), 14);
        defaults.setObjectForKey(5, u"size"_s);
        defaults.setObjectForKey(QVariant(), u"size"_s); // nothing is none either
        QVERIFY(!defaults.isSet(u"size"_s));
        QVERIFY(defaults.synchronize());
        QFile file(defaults.fileName());
        QVERIFY(!file.open(QIODevice::ReadOnly) || !file.readAll().contains("print"));
    }

    void tellsOfChanges()
    {
        const QTemporaryDir folder;
        UserDefaults defaults(folder.filePath(u"d.ini"_s));
        defaults.registerDefaults({{u"a"_s, 1}});
        QSignalSpy changed(&defaults, &UserDefaults::changed);
        defaults.setObjectForKey(1, u"a"_s);
        QCOMPARE(changed.size(), 0);
        defaults.setObjectForKey(2, u"a"_s);
        defaults.setObjectForKey(2, u"a"_s);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.first().first().toString(), u"a"_s);
        defaults.removeObjectForKey(u"a"_s);
        defaults.removeObjectForKey(u"a"_s);
        QCOMPARE(changed.size(), 2);
        defaults.setObjectForKey(QStringList {u"x"_s}, u"list"_s);
        defaults.setObjectForKey(QStringList {u"x"_s}, u"list"_s);
        QCOMPARE(changed.size(), 3);
    }

    TABLE(readsASetting, (const QVariant &stored, const QVariantList &expected), {
        // As a number, the nearest to 1 to 9, one of 1 to 9 or the fallback, an enumeration, a switch, a
        // text.
        row("nothing", QVariant(), QVariantList {5, 5, 5, 0, true, u"usual"_s});
        row("a number", QVariant(2), QVariantList {2, 2, 2, 2, true, u"2"_s});
        row("too small", QVariant(0), QVariantList {0, 1, 5, 0, false, u"0"_s});
        row("too large", QVariant(10), QVariantList {10, 9, 5, 0, true, u"10"_s});
        row("another type: a number's text", QVariant(u"2"_s), QVariantList {2, 2, 2, 2, true, u"2"_s});
        row("another type: a text", QVariant(u"x"_s), QVariantList {0, 1, 5, 0, true, u"x"_s});
        row("another type: no", QVariant(u"false"_s), QVariantList {0, 1, 5, 0, false, u"false"_s});
        row("another type: a list", QVariant(QVariantList {2}), QVariantList {0, 1, 5, 0, false, QString()});
    })
    {
        enum class Kind { None, First, Last };
        const Setting<int> any("s", 5);
        const Setting<int> nearest("s", 5, {1, 9});
        const Setting<int> known("s", 5, {1, 9, OutOfRange::ReadsAsFallback});
        const Setting<Kind> kind("s", Kind::None, {Kind::None, Kind::Last, OutOfRange::ReadsAsFallback});
        const Setting<bool> isOn("s", true);
        const Setting<QString> text("s", u"usual"_s);
        UserDefaults::standard().setObjectForKey(stored, u"s"_s);
        const QVariantList values {any.value(),   nearest.value(),
                                   known.value(), static_cast<int>(kind.value()),
                                   isOn.value(),  text.value()};
        QCOMPARE(values, expected);
        any.reset();
    }

    void keepsASetting()
    {
        const Setting<double> size("s");
        const Setting<QStringList> words("s");
        const Setting<QVariantList> list("s");
        const Setting<QVariant> whole("s", 1);
        const auto stored = [] { return UserDefaults::standard().objectForKey(u"s"_s); };
        QCOMPARE(size.valueOr(7.5), 7.5);
        size.set(0.5);
        QCOMPARE(stored(), QVariant(0.5));
        QCOMPARE(size.valueOr(7.5), 0.5);
        words.set({u"a"_s});
        QCOMPARE(stored(), QVariant(QStringList {u"a"_s}));
        QCOMPARE(words.value(), QStringList {u"a"_s});
        QCOMPARE(list.value(), QVariantList {u"a"_s});
        words.setOrReset({});
        QVERIFY(!UserDefaults::standard().isSet(u"s"_s));
        QCOMPARE(whole.value(), QVariant(1));
        QVERIFY(!stored().isValid());
        whole.registerFallback();
        QCOMPARE(stored(), QVariant(1));
        QVERIFY(!UserDefaults::standard().isSet(u"s"_s));
    }

    /// Also of what others write under its key, each once; and of no other key.
    void tellsOfASettingOnce()
    {
        const Setting<int> number("t", 5);
        const Setting<QString> sameKey("t");
        const Setting<int> other("u");
        QStringList told;
        auto listener = std::make_unique<QObject>();
        number.onChange(listener.get(), [&] { told << QString::number(number.value()); });
        sameKey.onChange(listener.get(), [&] { told << sameKey.value(); });
        number.set(6);
        number.set(6);
        other.set(1);
        sameKey.set(u"7"_s);
        UserDefaults::standard().setObjectForKey(8, u"t"_s);
        number.reset();
        listener.reset();
        number.set(9);
        QCOMPARE(told.join(u' '), u"6 6 7 7 8 8 5 "_s);
        number.reset();
    }

    void usesTheFileOfTheEnvironment()
    {
        QCOMPARE(UserDefaults::standard().fileName(), qEnvironmentVariable("RUNEBOOK_DEFAULTS"));
        UserDefaults::standard().setObjectForKey(1, u"a"_s);
        QVERIFY(UserDefaults::standard().synchronize());
        QVERIFY(QFile::exists(qEnvironmentVariable("RUNEBOOK_DEFAULTS")));
    }

    void survivesADamagedFile()
    {
        const QTemporaryDir folder;
        const QString file = runebook::write(
            folder.filePath(u"d.ini"_s),
            "[General]\nlist=\"\\x1streamed:AAAA\"\nmore=\"\\x1streamed:????\"\n\xFF\xFE=\n[[[\nsize=13\n");
        UserDefaults defaults(file);
        QVERIFY(defaults.arrayForKey(u"list"_s).isEmpty());
        QVERIFY(defaults.arrayForKey(u"more"_s).isEmpty());
        defaults.setObjectForKey(QVariantList {1}, u"list"_s);
        QCOMPARE(defaults.arrayForKey(u"list"_s), QVariantList {1});
    }

    TABLE(setsADamagedFileAside, (const QByteArray &content, bool isDamaged), {
        row("intact", "[General]\na=1\n", false);
        row("empty", QByteArray(), false);
        row("binary", QByteArray("\x7f\x45LF\0\0\1\xff\n\0garbage", 18), true);
        row("half a section", "[General\na=1\n", true);
        row("a letter to somebody", "Dear reader,\nhow are you?\n", true);
    })
    {
        runebook::takeDefaultsProblem(); // of another test
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"d.ini"_s);
        runebook::write(path, content);
        {
            UserDefaults defaults(path);
            const runebook::DefaultsProblem problem = runebook::takeDefaultsProblem();
            QCOMPARE(problem.isThere, isDamaged);
            if (!isDamaged)
                return;
            QCOMPARE(problem.file, path);
            QCOMPARE(runebook::contentOf(problem.keptAt), content);
            QVERIFY(!defaults.isSet(u"a"_s));
            defaults.setObjectForKey(7, u"b"_s);
            QVERIFY(defaults.synchronize());
        }
        QCOMPARE(UserDefaults(path).integerForKey(u"b"_s), 7);
        QVERIFY(!runebook::takeDefaultsProblem().isThere);
        // A second damage does not write over what was kept of the first.
        runebook::write(path, content);
        const UserDefaults again(path);
        QVERIFY(runebook::takeDefaultsProblem().keptAt.endsWith(u".damaged2"_s));
    }

    void keepsSomeForThisRun()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"d.ini"_s);
        {
            UserDefaults defaults(path);
            defaults.setObjectForKey(1, u"a"_s);
            defaults.setObjectForKey(1, u"b"_s);
            defaults.keepForThisRun({u"a"_s, u"c"_s});
            QCOMPARE(defaults.integerForKey(u"a"_s), 1);
            defaults.setObjectForKey(QVariantList {2}, u"a"_s);
            defaults.setObjectForKey(2, u"b"_s);
            defaults.setObjectForKey(2, u"c"_s);
            QCOMPARE(defaults.arrayForKey(u"a"_s), QVariantList {2});
            QCOMPARE(defaults.integerForKey(u"c"_s), 2);
            defaults.removeObjectForKey(u"a"_s);
            QVERIFY(!defaults.isSet(u"a"_s));
        }
        const UserDefaults defaults(path);
        QCOMPARE(defaults.integerForKey(u"a"_s), 1);
        QCOMPARE(defaults.integerForKey(u"b"_s), 2);
        QVERIFY(!defaults.isSet(u"c"_s));
    }

    void saysWhenItCannotWrite()
    {
        UserDefaults defaults(u"/dev/null/d.ini"_s);
        defaults.setObjectForKey(1, u"a"_s);
        QVERIFY(!defaults.synchronize());
        QCOMPARE(defaults.integerForKey(u"a"_s), 1);
    }

    TABLE(sparesWhatIsNoFile, (const QString &name, const QString &kind), {
        for (const char *kind : {"pipe", "device", "folder"})
            row(kind, "d.ini", QString::fromLatin1(kind));
        row("a pipe as its lock", "d.ini.lock", "pipe");
        row("a link as its lock", "d.ini.lock", "link");
    })
    {
        const QTemporaryDir folder;
        if (!makeOddity(kind, folder.filePath(name)))
            QSKIP("device-node: only root may make one");
        const auto before = whatIsAt(folder.filePath(name));
        {
            UserDefaults defaults(folder.filePath(u"d.ini"_s));
            QCOMPARE(defaults.fileName(), folder.filePath(u"d.ini"_s));
            defaults.setObjectForKey(1, u"a"_s);
            QVERIFY(!defaults.synchronize());
            QCOMPARE(defaults.integerForKey(u"a"_s), 1);
        }
        QCOMPARE(whatIsAt(folder.filePath(name)), before);
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                 QStringList {name});
        runebook::takeDefaultsProblem();
    }
};

RUNEBOOK_TEST_MAIN(UserDefaultsTest)
#include "UserDefaultsTest.moc"
