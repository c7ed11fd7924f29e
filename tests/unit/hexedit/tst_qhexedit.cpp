#include "hexeditor.h"

#include <QMetaMethod>
#include <QScrollBar>

#include <limits>

namespace {
constexpr int largest = std::numeric_limits<int>::max();
constexpr int smallest = std::numeric_limits<int>::min();

QStringList methods(const QMetaObject &meta, QMetaMethod::MethodType type)
{
    QStringList result;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == type)
            result.append(QString::fromLatin1(meta.method(i).methodSignature()));
    }
    return result;
}
} // namespace

class TestQHexEdit : public QObject
{
    Q_OBJECT

private slots:
    void propertiesStandInTheirOrder();
    void propertiesAreReadAndWritten_data();
    void propertiesAreReadAndWritten();
    void signalsAndSlotsStandInTheirOrder();
    void editorOverwritesAndHasTheFocusAtFirst();
    void coloursAtFirst();
    void loadingMovesTheCursorToTheStartAndTellsOnce();
    void loadingKeepsLimits();
    void loadingCannotBeUndone();
    void everyEditTellsTheWholeLengthOnce_data();
    void everyEditTellsTheWholeLengthOnce();
    void editBeyondALimitChangesAndTellsNothing_data();
    void editBeyondALimitChangesAndTellsNothing();
    void fullEditorTakesSingleBytesOnly();
    void insertingFillsTheRoomAndCutsTheArray();
    void insertingWithoutRoomEmptiesTheArray();
    void insertingArrayInOverwriteModeReplaces();
    void insertingByteInsertsInBothModes();
    void overwritingIgnoresTheLimitAndEndsWithTheBytes();
    void removingZeroesInOverwriteMode_data();
    void removingZeroesInOverwriteMode();
    void removingShrinksInInsertMode_data();
    void removingShrinksInInsertMode();
    void replacingResetsTheSelection();
    void dataHasTheHiddenBytes();
    void cursorPositionCountsBytes();
    void cursorIsKeptWithinTheBytes_data();
    void cursorIsKeptWithinTheBytes();
    void cursorTellsItsByte();
    void modeIsToldWhenItChanges();
    void dumpTellsBytesAndSelection();
    void verticalBarCanBeTurnedOff();
    void horizontalBarIsTurnedOffByNoOrientationOnly();
    void styleSheetGoesToTheBarOfTheOrientation();
    void fontIsThatOfTheBytes();
    void extremeArgumentsDoNoHarm_data();
    void extremeArgumentsDoNoHarm();
};

void TestQHexEdit::propertiesStandInTheirOrder()
{
    const QMetaObject &meta = QHexEdit::staticMetaObject;
    QStringList properties;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        properties.append(QLatin1String(meta.property(i).typeName()) + QLatin1Char(' ')
                          + QLatin1String(meta.property(i).name()));
    }
    QCOMPARE(properties,
             QStringList({QStringLiteral("QByteArray data"), QStringLiteral("int addressOffset"),
                          QStringLiteral("QColor addressAreaColor"), QStringLiteral("int cursorPosition"),
                          QStringLiteral("QColor highlightingColor"), QStringLiteral("QColor selectionColor"),
                          QStringLiteral("bool overwriteMode"), QStringLiteral("bool readOnly"),
                          QStringLiteral("QFont font")}));
}

void TestQHexEdit::propertiesAreReadAndWritten_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QVariant>("value");

    QTest::newRow("bytes") << QByteArray("data") << QVariant(QByteArray("xyz"));
    QTest::newRow("offset") << QByteArray("addressOffset") << QVariant(0x100);
    QTest::newRow("address colour") << QByteArray("addressAreaColor") << QVariant(QColor(Qt::red));
    QTest::newRow("cursor") << QByteArray("cursorPosition") << QVariant(2);
    QTest::newRow("change colour") << QByteArray("highlightingColor") << QVariant(QColor(Qt::red));
    QTest::newRow("selection colour") << QByteArray("selectionColor") << QVariant(QColor(Qt::red));
    QTest::newRow("mode") << QByteArray("overwriteMode") << QVariant(false);
    QTest::newRow("read only") << QByteArray("readOnly") << QVariant(true);
}

void TestQHexEdit::propertiesAreReadAndWritten()
{
    QFETCH(QByteArray, name);
    QFETCH(QVariant, value);
    QHexEdit edit;
    edit.setData("abcd");
    QVERIFY(edit.property(name) != value);
    QVERIFY(edit.setProperty(name, value));
    QCOMPARE(edit.property(name), value);
}

void TestQHexEdit::signalsAndSlotsStandInTheirOrder()
{
    const QMetaObject &edit = QHexEdit::staticMetaObject;
    QCOMPARE(methods(edit, QMetaMethod::Signal),
             QStringList({QStringLiteral("dataCountChanged(int)"), QStringLiteral("currentAddressChanged(int)"),
                          QStringLiteral("currentSizeChanged(int)"), QStringLiteral("dataChanged()"),
                          QStringLiteral("overwriteModeChanged(bool)")}));
    QCOMPARE(methods(edit, QMetaMethod::Slot),
             QStringList({QStringLiteral("redo()"), QStringLiteral("setAddressWidth(int)"),
                          QStringLiteral("setAddressArea(bool)"), QStringLiteral("setAsciiArea(bool)"),
                          QStringLiteral("setHighlighting(bool)"), QStringLiteral("undo()"),
                          QStringLiteral("dataChangedSlot()")}));

    const QMetaObject &view = QHexEditPrivate::staticMetaObject;
    QCOMPARE(methods(view, QMetaMethod::Signal),
             QStringList({QStringLiteral("currentAddressChanged(int)"), QStringLiteral("currentSizeChanged(int)"),
                          QStringLiteral("dataChanged()"), QStringLiteral("overwriteModeChanged(bool)")}));
    QCOMPARE(methods(view, QMetaMethod::Slot),
             QStringList({QStringLiteral("updateCursor()"), QStringLiteral("adjust()")}));
}

void TestQHexEdit::editorOverwritesAndHasTheFocusAtFirst()
{
    QHexEdit edit;
    QVERIFY(edit.overwriteMode());
    QVERIFY(!edit.isReadOnly());
    QVERIFY(edit.widgetResizable());
    QCOMPARE(edit.addressOffset(), 0);
    QCOMPARE(edit.cursorPosition(), 0);
    QCOMPARE(edit.focusPolicy(), Qt::StrongFocus);
    QCOMPARE(edit.focusProxy(), edit.widget());
    QCOMPARE(edit.widget()->focusPolicy(), Qt::StrongFocus);
    QCOMPARE(edit.font().family(), QStringLiteral("Courier"));
    QCOMPARE(edit.font().pointSize(), 10);
}

void TestQHexEdit::coloursAtFirst()
{
    QHexEdit edit;
    QCOMPARE(edit.addressAreaColor(), QColor(0xD4, 0xD4, 0xD4));
    QCOMPARE(edit.highlightingColor(), QColor(0xFF, 0xFF, 0x99));
    QCOMPARE(edit.highlightingPenColor(), QColor());
    QCOMPARE(edit.selectionColor(), QColor(0x6D, 0x9E, 0xFF));
}

void TestQHexEdit::loadingMovesTheCursorToTheStartAndTellsOnce()
{
    QHexEdit edit;
    edit.setData("abcd");
    edit.setCursorPosition(2);
    QSignalSpy counts(&edit, &QHexEdit::dataCountChanged);
    edit.setData("xyz");
    QCOMPARE(edit.cursorPosition(), 0);
    QCOMPARE(counts, QList<QVariantList>({{3}}));
}

void TestQHexEdit::loadingKeepsLimits()
{
    HexEditor editor("abcd");
    editor.edit.setByteCountEnabled(2);
    editor.edit.setData("xyz");
    QCOMPARE(editor.edit.toReadableString().simplified(), QStringLiteral("0000 78 79 xy"));
}

void TestQHexEdit::loadingCannotBeUndone()
{
    QHexEdit edit;
    edit.setData("abcd");
    edit.insert(0, 'x');
    edit.setData("xyz");
    edit.undo();
    QCOMPARE(edit.data(), QByteArray("xyz"));
    edit.redo();
    QCOMPARE(edit.data(), QByteArray("xyz"));
}

void TestQHexEdit::everyEditTellsTheWholeLengthOnce_data()
{
    QTest::addColumn<QByteArray>("edit");
    QTest::addColumn<int>("length");

    QTest::newRow("insert a byte") << QByteArray("insert") << 9;
    QTest::newRow("insert an array") << QByteArray("insert array") << 10;
    QTest::newRow("remove a byte") << QByteArray("remove") << 7;
    QTest::newRow("remove an array") << QByteArray("remove array") << 6;
    QTest::newRow("replace") << QByteArray("replace") << 8;
    QTest::newRow("undo") << QByteArray("undo") << 8;
    QTest::newRow("redo") << QByteArray("redo") << 8;
}

void TestQHexEdit::everyEditTellsTheWholeLengthOnce()
{
    QFETCH(QByteArray, edit);
    QHexEdit editor;
    editor.setOverwriteMode(false);
    editor.setData("abcdefgh");
    QSignalSpy counts(&editor, &QHexEdit::dataCountChanged);
    QSignalSpy silent(&editor, &QHexEdit::dataChanged);
    QByteArray two("xy");
    if (edit == "insert")
        editor.insert(0, 'x');
    else if (edit == "insert array")
        editor.insert(0, two);
    else if (edit == "remove")
        editor.remove(0, 1);
    else if (edit == "remove array")
        editor.remove(0, 2);
    else if (edit == "replace")
        editor.replace(0, 2, two);
    else if (edit == "undo")
        editor.undo();
    else if (edit == "redo")
        editor.redo();
    QCOMPARE(counts.count(), 1);
    QTEST(counts.at(0).at(0).toInt(), "length");
    QCOMPARE(silent.count(), 0);
}

void TestQHexEdit::editBeyondALimitChangesAndTellsNothing_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("overwrite");

    for (const bool overwrite : {false, true}) {
        const char *mode = overwrite ? "overwriting" : "inserting";
        QTest::addRow("%s, full", mode) << 0 << overwrite;
        QTest::addRow("%s before the first", mode) << -1 << overwrite;
        QTest::addRow("%s far before", mode) << smallest << overwrite;
        QTest::addRow("%s behind the last", mode) << 9 << overwrite;
        QTest::addRow("%s far behind", mode) << largest << overwrite;
    }
}

void TestQHexEdit::editBeyondALimitChangesAndTellsNothing()
{
    QFETCH(int, position);
    QFETCH(bool, overwrite);
    HexEditor editor("abcdefgh");
    editor.edit.setOverwriteMode(overwrite);
    const bool full = position == 0;
    if (full)
        editor.edit.setMaximumByteCount(8);
    QSignalSpy counts(&editor.edit, &QHexEdit::dataCountChanged);
    QByteArray bytes("xyz");
    editor.edit.insert(position, 'x');
    editor.edit.replace(position, 3, bytes);
    editor.view->replace(position, bytes);
    if (!full) {
        editor.edit.remove(position, 1);
        editor.edit.remove(position, 2);
        editor.view->replace(position, 'x');
    }
    if (!full || !overwrite)
        editor.edit.insert(position, bytes);
    QCOMPARE(editor.edit.data(), QByteArray("abcdefgh"));
    QCOMPARE(counts.count(), 0);
}

void TestQHexEdit::fullEditorTakesSingleBytesOnly()
{
    HexEditor editor("abcdefgh");
    editor.edit.setMaximumByteCount(8);
    editor.view->replace(0, 'x');
    editor.view->replace(1, QByteArray("y"));
    QCOMPARE(editor.edit.data(), QByteArray("xbcdefgh"));
    editor.view->replace(8, 'z');
    QCOMPARE(editor.edit.data(), QByteArray("xbcdefgh"));
}

void TestQHexEdit::insertingFillsTheRoomAndCutsTheArray()
{
    QHexEdit edit;
    edit.setOverwriteMode(false);
    edit.setData("ab");
    edit.setMaximumByteCount(7);
    QByteArray bytes = countingBytes(10);
    edit.insert(1, bytes);
    QCOMPARE(bytes, countingBytes(5));
    QCOMPARE(edit.data(), "a" + countingBytes(5) + "b");
}

void TestQHexEdit::insertingWithoutRoomEmptiesTheArray()
{
    QHexEdit edit;
    edit.setOverwriteMode(false);
    edit.setData("abcd");
    edit.setMaximumByteCount(2);
    QSignalSpy counts(&edit, &QHexEdit::dataCountChanged);
    QByteArray bytes("xyz");
    edit.insert(1, bytes);
    QCOMPARE(bytes, QByteArray());
    QCOMPARE(counts.count(), 0);
}

void TestQHexEdit::insertingArrayInOverwriteModeReplaces()
{
    QHexEdit edit;
    edit.setData("abcd");
    QByteArray bytes("xy");
    edit.insert(1, bytes);
    QCOMPARE(edit.data(), QByteArray("axyd"));
}

void TestQHexEdit::insertingByteInsertsInBothModes()
{
    QHexEdit edit;
    edit.setData("ab");
    edit.insert(1, 'x');
    edit.setOverwriteMode(false);
    edit.insert(3, 'y');
    QCOMPARE(edit.data(), QByteArray("axby"));
}

void TestQHexEdit::overwritingIgnoresTheLimitAndEndsWithTheBytes()
{
    QHexEdit edit;
    edit.setData("abcd");
    edit.setMaximumByteCount(4);
    edit.setByteCountEnabled(3);
    QByteArray bytes = countingBytes(100);
    edit.insert(1, bytes);
    QCOMPARE(edit.data(), "a" + countingBytes(3));
    QCOMPARE(bytes.size(), 100);
    edit.undo();
    QCOMPARE(edit.data(), QByteArray("abcd"));
}

void TestQHexEdit::removingZeroesInOverwriteMode_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("result");

    QTest::newRow("negative") << -1 << QByteArray("abcd");
    QTest::newRow("nothing") << 0 << QByteArray("abcd");
    QTest::newRow("one") << 1 << QByteArray("a\0cd", 4);
    QTest::newRow("two") << 2 << QByteArray("a\0\0d", 4);
    QTest::newRow("past the end") << largest << QByteArray("a\0\0\0", 4);
}

void TestQHexEdit::removingZeroesInOverwriteMode()
{
    QFETCH(int, length);
    QHexEdit edit;
    edit.setData("abcd");
    edit.remove(1, length);
    QTEST(edit.data(), "result");
}

void TestQHexEdit::removingShrinksInInsertMode_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("result");

    QTest::newRow("negative") << -1 << QByteArray("abcd");
    QTest::newRow("nothing") << 0 << QByteArray("abcd");
    QTest::newRow("one") << 1 << QByteArray("acd");
    QTest::newRow("two") << 2 << QByteArray("ad");
    QTest::newRow("past the end") << largest << QByteArray("a");
}

void TestQHexEdit::removingShrinksInInsertMode()
{
    QFETCH(int, length);
    QHexEdit edit;
    edit.setOverwriteMode(false);
    edit.setData("abcd");
    edit.remove(1, length);
    QTEST(edit.data(), "result");
}

void TestQHexEdit::replacingResetsTheSelection()
{
    HexEditor editor("abcd");
    editor.select(1, 3);
    editor.edit.replace(0, 1, "x");
    QCOMPARE(editor.selection(), QVector<int>({1, 1}));
}

void TestQHexEdit::dataHasTheHiddenBytes()
{
    QHexEdit edit;
    QSignalSpy counts(&edit, &QHexEdit::dataCountChanged);
    edit.setByteCountEnabled(4);
    edit.setData(QByteArray(64, 'x'));
    QCOMPARE(edit.data(), QByteArray(64, 'x'));
    QCOMPARE(counts, QList<QVariantList>({{64}}));
}

void TestQHexEdit::cursorPositionCountsBytes()
{
    HexEditor editor("abcd");
    editor.edit.setCursorPosition(2);
    QCOMPARE(editor.view->cursorPos(), 4);
    editor.view->setCursorPos(5);
    QCOMPARE(editor.edit.cursorPosition(), 2);
}

void TestQHexEdit::cursorIsKeptWithinTheBytes_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("result");

    QTest::newRow("last digit when overwriting") << true << QByteArray("abcd") << 7 << 7;
    QTest::newRow("behind it when overwriting") << true << QByteArray("abcd") << 8 << 7;
    QTest::newRow("behind the last byte when inserting") << false << QByteArray("abcd") << 8 << 8;
    QTest::newRow("beyond that when inserting") << false << QByteArray("abcd") << 9 << 8;
    QTest::newRow("negative") << true << QByteArray("abcd") << -1 << 0;
    QTest::newRow("no data when overwriting") << true << QByteArray() << 5 << 0;
    QTest::newRow("no data when inserting") << false << QByteArray() << 5 << 0;
}

void TestQHexEdit::cursorIsKeptWithinTheBytes()
{
    QFETCH(bool, overwrite);
    QFETCH(QByteArray, data);
    QFETCH(int, position);
    HexEditor editor(data);
    editor.edit.setOverwriteMode(overwrite);
    editor.view->setCursorPos(position);
    QTEST(editor.view->cursorPos(), "result");
}

void TestQHexEdit::cursorTellsItsByte()
{
    QHexEdit edit;
    edit.setData("abcd");
    QSignalSpy moved(&edit, &QHexEdit::currentAddressChanged);
    edit.setCursorPosition(3);
    edit.setCursorPosition(100);
    QCOMPARE(moved, QList<QVariantList>({{3}, {3}}));
}

void TestQHexEdit::modeIsToldWhenItChanges()
{
    QHexEdit edit;
    QSignalSpy modes(&edit, &QHexEdit::overwriteModeChanged);
    edit.setOverwriteMode(true);
    edit.setOverwriteMode(false);
    edit.setOverwriteMode(false);
    edit.setOverwriteMode(true);
    QCOMPARE(modes, QList<QVariantList>({{false}, {true}}));
}

void TestQHexEdit::dumpTellsBytesAndSelection()
{
    HexEditor editor("0123456789abcdefgh");
    editor.edit.setBytesPerLine(4);
    QCOMPARE(editor.edit.toReadableString().count(QLatin1Char('\n')), 2);
    editor.select(16, 17);
    QCOMPARE(editor.edit.selectionToReadableString().simplified(), QStringLiteral("0010 67 68 gh"));
}

void TestQHexEdit::verticalBarCanBeTurnedOff()
{
    QHexEdit edit;
    edit.setScrollbarEnabled(Qt::Vertical, false);
    QCOMPARE(edit.verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    edit.setScrollbarEnabled(Qt::Vertical, true);
    QCOMPARE(edit.verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    QCOMPARE(edit.horizontalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
}

void TestQHexEdit::horizontalBarIsTurnedOffByNoOrientationOnly()
{
    QHexEdit edit;
    edit.setScrollbarEnabled(Qt::Horizontal, false);
    QCOMPARE(edit.horizontalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    edit.setScrollbarEnabled(Qt::Orientation(0), true);
    QCOMPARE(edit.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    edit.setScrollbarEnabled(Qt::Horizontal, false);
    QCOMPARE(edit.horizontalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
}

void TestQHexEdit::styleSheetGoesToTheBarOfTheOrientation()
{
    QHexEdit edit;
    edit.setStyleSheetForScrollbar(Qt::Vertical, QStringLiteral("width: 9px"));
    edit.setStyleSheetForScrollbar(Qt::Horizontal, QStringLiteral("height: 9px"));
    edit.setStyleSheetForScrollbar(Qt::Orientation(0), QStringLiteral("height: 1px"));
    QCOMPARE(edit.verticalScrollBar()->styleSheet(), QStringLiteral("width: 9px"));
    QCOMPARE(edit.horizontalScrollBar()->styleSheet(), QStringLiteral("height: 9px"));
}

void TestQHexEdit::fontIsThatOfTheBytes()
{
    HexEditor editor(QByteArray(64, 'x'));
    const QSize before = editor.view->minimumSize();
    editor.edit.setProperty("font", QFont(QStringLiteral("Courier"), 20));
    QCOMPARE(editor.view->font().pointSize(), 20);
    QCOMPARE(editor.edit.font(), editor.view->font());
    QVERIFY(editor.view->minimumWidth() > before.width());
    QVERIFY(editor.view->minimumHeight() > before.height());
}

void TestQHexEdit::extremeArgumentsDoNoHarm_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("largest") << largest;
    QTest::newRow("smallest") << smallest;
    QTest::newRow("negative") << -1;
}

void TestQHexEdit::extremeArgumentsDoNoHarm()
{
    QFETCH(int, number);
    HexEditor editor("abcd");
    editor.edit.setAddressOffset(number);
    editor.edit.setAddressWidth(number);
    editor.edit.setBytesPerLine(number);
    editor.edit.setCursorPosition(number);
    editor.view->resetSelection(number);
    editor.view->setSelection(number);
    editor.edit.selectionToReadableString();
    editor.view->grab();
    editor.type("a");
    editor.press(QKeySequence::Cut);
    editor.press(QKeySequence::Paste);
    editor.press(QKeySequence::Delete);
    editor.press(Qt::Key_Backspace);
    editor.edit.setOverwriteMode(false);
    editor.view->resetSelection(number);
    editor.edit.setCursorPosition(0);
    editor.type("a");
    editor.press(QKeySequence::Copy);
    QCOMPARE(editor.edit.data().size(), 4 + 1);
}

QTEST_MAIN(TestQHexEdit)
#include "tst_qhexedit.moc"
