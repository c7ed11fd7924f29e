#include "updaterequests.h"

#include <QtTest>

#include <optional>

class TestUpdateRequests : public QObject
{
    Q_OBJECT

private slots:
    void aFreeRequestIsAnsweredAtOnce();
    void heldRequestsAreAnsweredOnceAfterwards();
    void whatIsDroppedIsNotAnswered();
    void onlyTheLastToHoldAnswers();
};

void TestUpdateRequests::aFreeRequestIsAnsweredAtOnce()
{
    UpdateRequests requests;
    QVERIFY(requests.comeIn());
    QVERIFY(!requests.takeKept());
}

void TestUpdateRequests::heldRequestsAreAnsweredOnceAfterwards()
{
    UpdateRequests requests;
    {
        const UpdateRequests::Hold hold(requests);
        QVERIFY(!requests.comeIn());
        QVERIFY(!requests.comeIn());
    }
    QVERIFY(requests.takeKept());
    QVERIFY(!requests.takeKept());
}

void TestUpdateRequests::whatIsDroppedIsNotAnswered()
{
    UpdateRequests requests;
    {
        const UpdateRequests::Hold hold(requests);
        QVERIFY(!requests.comeIn());
        requests.dropKept();
    }
    QVERIFY(!requests.takeKept());
}

void TestUpdateRequests::onlyTheLastToHoldAnswers()
{
    UpdateRequests requests;
    {
        const UpdateRequests::Hold outer(requests);
        {
            const UpdateRequests::Hold inner(requests);
            QVERIFY(!requests.comeIn());
        }
        QVERIFY(!requests.takeKept());
        QVERIFY(!requests.comeIn());
    }
    QVERIFY(requests.takeKept());
}

QTEST_APPLESS_MAIN(TestUpdateRequests)
#include "tst_updaterequests.moc"
