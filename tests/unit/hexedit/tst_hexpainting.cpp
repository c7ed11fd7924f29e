#include "hexpicture.h"

namespace {
const QColor orange(0xFD, 0x9E, 0x3F);
const QColor yellow(0xFF, 0xFF, 0x99);
const QColor blue(0x6D, 0x9E, 0xFF);
const QColor grey(0x96, 0x96, 0x96);

/// Black on white, with the cursor out of the way at the end.
void prepare(HexEditor &editor)
{
    QPalette colours;
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::WindowText, Qt::black);
    editor.view->setPalette(colours);
    editor.press(QKeySequence::MoveToEndOfDocument);
}

QRect overwriteBar(const HexEditor &editor)
{
    return QRect(editor.xPosHex(), 4 + editor.charHeight() - 2, editor.charWidth(), 2);
}

QRect insertBar(const HexEditor &editor)
{
    return QRect(editor.xPosHex(), 4, 2, editor.charHeight());
}

int area(const QRect &rect)
{
    return rect.width() * rect.height();
}
} // namespace

class TestHexPainting : public QObject
{
    Q_OBJECT

private slots:
    void consideredByteIsBlackOnOrange();
    void otherBytesAreGreyUnderConsideration();
    void bytesBeyondTheBitsAreGrey();
    void gapOfAConsideredByteHasNoBackground();
    void typingTurnsAGreyByteOrangeAtOnce();
    void considerationHidesSelectionAndChanges();
    void selectionShowsAmongTheCharacters();
    void selectionIsWhiteOnItsColour();
    void selectionGoesBeforeChange();
    void changedByteHasItsColour();
    void changedByteHasItsPen();
    void changesCanBeHidden();
    void charactersShowNoChanges();
    void plainByteIsDrawnWithoutBackground();
    void addressColumnHasItsColour();
    void addressesCanBeTurnedOff();
    void charactersCanBeTurnedOff();
    void lineStandsBeforeTheCharacters();
    void cursorIsABarBelowWhenOverwriting();
    void cursorIsABarAtTheLeftWhenInserting();
    void cursorNeedsFocusAndWriting_data();
    void cursorNeedsFocusAndWriting();
    void cursorBlinks();
    void blinkingRedrawsTheCursorOnly();
    void sizeIsToldOnceByPainting();
    void endOfManyBytesLooksLikeTheStart();
    void middleOfALongLineLooksLikeTheStart();
    void hiddenBytesAreNotDrawn();
};

void TestHexPainting::consideredByteIsBlackOnOrange()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.view->setConsideredByte(3);
    const Picture picture(editor);
    QVERIFY(2 * picture.pixels(orange, picture.digits(3)) > area(picture.digits(3)));
    QVERIFY(!picture.has(grey, picture.digits(3)));
}

void TestHexPainting::otherBytesAreGreyUnderConsideration()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.view->setConsideredByte(3);
    const Picture picture(editor);
    QVERIFY(picture.has(grey, picture.digits(4)));
    QVERIFY(!picture.has(orange, picture.digits(4)));
    QVERIFY(!picture.has(Qt::black, picture.digits(4)));
}

void TestHexPainting::bytesBeyondTheBitsAreGrey()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setConsiderBitArray(QBitArray(4, true));
    const Picture picture(editor);
    QVERIFY(picture.has(orange, picture.digits(3)));
    QVERIFY(picture.has(grey, picture.digits(4)));
}

void TestHexPainting::gapOfAConsideredByteHasNoBackground()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setBytesHighlighted(true);
    const Picture picture(editor);
    QVERIFY(!picture.has(orange, picture.gap(3)));
}

void TestHexPainting::typingTurnsAGreyByteOrangeAtOnce()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    QVERIFY(!Picture(editor).has(orange, Picture(editor).digits(0)));
    editor.edit.setCursorPosition(0);
    editor.type("a");
    const Picture picture(editor);
    QVERIFY(picture.has(orange, picture.digits(0)));
}

void TestHexPainting::considerationHidesSelectionAndChanges()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.view->replace(3, '\xA5');
    const QImage before = Picture(editor).image();
    editor.select(2, 6);
    const Picture picture(editor);
    for (int byte = 0; byte < 8; ++byte) {
        QVERIFY(!picture.has(blue, picture.digits(byte)));
        QVERIFY(!picture.has(yellow, picture.digits(byte)));
        QCOMPARE(picture.image().copy(picture.digits(byte)), before.copy(picture.digits(byte)));
    }
}

void TestHexPainting::selectionShowsAmongTheCharacters()
{
    HexEditor editor(QByteArray(32, 'x'));
    prepare(editor);
    editor.select(2, 4);
    const Picture picture(editor);
    QVERIFY(!picture.has(blue, picture.character(1)));
    QVERIFY(picture.has(blue, picture.character(2)));
    QVERIFY(picture.has(blue, picture.character(3)));
    QVERIFY(!picture.has(blue, picture.character(4)));
}

void TestHexPainting::selectionIsWhiteOnItsColour()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setConsideration(false);
    editor.edit.setSelectionColor(Qt::red);
    editor.select(2, 4);
    const Picture picture(editor);
    QVERIFY(picture.has(Qt::red, picture.digits(2)));
    QVERIFY(picture.has(Qt::white, picture.digits(2)));
    QVERIFY(!picture.has(Qt::black, picture.digits(2)));
    QVERIFY(picture.isFilled(Qt::red, picture.gap(2)));
    QVERIFY(!picture.has(Qt::red, picture.digits(4)));
}

void TestHexPainting::selectionGoesBeforeChange()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setConsideration(false);
    editor.view->replace(2, '\xA5');
    editor.select(2, 3);
    const Picture picture(editor);
    QVERIFY(picture.has(blue, picture.digits(2)));
    QVERIFY(!picture.has(yellow, picture.digits(2)));
}

void TestHexPainting::changedByteHasItsColour()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setConsideration(false);
    editor.view->replace(2, '\xA5');
    const Picture picture(editor);
    QVERIFY(picture.has(yellow, picture.digits(2)));
    QVERIFY(picture.isFilled(yellow, picture.gap(2)));
    QVERIFY(!picture.has(yellow, picture.digits(3)));
}

void TestHexPainting::changedByteHasItsPen()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setConsideration(false);
    editor.edit.setHighlightingColor(Qt::white);
    editor.edit.setHighlightingPenColor(Qt::red);
    editor.view->replace(2, '\xA5');
    const Picture picture(editor);
    QVERIFY(picture.has(Qt::red, picture.digits(2)));
    QVERIFY(!picture.has(Qt::red, picture.digits(3)));
}

void TestHexPainting::changesCanBeHidden()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setConsideration(false);
    editor.edit.setHighlighting(false);
    editor.view->replace(2, '\xA5');
    const Picture picture(editor);
    QVERIFY(!picture.has(yellow, picture.image().rect()));
}

void TestHexPainting::charactersShowNoChanges()
{
    HexEditor editor(QByteArray(32, 'x'));
    prepare(editor);
    editor.view->setConsideredByte(2);
    editor.view->replace(2, 'x');
    const Picture picture(editor);
    QVERIFY(!picture.has(yellow, picture.character(2)));
    QVERIFY(!picture.has(orange, picture.character(2)));
}

void TestHexPainting::plainByteIsDrawnWithoutBackground()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setConsideration(false);
    const Picture picture(editor);
    QVERIFY(picture.has(Qt::black, picture.digits(2)));
    QVERIFY(picture.isFilled(Qt::white, picture.gap(2)));
}

void TestHexPainting::addressColumnHasItsColour()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setAddressAreaColor(Qt::green);
    const Picture picture(editor);
    const QRect column = picture.addresses();
    const QRect below(column.left(), 60, column.width(), column.height() - 60);
    QVERIFY(picture.isFilled(Qt::green, below));
    QVERIFY(!picture.has(Qt::green, QRect(column.right() + 1, 0, 1000, column.height())));
}

void TestHexPainting::addressesCanBeTurnedOff()
{
    HexEditor editor(QByteArray(32, '\xA5'));
    prepare(editor);
    editor.edit.setAddressArea(false);
    const QRect first(0, 4, 2 * editor.charWidth(), editor.charHeight());
    const Picture picture(editor);
    QVERIFY(picture.has(grey, first));
    QVERIFY(picture.isFilled(Qt::white, QRect(0, 100, 10, 100)));
}

void TestHexPainting::charactersCanBeTurnedOff()
{
    HexEditor editor(QByteArray(32, 'x'));
    prepare(editor);
    const Picture with(editor);
    QVERIFY(!with.isFilled(Qt::white, with.characters()));
    editor.edit.setAsciiArea(false);
    const Picture without(editor);
    QVERIFY(without.isFilled(Qt::white, without.characters()));
}

void TestHexPainting::lineStandsBeforeTheCharacters()
{
    HexEditor editor(QByteArray(32, 'x'));
    prepare(editor);
    const Picture picture(editor);
    const QRect line(editor.xPosAscii() - 8, 0, 1, picture.image().height());
    QVERIFY(picture.isFilled(Qt::gray, line));
}

void TestHexPainting::cursorIsABarBelowWhenOverwriting()
{
    HexEditor editor(QByteArray(32, '\x11'));
    prepare(editor);
    QVERIFY(!Picture(editor).has(Qt::black, overwriteBar(editor)));
    editor.edit.setCursorPosition(0);
    QVERIFY(Picture(editor).isFilled(Qt::black, overwriteBar(editor)));
}

void TestHexPainting::cursorIsABarAtTheLeftWhenInserting()
{
    HexEditor editor(QByteArray(32, '\x11'));
    prepare(editor);
    editor.edit.setOverwriteMode(false);
    editor.edit.setCursorPosition(0);
    QVERIFY(Picture(editor).isFilled(Qt::black, insertBar(editor)));
}

void TestHexPainting::cursorNeedsFocusAndWriting_data()
{
    QTest::addColumn<bool>("focus");
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<bool>("shown");

    QTest::newRow("writable with focus") << true << false << true;
    QTest::newRow("without focus") << false << false << false;
    QTest::newRow("read only") << true << true << false;
}

void TestHexPainting::cursorNeedsFocusAndWriting()
{
    QFETCH(bool, focus);
    QFETCH(bool, readOnly);
    HexEditor editor(QByteArray(32, '\x11'));
    QVERIFY(editor.ready);
    prepare(editor);
    editor.edit.setReadOnly(readOnly);
    if (!focus)
        editor.view->clearFocus();
    editor.edit.setCursorPosition(0);
    QTEST(Picture(editor).has(Qt::black, overwriteBar(editor)), "shown");
}

void TestHexPainting::cursorBlinks()
{
    HexEditor editor(QByteArray(32, '\x11'));
    prepare(editor);
    editor.edit.setCursorPosition(0);
    QTRY_VERIFY(!Picture(editor).has(Qt::black, overwriteBar(editor)));
    QTRY_VERIFY(Picture(editor).has(Qt::black, overwriteBar(editor)));
}

void TestHexPainting::blinkingRedrawsTheCursorOnly()
{
    HexEditor editor(QByteArray(32, '\x11'));
    editor.edit.setCursorPosition(0);
    QCoreApplication::processEvents();
    const PaintWatcher watcher(editor);
    editor.view->updateCursor();
    QTRY_VERIFY(!watcher.painted().isEmpty());
    QCOMPARE(watcher.painted().boundingRect(), QRect(editor.xPosHex(), 4, editor.charWidth(), editor.charHeight()));
}

void TestHexPainting::sizeIsToldOnceByPainting()
{
    HexEditor editor;
    QSignalSpy sizes(&editor.edit, &QHexEdit::currentSizeChanged);
    editor.edit.setData(QByteArray(32, 'x'));
    QCOMPARE(sizes.count(), 0);
    editor.view->grab();
    editor.view->grab();
    QCOMPARE(sizes, QList<QVariantList>({{32}}));
    editor.edit.setByteCountEnabled(8);
    editor.view->grab();
    QCOMPARE(sizes, QList<QVariantList>({{32}, {8}}));
}

void TestHexPainting::endOfManyBytesLooksLikeTheStart()
{
    constexpr int size = 8 * 1024 * 1024;
    HexEditor editor(QByteArray(size, '\xA5'));
    editor.edit.setAddressArea(false);
    editor.edit.setReadOnly(true);
    const QRect lines(0, 4, editor.view->minimumWidth(), 3 * editor.charHeight());
    const QImage start = editor.view->grab(lines).toImage();
    const QImage end = editor.view->grab(lines.translated(0, (size / 16 - 3) * editor.charHeight())).toImage();
    QVERIFY(Picture(editor).has(grey, lines));
    QCOMPARE(end, start);
}

void TestHexPainting::middleOfALongLineLooksLikeTheStart()
{
    constexpr int middle = 1 << 18;
    HexEditor editor;
    editor.edit.setAddressArea(false);
    editor.edit.setAsciiArea(false);
    editor.edit.setReadOnly(true);
    editor.edit.setBytesPerLine(2 * middle);
    editor.edit.setData(QByteArray(8 * 1024 * 1024, '\xA5'));
    const int step = 3 * editor.charWidth();
    const QRect bytes(step, 4, 20 * step, 3 * editor.charHeight());
    const QImage start = editor.view->grab(bytes).toImage();
    const QImage end = editor.view->grab(bytes.translated(middle * step, 0)).toImage();
    QVERIFY(Picture(editor).has(grey, bytes));
    QCOMPARE(end, start);
}

void TestHexPainting::hiddenBytesAreNotDrawn()
{
    HexEditor editor(QByteArray(32, 'x'));
    prepare(editor);
    editor.edit.setByteCountEnabled(4);
    const Picture picture(editor);
    QVERIFY(picture.has(grey, picture.digits(3)));
    QVERIFY(!picture.has(grey, picture.digits(4)));
    QVERIFY(!picture.has(Qt::black, picture.character(4)));
}

QTEST_MAIN(TestHexPainting)
#include "tst_hexpainting.moc"
