#include "hexeditor.h"

#include <random>

namespace {
/// What undo and redo bring back: all bytes, and which of them are shown as changed.
struct Snapshot
{
    QByteArray data;
    QImage look;
};

/// The bytes with their change highlighting, without cursor and selection.
Snapshot snapshot(HexEditor &editor)
{
    editor.view->resetSelection(0);
    editor.edit.setReadOnly(true);
    const QImage look = editor.view->grab().toImage();
    editor.edit.setReadOnly(false);
    return {editor.edit.data(), look};
}

void editAtRandom(HexEditor &editor, std::mt19937 &random)
{
    const auto upTo = [&random](int most) { return int(random() % unsigned(most + 1)); };
    const int position = upTo(editor.edit.data().size());
    const int length = upTo(5);
    QByteArray bytes = countingBytes(upTo(5));
    switch (upTo(9)) {
    case 0:
        editor.edit.insert(position, char('A' + upTo(25)));
        break;
    case 1:
        editor.edit.insert(position, bytes);
        break;
    case 2:
        editor.edit.remove(position, length);
        break;
    case 3:
        editor.edit.replace(position, length, bytes);
        break;
    case 4:
        editor.edit.setOverwriteMode(!editor.edit.overwriteMode());
        break;
    case 5:
        editor.click(editor.digitAt(position, upTo(1) == 1));
        break;
    case 6:
        editor.click(editor.characterAt(position));
        break;
    case 7:
        editor.select(position, position + length);
        break;
    case 8:
        editor.press(upTo(1) == 1 ? QKeySequence::Delete : QKeySequence::Cut);
        break;
    default:
        editor.type("b7");
        break;
    }
}
} // namespace

class TestHexHistory : public QObject
{
    Q_OBJECT

private slots:
    void undoingAllRestoresTheStartAndRedoingAllTheEnd_data();
    void undoingAllRestoresTheStartAndRedoingAllTheEnd();
    void typingBothDigitsIsOneStep();
    void insertedByteWithBothDigitsIsOneStep();
    void typingOnTwoBytesIsTwoSteps();
    void changeFlagOfAReplacedByteComesBack();
    void undoKeepsTheCursorWithinTheBytes();
    void undoLeavesBytesThatACountAdded();
    void undoWithoutAStepOnlyTells();
};

void TestHexHistory::undoingAllRestoresTheStartAndRedoingAllTheEnd_data()
{
    QTest::addColumn<int>("seed");

    for (int seed = 1; seed <= 30; ++seed)
        QTest::addRow("seed %d", seed) << seed;
}

void TestHexHistory::undoingAllRestoresTheStartAndRedoingAllTheEnd()
{
    QFETCH(int, seed);
    constexpr int edits = 60;
    // No edit makes more steps than this.
    constexpr int steps = 8 * edits;
    HexEditor editor(countingBytes(20));
    editor.edit.setConsideration(false);
    editor.edit.setMaximumByteCount(40);
    const Snapshot start = snapshot(editor);
    std::mt19937 random(static_cast<unsigned>(seed));
    for (int i = 0; i < edits; ++i)
        editAtRandom(editor, random);
    const Snapshot end = snapshot(editor);
    QVERIFY(end.data != start.data);

    for (int i = 0; i < steps; ++i)
        editor.edit.undo();
    const Snapshot undone = snapshot(editor);
    QCOMPARE(undone.data, start.data);
    QCOMPARE(undone.look, start.look);

    for (int i = 0; i < steps; ++i)
        editor.edit.redo();
    const Snapshot redone = snapshot(editor);
    QCOMPARE(redone.data, end.data);
    QCOMPARE(redone.look, end.look);
}

void TestHexHistory::typingBothDigitsIsOneStep()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("ab");
    QCOMPARE(editor.hex(), QStringLiteral("ab02"));
    editor.edit.undo();
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    editor.edit.redo();
    QCOMPARE(editor.hex(), QStringLiteral("ab02"));
}

void TestHexHistory::insertedByteWithBothDigitsIsOneStep()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.edit.setOverwriteMode(false);
    editor.type("ab");
    QCOMPARE(editor.hex(), QStringLiteral("ab0102"));
    editor.edit.undo();
    QCOMPARE(editor.hex(), QStringLiteral("0102"));
    editor.edit.redo();
    QCOMPARE(editor.hex(), QStringLiteral("ab0102"));
}

void TestHexHistory::typingOnTwoBytesIsTwoSteps()
{
    HexEditor editor(QByteArray::fromHex("0102"));
    editor.type("abcd");
    editor.edit.undo();
    QCOMPARE(editor.hex(), QStringLiteral("ab02"));
}

void TestHexHistory::changeFlagOfAReplacedByteComesBack()
{
    HexEditor editor(countingBytes(4));
    editor.edit.setConsideration(false);
    const QImage unchanged = snapshot(editor).look;
    editor.view->replace(1, '\1');
    const QImage changed = snapshot(editor).look;
    QVERIFY(changed != unchanged);
    editor.edit.replace(1, 1, QByteArray(1, '\1'));
    editor.edit.undo();
    QCOMPARE(snapshot(editor).look, changed);
    editor.edit.undo();
    QCOMPARE(snapshot(editor).look, unchanged);
}

void TestHexHistory::undoKeepsTheCursorWithinTheBytes()
{
    HexEditor editor(countingBytes(1));
    QByteArray bytes = countingBytes(10);
    editor.edit.setOverwriteMode(false);
    editor.edit.insert(1, bytes);
    editor.edit.setCursorPosition(11);
    editor.edit.undo();
    QCOMPARE(editor.edit.cursorPosition(), 1);
}

void TestHexHistory::undoWithoutAStepOnlyTells()
{
    HexEditor editor("abc");
    QSignalSpy counts(&editor.edit, &QHexEdit::dataCountChanged);
    editor.edit.undo();
    editor.edit.redo();
    QCOMPARE(editor.edit.data(), QByteArray("abc"));
    QCOMPARE(counts.count(), 2);
}

void TestHexHistory::undoLeavesBytesThatACountAdded()
{
    HexEditor editor("ab");
    editor.edit.setOverwriteMode(false);
    editor.edit.insert(2, 'x');
    editor.edit.setByteCountEnabled(6);
    QCOMPARE(editor.hex(), QStringLiteral("616278000000"));
    editor.edit.undo();
    QCOMPARE(editor.hex(), QStringLiteral("6162000000"));
    editor.edit.redo();
    QCOMPARE(editor.hex(), QStringLiteral("616278000000"));
}

QTEST_MAIN(TestHexHistory)
#include "tst_hexhistory.moc"
