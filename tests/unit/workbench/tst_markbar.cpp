#include "framemarks.h"
#include "markbar.h"
#include "markcolor.h"
#include "messages.h"
#include "messagetemplate.h"

#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

class TestMarkBar : public QObject
{
    Q_OBJECT

private slots:
    void barWithoutMarksIsHidden();
    void everyMarkHasItsButton();
    void buttonShowsTheColourOfItsMark();
    void menuRemovesTheMark();
    void menuAsksToChangeTheMark();

private:
    static QToolButton *button(const MarkBar &bar, int index)
    {
        // Buttons of before live on until the event loop has time.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return bar.findChild<QToolButton *>(QStringLiteral("btnMark%1").arg(index));
    }
};

void TestMarkBar::barWithoutMarksIsHidden()
{
    FrameMarks marks;
    const MarkBar bar(&marks);
    QVERIFY(bar.isHidden());
    marks.add(MessageTemplate::forEveryFrame());
    QVERIFY(!bar.isHidden());
    marks.clear();
    QVERIFY(bar.isHidden());
}

void TestMarkBar::everyMarkHasItsButton()
{
    FrameMarks marks;
    const MarkBar bar(&marks);
    marks.add(MessageTemplate::forIdentifier(dataFrame(0x181)));
    marks.add(MessageTemplate::forIdentifier(dataFrame(0x281)));
    QCOMPARE(button(bar, 0)->text(), QStringLiteral("181"));
    QCOMPARE(button(bar, 1)->text(), QStringLiteral("281"));
    QVERIFY(button(bar, 2) == nullptr);
}

void TestMarkBar::buttonShowsTheColourOfItsMark()
{
    FrameMarks marks;
    MarkBar bar(&marks);
    marks.add(MessageTemplate::forIdentifier(dataFrame(1)));
    marks.add(MessageTemplate::forIdentifier(dataFrame(2)));
    QPalette dark(QColor(0x30, 0x30, 0x30));
    dark.setColor(QPalette::Base, Qt::black);
    for (const QPalette &palette : {bar.palette(), dark}) {
        bar.setPalette(palette);
        const QImage icon = button(bar, 1)->icon().pixmap(16, 16).toImage();
        QCOMPARE(icon.pixelColor(icon.rect().center()).rgb(), markColor(palette, marks.colorAt(1)).rgb());
    }
}

void TestMarkBar::menuRemovesTheMark()
{
    FrameMarks marks;
    const MarkBar bar(&marks);
    marks.add(MessageTemplate::forIdentifier(dataFrame(1)));
    marks.add(MessageTemplate::forIdentifier(dataFrame(2)));
    button(bar, 0)->menu()->actions().at(1)->trigger();
    QCOMPARE(marks.count(), 1);
    QCOMPARE(marks.at(0).id.value, 2U);
}

void TestMarkBar::menuAsksToChangeTheMark()
{
    FrameMarks marks;
    const MarkBar bar(&marks);
    const QSignalSpy asked(&bar, &MarkBar::editRequested);
    marks.add(MessageTemplate::forIdentifier(dataFrame(1)));
    marks.add(MessageTemplate::forIdentifier(dataFrame(2)));
    button(bar, 1)->menu()->actions().at(0)->trigger();
    QCOMPARE(asked.count(), 1);
    QCOMPARE(asked.first().first().toInt(), 1);
}

QTEST_MAIN(TestMarkBar)
#include "tst_markbar.moc"
