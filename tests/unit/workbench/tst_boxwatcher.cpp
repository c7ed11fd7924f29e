#include "boxwatcher.h"

#include <QMessageBox>
#include <QTest>

class TestBoxWatcher : public QObject
{
    Q_OBJECT

private slots:
    void boxIsNotedAndClosed();
};

void TestBoxWatcher::boxIsNotedAndClosed()
{
    const BoxWatcher watcher;
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Title"), QStringLiteral("It failed."), QMessageBox::Ok);
    box.setInformativeText(QStringLiteral("Try again."));
    box.exec();
    QCOMPARE(watcher.texts(), QStringList{QStringLiteral("It failed. Try again.")});
}

QTEST_MAIN(TestBoxWatcher)
#include "tst_boxwatcher.moc"
