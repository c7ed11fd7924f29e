#include "hexpicture.h"

#include <QPainter>

#include <functional>

namespace {
using Change = std::function<void(QHexEdit &)>;

/// What an editor's address column is to look like. A widget like that: a picture has other dots per inch, and the font
/// other pixels in it.
class AddressColumn : public QWidget
{
public:
    AddressColumn(HexEditor &editor, const QStringList &addresses)
        : m_editor(editor)
        , m_addresses(addresses)
    {
        setFont(editor.edit.font());
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), m_editor.edit.addressAreaColor());
        painter.setPen(m_editor.view->palette().color(QPalette::WindowText));
        for (int line = 0; line < m_addresses.size(); ++line)
            painter.drawText(0, (line + 1) * m_editor.charHeight(), m_addresses.at(line));
    }

private:
    HexEditor &m_editor;
    QStringList m_addresses;
};
} // namespace
Q_DECLARE_METATYPE(Change)

class TestHexLayout : public QObject
{
    Q_OBJECT

private slots:
    void changeOfTheAddressesPlacesTheCursorAnew_data();
    void changeOfTheAddressesPlacesTheCursorAnew();
    void cursorMovesWithTheAddresses();
    void lengthOfLinesWaitsForTheNextLayout();
    void addressesAreDrawn_data();
    void addressesAreDrawn();
    void cursorStandsAmongTheCharacters_data();
    void cursorStandsAmongTheCharacters();
};

void TestHexLayout::changeOfTheAddressesPlacesTheCursorAnew_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("placed");

    QTest::newRow("address area") << Change([](QHexEdit &edit) { edit.setAddressArea(false); }) << 1;
    QTest::newRow("address width") << Change([](QHexEdit &edit) { edit.setAddressWidth(6); }) << 1;
    QTest::newRow("address offset") << Change([](QHexEdit &edit) { edit.setAddressOffset(0x10000); }) << 0;
    QTest::newRow("characters") << Change([](QHexEdit &edit) { edit.setAsciiArea(false); }) << 0;
    QTest::newRow("font") << Change([](QHexEdit &edit) { edit.setFont(QFont(QStringLiteral("Courier"), 20)); }) << 0;
}

void TestHexLayout::changeOfTheAddressesPlacesTheCursorAnew()
{
    QFETCH(Change, change);
    HexEditor editor(countingBytes(32));
    QSignalSpy moved(&editor.edit, &QHexEdit::currentAddressChanged);
    change(editor.edit);
    QTEST(moved.count(), "placed");
}

void TestHexLayout::cursorMovesWithTheAddresses()
{
    HexEditor editor(QByteArray(32, '\x11'));
    const QRect bar(0, 4 + editor.charHeight() - 2, editor.charWidth(), 2);
    QVERIFY(!Picture(editor).isFilled(editor.view->palette().color(QPalette::WindowText), bar));
    editor.edit.setAddressArea(false);
    QVERIFY(Picture(editor).isFilled(editor.view->palette().color(QPalette::WindowText), bar));
}

void TestHexLayout::lengthOfLinesWaitsForTheNextLayout()
{
    HexEditor editor(countingBytes(32));
    editor.view->grab();
    // What was still to be painted is, and the cursor stands still.
    editor.view->clearFocus();
    QCoreApplication::processEvents();
    const QSize before = editor.view->minimumSize();
    const PaintWatcher watcher(editor);
    editor.edit.setBytesPerLine(8);
    QCoreApplication::processEvents();
    QCOMPARE(editor.view->minimumSize(), before);
    QVERIFY(watcher.painted().isEmpty());
    editor.view->adjust();
    QVERIFY(editor.view->minimumHeight() > before.height());
    QTRY_VERIFY(!watcher.painted().isEmpty());
}

void TestHexLayout::addressesAreDrawn_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("width");
    QTest::addColumn<QStringList>("addresses");

    QTest::newRow("offset") << 0x12A0 << 4
                            << QStringList({QStringLiteral("12a0"), QStringLiteral("12b0"), QStringLiteral("12c0")});
    QTest::newRow("wide") << 0 << 6
                          << QStringList(
                                 {QStringLiteral("000000"), QStringLiteral("000010"), QStringLiteral("000020")});
    QTest::newRow("narrow") << 0 << 0
                            << QStringList({QStringLiteral("00"), QStringLiteral("10"), QStringLiteral("20")});
    QTest::newRow("digits of the largest")
        << 0xFFFFF << 4 << QStringList({QStringLiteral("0fffff"), QStringLiteral("10000f"), QStringLiteral("10001f")});
}

void TestHexLayout::addressesAreDrawn()
{
    QFETCH(int, offset);
    QFETCH(int, width);
    QFETCH(QStringList, addresses);
    HexEditor editor(countingBytes(40));
    // Without the cursor, which stays where it was although the addresses may now reach there.
    editor.edit.setReadOnly(true);
    editor.edit.setAddressWidth(width);
    editor.edit.setAddressOffset(offset);
    const QSize column(addresses.at(0).length() * editor.charWidth() + 10 - 8, 4 * editor.charHeight());
    AddressColumn expected(editor, addresses);
    expected.resize(column);
    QCOMPARE(editor.view->grab(QRect(QPoint(), column)).toImage(), expected.grab().toImage());
}

void TestHexLayout::cursorStandsAmongTheCharacters_data()
{
    QTest::addColumn<bool>("overwrite");

    QTest::newRow("overwriting") << true;
    QTest::newRow("inserting") << false;
}

void TestHexLayout::cursorStandsAmongTheCharacters()
{
    QFETCH(bool, overwrite);
    HexEditor editor(QByteArray(32, '\x11'));
    editor.edit.setOverwriteMode(overwrite);
    const QColor black = editor.view->palette().color(QPalette::WindowText);
    const QRect cell(editor.xPosAscii() + 3 * editor.charWidth(), 4, editor.charWidth(), editor.charHeight());
    const QRect bar = overwrite ? QRect(cell.left(), cell.bottom() - 1, cell.width(), 2)
                                : QRect(cell.left(), cell.top(), 2, cell.height());
    QVERIFY(!Picture(editor).isFilled(black, bar));
    editor.click(editor.characterAt(3));
    // Shown now whatever the blinking did since.
    editor.view->setCursorPos(editor.view->cursorPos());
    QVERIFY(Picture(editor).isFilled(black, bar));
}

QTEST_MAIN(TestHexLayout)
#include "tst_hexlayout.moc"
