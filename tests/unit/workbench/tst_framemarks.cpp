#include "framemarks.h"
#include "messages.h"
#include "messagetemplate.h"

#include <QSet>
#include <QSignalSpy>
#include <QTest>

class TestFrameMarks : public QObject
{
    Q_OBJECT

private slots:
    void frameTakesTheColourOfTheFirstMarkThatMatches();
    void frameThatNoMarkMatchesHasNoColour();
    void errorFramesAreNotMarked();
    void everyMarkHasAColourOfItsOwn();
    void fullListTakesNoMore();
    void colourOfARemovedMarkIsFreeAgain();
    void changedMarkKeepsItsColour();
    void everyChangeIsAnnouncedOnce();
    void marksComeBackFromTheSettings();
    void damagedSettingsLeaveNoMark();
    void tooManySavedMarksAreCut();

private:
    static CANRAW::CanRawCompareMessage markFor(quint32 identifier)
    {
        return MessageTemplate::forIdentifier(dataFrame(identifier));
    }
};

void TestFrameMarks::frameTakesTheColourOfTheFirstMarkThatMatches()
{
    FrameMarks marks;
    marks.add(markFor(0x100));
    marks.add(markFor(0x200));
    marks.add(MessageTemplate::forEveryFrame());
    QCOMPARE(marks.colorFor(at(0, dataFrame(0x100))), marks.colorAt(0));
    QCOMPARE(marks.colorFor(at(0, dataFrame(0x200))), marks.colorAt(1));
    QCOMPARE(marks.colorFor(at(0, dataFrame(0x300))), marks.colorAt(2));
}

void TestFrameMarks::frameThatNoMarkMatchesHasNoColour()
{
    FrameMarks marks;
    QCOMPARE(marks.colorFor(at(0, dataFrame(0x100))), -1);
    marks.add(markFor(0x200));
    QCOMPARE(marks.colorFor(at(0, dataFrame(0x100))), -1);
}

void TestFrameMarks::errorFramesAreNotMarked()
{
    FrameMarks marks;
    marks.add(MessageTemplate::forEveryFrame());
    CAN::CanMessage error;
    error.errorFrame = true;
    QCOMPARE(marks.colorFor(at(0, error)), -1);
}

void TestFrameMarks::everyMarkHasAColourOfItsOwn()
{
    FrameMarks marks;
    QSet<int> colors;
    for (int i = 0; i < FrameMarks::maxMarks; ++i) {
        QVERIFY(marks.add(markFor(static_cast<quint32>(i))));
        colors.insert(marks.colorAt(i));
    }
    QCOMPARE(colors.size(), FrameMarks::maxMarks);
}

void TestFrameMarks::fullListTakesNoMore()
{
    FrameMarks marks;
    for (int i = 0; i < FrameMarks::maxMarks; ++i)
        marks.add(markFor(static_cast<quint32>(i)));
    QVERIFY(marks.isFull());
    const QSignalSpy changed(&marks, &FrameMarks::changed);
    QVERIFY(!marks.add(markFor(0x100)));
    QCOMPARE(marks.count(), FrameMarks::maxMarks);
    QCOMPARE(changed.count(), 0);
}

void TestFrameMarks::colourOfARemovedMarkIsFreeAgain()
{
    FrameMarks marks;
    marks.add(markFor(1));
    marks.add(markFor(2));
    const int freed = marks.colorAt(0);
    marks.remove(0);
    marks.add(markFor(3));
    QCOMPARE(marks.colorAt(1), freed);
}

void TestFrameMarks::changedMarkKeepsItsColour()
{
    FrameMarks marks;
    marks.add(markFor(1));
    marks.add(markFor(2));
    const int color = marks.colorAt(1);
    marks.replace(1, markFor(3));
    QCOMPARE(marks.colorAt(1), color);
    QCOMPARE(marks.colorFor(at(0, dataFrame(3))), color);
}

void TestFrameMarks::everyChangeIsAnnouncedOnce()
{
    FrameMarks marks;
    const QSignalSpy changed(&marks, &FrameMarks::changed);
    marks.add(markFor(1));
    QCOMPARE(changed.count(), 1);
    marks.replace(0, markFor(2));
    QCOMPARE(changed.count(), 2);
    marks.remove(0);
    QCOMPARE(changed.count(), 3);
    marks.clear();
    QCOMPARE(changed.count(), 3); // nothing was there
    marks.setFromVariant({markFor(1).toByteArray(), markFor(2).toByteArray()});
    QCOMPARE(changed.count(), 4);
    marks.clear();
    QCOMPARE(changed.count(), 5);
}

void TestFrameMarks::marksComeBackFromTheSettings()
{
    FrameMarks saved;
    saved.add(markFor(0x123));
    saved.add(MessageTemplate::fromFrame(dataFrame(0x18FF00AA, "0102", true)));
    FrameMarks restored;
    restored.add(markFor(0x7FF));
    restored.setFromVariant(saved.toVariant());
    QCOMPARE(restored.count(), 2);
    for (int i = 0; i < 2; ++i)
        QCOMPARE(restored.at(i).toByteArray(), saved.at(i).toByteArray());
}

void TestFrameMarks::damagedSettingsLeaveNoMark()
{
    FrameMarks marks;
    marks.setFromVariant({QVariant(), QByteArray("\0\1\2", 3), 17, QStringLiteral("text"), markFor(5).toByteArray()});
    QCOMPARE(marks.count(), 1);
    QCOMPARE(marks.at(0).id.value, 5U);
}

void TestFrameMarks::tooManySavedMarksAreCut()
{
    QVariantList list;
    for (int i = 0; i < 3 * FrameMarks::maxMarks; ++i)
        list.append(markFor(static_cast<quint32>(i)).toByteArray());
    FrameMarks marks;
    marks.setFromVariant(list);
    QCOMPARE(marks.count(), FrameMarks::maxMarks);
}

QTEST_APPLESS_MAIN(TestFrameMarks)
#include "tst_framemarks.moc"
