#include "scripting/bridge/Selectors.h"
#include "tests/TestMain.h"

using namespace runebook::bridge;
using namespace Qt::StringLiterals;

class SelectorsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void putsLabelsApart_data();
    void putsLabelsApart();
    void joinsBackToTheName_data();
    void joinsBackToTheName();
};

void SelectorsTest::putsLabelsApart_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("arguments");
    QTest::addColumn<bool>("canFail");
    QTest::addColumn<QByteArray>("usual");
    QTest::addColumn<QString>("all");
    QTest::newRow("no argument") << QByteArray("copy") << 0 << false << QByteArray("copy") << u"copy copy_"_s;
    QTest::newRow("a word of Python")
        << QByteArray("delete_") << 0 << false << QByteArray("delete_") << u"delete_"_s;
    QTest::newRow("one") << QByteArray("setName") << 1 << false << QByteArray("setName_")
                         << u"setName setName_"_s;
    QTest::newRow("two") << QByteArray("objectAtRow") << 2 << false << QByteArray("object_atRow_")
                         << u"objectAtRow object_atRow_ objectAt_row_"_s;
    QTest::newRow("may fail") << QByteArray("readURL") << 1 << true << QByteArray("readURL_")
                              << u"readURL readURL_ readURL_error_"_s;
}

void SelectorsTest::putsLabelsApart()
{
    QFETCH(QByteArray, name);
    QFETCH(int, arguments);
    QFETCH(bool, canFail);
    QTEST(usualSelector(name, arguments), "usual");
    QStringList names;
    for (const Selector &selector : selectorsOf(name, arguments, canFail))
        names << QString::fromLatin1(selector.name);
    QTEST(names.join(u' '), "all");
}

void SelectorsTest::joinsBackToTheName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("arguments");
    QTest::addColumn<QByteArray>("written");
    const auto row = [](const char *written, const char *name, int arguments) {
        QTest::newRow(written) << QByteArray(name) << arguments << QByteArray(written);
    };
    row("insertObject_inInfosAtIndex_", "insertObjectInInfosAtIndex", 2);
    row("insertObjects_inInfosAtIndexes_", "insertObjectsInInfosAtIndexes", 2);
    row("replaceObjectInInfosAtIndex_withObject_", "replaceObjectInInfosAtIndexWithObject", 2);
    row("infoForKey_values_", "infoForKeyValues", 2);
    row("readTabbedFromURL_error_", "readTabbedFromURL", 1);
    row("readFromURL_ofType_error_", "readFromURLOfType", 2);
    row("initWithLineXML_fileVersion_", "initWithLineXMLFileVersion", 2);
    row("isVersion_greaterThanVersion_", "isVersionGreaterThanVersion", 2);
    row("openDocumentWithContentsOfURL_display_error_", "openDocumentWithContentsOfURLDisplay", 2);
    row("filterString_forKey_search_", "filterStringForKeySearch", 3);
}

void SelectorsTest::joinsBackToTheName()
{
    QFETCH(QByteArray, name);
    QFETCH(int, arguments);
    QFETCH(QByteArray, written);
    const QList<Selector> all = selectorsOf(name, arguments, true);
    QVERIFY(std::any_of(all.begin(), all.end(),
                        [&](const Selector &selector) { return selector.name == written; }));
}

RUNEBOOK_TEST_MAIN(SelectorsTest)
#include "tst_selectors.moc"
