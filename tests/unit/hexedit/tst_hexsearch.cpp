#include "hexeditor.h"

#include <limits>

class TestHexSearch : public QObject
{
    Q_OBJECT

private slots:
    void searchFindsThePosition_data();
    void searchFindsThePosition();
    void backwardSearchFindsThePosition_data();
    void backwardSearchFindsThePosition();
    void hitIsSelectedWithTheCursorBehindIt();
    void backwardHitIsSelectedWithTheCursorOnIt();
    void hitComesIntoSight();
    void missChangesNothing();
    void hiddenBytesAreFound();
    void nothingIsFoundInNothing();
};

void TestHexSearch::searchFindsThePosition_data()
{
    QTest::addColumn<QByteArray>("what");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("position");

    QTest::newRow("first") << QByteArray("ab") << 0 << 0;
    QTest::newRow("at the start of the search") << QByteArray("ab") << 2 << 2;
    QTest::newRow("behind the start of the search") << QByteArray("ab") << 1 << 2;
    QTest::newRow("not any more") << QByteArray("ab") << 3 << -1;
    QTest::newRow("start beyond the end is the last byte") << QByteArray("c") << 100 << 4;
    QTest::newRow("start before the beginning") << QByteArray("ab") << std::numeric_limits<int>::min() << 0;
    QTest::newRow("longer than the data") << QByteArray("ababcd") << 0 << -1;
}

void TestHexSearch::searchFindsThePosition()
{
    QFETCH(QByteArray, what);
    QFETCH(int, from);
    HexEditor editor("ababc");
    QTEST(editor.edit.indexOf(what, from), "position");
}

void TestHexSearch::backwardSearchFindsThePosition_data()
{
    QTest::addColumn<QByteArray>("what");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("position");

    QTest::newRow("last") << QByteArray("ab") << 5 << 2;
    QTest::newRow("ends at the start of the search") << QByteArray("ab") << 4 << 2;
    QTest::newRow("would pass the start of the search") << QByteArray("ab") << 3 << 0;
    QTest::newRow("start before the first end is the beginning") << QByteArray("ab") << 1 << 0;
    QTest::newRow("start before the beginning") << QByteArray("ab") << std::numeric_limits<int>::min() << 0;
    QTest::newRow("not there") << QByteArray("x") << 5 << -1;
    QTest::newRow("zero behind the last byte") << QByteArray(1, '\0') << 100 << -1;
    QTest::newRow("last byte") << QByteArray("c") << 100 << 4;
    QTest::newRow("start far beyond the end") << QByteArray("abc") << std::numeric_limits<int>::max() << 2;
}

void TestHexSearch::backwardSearchFindsThePosition()
{
    QFETCH(QByteArray, what);
    QFETCH(int, from);
    HexEditor editor("ababc");
    QTEST(editor.edit.lastIndexOf(what, from), "position");
}

void TestHexSearch::hitIsSelectedWithTheCursorBehindIt()
{
    HexEditor editor("ababc");
    editor.edit.indexOf("ba", 0);
    QCOMPARE(editor.selection(), QVector<int>({1, 3}));
    QCOMPARE(editor.edit.cursorPosition(), 3);
}

void TestHexSearch::backwardHitIsSelectedWithTheCursorOnIt()
{
    HexEditor editor("ababc");
    editor.edit.lastIndexOf("bc", 5);
    QCOMPARE(editor.selection(), QVector<int>({3, 5}));
    QCOMPARE(editor.edit.cursorPosition(), 3);
}

void TestHexSearch::hitComesIntoSight()
{
    HexEditor editor(QByteArray(10000, 'a') + "b");
    editor.edit.indexOf("b", 0);
    QVERIFY(!editor.view->visibleRegion().boundingRect().contains(editor.digitAt(0)));
    QVERIFY(editor.view->visibleRegion().boundingRect().contains(editor.digitAt(10000)));
}

void TestHexSearch::missChangesNothing()
{
    HexEditor editor("ababc");
    editor.edit.indexOf("ba", 0);
    QSignalSpy moved(&editor.edit, &QHexEdit::currentAddressChanged);
    QVERIFY(editor.edit.indexOf("x", 0) < 0);
    QVERIFY(editor.edit.lastIndexOf("x", 5) < 0);
    QCOMPARE(editor.selection(), QVector<int>({1, 3}));
    QCOMPARE(moved.count(), 0);
}

void TestHexSearch::hiddenBytesAreFound()
{
    HexEditor editor("ababc");
    editor.edit.setByteCountEnabled(2);
    QCOMPARE(editor.edit.indexOf("c", 0), 4);
    QCOMPARE(editor.edit.cursorPosition(), 1);
}

void TestHexSearch::nothingIsFoundInNothing()
{
    HexEditor editor;
    QVERIFY(editor.edit.indexOf("a", 0) < 0);
    QVERIFY(editor.edit.lastIndexOf("a", 0) < 0);
    QVERIFY(editor.edit.lastIndexOf(QByteArray(1, '\0'), 0) < 0);
}

QTEST_MAIN(TestHexSearch)
#include "tst_hexsearch.moc"
