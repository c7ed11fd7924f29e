#include "hexeditor.h"

#include <QMetaMethod>
#include <QScrollBar>

namespace {
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

QTEST_MAIN(TestQHexEdit)
#include "tst_qhexedit.moc"
