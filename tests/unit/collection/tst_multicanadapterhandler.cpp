#include "multicanadapterhandler.h"

#include "fakefamily.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <vector>

using Adapter = AbstractCanAdapter;

namespace {
constexpr Adapter::CanAdapterType fakeType = Adapter::CanAdapterKvaser;
constexpr Adapter::CanAdapterType otherType = Adapter::CanAdapterVectorVxl;

QString name(int number)
{
    return QStringLiteral("Device %1").arg(number);
}

/// An adapter of a device of its own, so that nothing is identical by accident.
FakeAdapter *makeFake(int number, const std::shared_ptr<CallRecord> &record = std::make_shared<CallRecord>())
{
    auto *adapter = new FakeAdapter(fakeType, name(number));
    adapter->record = record;
    adapter->prefix = QStringLiteral("%1: ").arg(number);
    return adapter;
}

quint16 identifierOf(const Adapter *adapter)
{
    return static_cast<quint16>(adapter->getCanAdapterOption(Adapter::OptionAdapterId).toUInt());
}

bool isPrimary(const Adapter *adapter)
{
    return adapter->getCanAdapterOption(Adapter::OptionPrimary).toBool();
}

quint16 linkOf(const Adapter *adapter)
{
    return static_cast<quint16>(adapter->getCanAdapterOption(Adapter::OptionLinkedAdapter).toUInt());
}

void link(Adapter *from, quint16 to)
{
    from->setCanAdapterOption(Adapter::OptionLinkedAdapter, uint(to));
}

/// "1 Device 1 PA", one word an adapter: identifier, device, P for primary, A for active, R for running, and the link.
QStringList picture(MultiCanAdapterHandler &collection)
{
    QStringList lines;
    const auto *map = collection.getAdapterMap();
    for (auto entry = map->cbegin(); entry != map->cend(); ++entry) {
        const Adapter *adapter = *entry;
        if (adapter == nullptr) {
            lines.append(QStringLiteral("%1 null").arg(entry.key()));
            continue;
        }
        QString line = QStringLiteral("%1 %2")
                           .arg(entry.key())
                           .arg(adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString());
        QString roles;
        if (isPrimary(adapter))
            roles += QLatin1Char('P');
        if (adapter->isActiveAdapter())
            roles += QLatin1Char('A');
        if (adapter->getRunning())
            roles += QLatin1Char('R');
        if (!roles.isEmpty())
            line += QLatin1Char(' ') + roles;
        if (linkOf(adapter) != 0)
            line += QStringLiteral(" ->%1").arg(linkOf(adapter));
        lines.append(line);
    }
    return lines;
}

QStringList lines(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts)
        list.append(QLatin1String(text));
    return list;
}

struct Stored
{
    int device;
    quint16 identifier;
    bool primary;
    bool active;
    quint16 link;
};

QByteArray bytesOf(const Stored &stored)
{
    FakeAdapter adapter(fakeType, name(stored.device));
    adapter.setCanAdapterOption(Adapter::OptionAdapterId, QVariant::fromValue(stored.identifier));
    adapter.setCanAdapterOption(Adapter::OptionPrimary, stored.primary);
    adapter.setCanAdapterOption(Adapter::OptionActive, stored.active);
    adapter.setCanAdapterOption(Adapter::OptionLinkedAdapter, uint(stored.link));
    return adapter.getValuesAsByteArray();
}

Adapter *restore(MultiCanAdapterHandler &collection, const Stored &stored)
{
    return collection.addAdapterFromByteArray(fakeType, name(stored.device), bytesOf(stored));
}
} // namespace

Q_DECLARE_METATYPE(QVector<Stored>)

class TestMultiCanAdapterHandler : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { FakeFamily::install(fakeType); }
    void cleanupTestCase() { CanAdapterFactory::unregisterFamily(fakeType); }

    void emptyCollectionAnswersEverything();

    void identifiersCountFromOne();
    void identifierIsOneAboveTheHighest();
    void keptIdentifier_data();
    void keptIdentifier();
    void numbersRunOutOnlyWhenAllAreInUse();

    void addedAdapterBelongsToTheCollection();
    void adapterIsTakenUpOnce();
    void adapterOfAnotherCollectionStaysThere();
    void addingNullGivesZero();
    void ownMarksOfAnAddedAdapterCountForNothing();

    void firstAdapterIsPrimaryInAnyCase();
    void newPrimaryTakesTheRole();
    void onlyOneOfIdenticalAdaptersIsActive_data();
    void onlyOneOfIdenticalAdaptersIsActive();
    void newPrimaryPutsItsTwinToRest();

    void activeChangesAreAnsweredByRole();
    void activeStateFollowsWhatIsAllowed();
    void primaryCanBeGivenButNotTakenAway();
    void primaryByRowPutsItsTwinToRest();

    void rowsFollowIdentifiers();
    void connectedAdaptersAreTheRunningOnes();

    void removedAdapterIsGoneBeforeAnybodyHears();
    void removedPrimaryIsFollowed_data();
    void removedPrimaryIsFollowed();
    void runningAdapterIsClosedBeforeItDies();
    void linksEndWithTheirPartner();
    void removingAllTellsOfEach();
    void destructorClosesAndDeletesInSilence();

    void replacementTakesThePlace();
    void replacementOfARunningAdapterFindsItClosed();
    void replacementKeepsOrBringsTheLink_data();
    void replacementKeepsOrBringsTheLink();
    void replacementThatEqualsAnActiveOneIsPutToRest();
    void replacedPrimaryPutsItsNewTwinToRest();
    void uselessReplacementChangesNothing();

    void moveSwapsIdentifiers();
    void moveAtTheEdgeStays();
    void linksFollowAMove();
    void strangersDoNotMove();

    void adapterDeletedByOthersLeavesTheMap();
    void adapterDeletedAfterItsSignalsWereCutLeavesTheMap();
    void adapterDeletedWithAForeignParentLeavesTheMap();
    void slotOnDestroyedSeesTheMapInOrder();

    void settingsSurviveARestart();
    void rolesComeBackInFileOrder_data();
    void rolesComeBackInFileOrder();
    void rolesAreSettledByTheFirstChange();
    void linkToAnAdapterThatDidNotComeBackEnds();
    void unknownTypeIsNotRestored();
    void damagedBytesStillGiveAnAdapter();
    void restoredIdentifierThatIsTakenIsReplaced();

    void slotMayRemoveTheRest();
    void slotMayAddWhileAllGo();
    void slotMayRemoveWhileAnAdapterCloses();
    void slotMayReplaceWhileAnAdapterCloses();
    void slotMayDeleteTheCollection();
    void slotMayDeleteTheCollectionWhileAnAdapterCloses();

    void rulesHoldAfterAnySequence_data();
    void rulesHoldAfterAnySequence();
};

void TestMultiCanAdapterHandler::emptyCollectionAnswersEverything()
{
    MultiCanAdapterHandler collection;
    QSignalSpy removed(&collection, &MultiCanAdapterHandler::adapterRemoved);
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    QVERIFY(collection.getAdapterMap()->isEmpty());
    QCOMPARE(collection.getAdapterCount(), quint16(0));
    QCOMPARE(collection.getActiveAdapterCount(), quint16(0));
    QVERIFY(collection.adapterAt(0) == nullptr);
    QVERIFY(collection.getPrimaryAdapter() == nullptr);
    QVERIFY(collection.getConnectedAdapters().isEmpty());
    QCOMPARE(collection.moveAdapter(nullptr, MultiCanAdapterHandler::Up), quint16(0));
    for (const int row : {-1, 0, 1, 65536}) {
        QCOMPARE(collection.couldActiveChanged(row), int(MultiCanAdapterHandler::ActiveCanChange));
        collection.handleActiveChanged(row, true);
        collection.handlePrimaryChanged(row, true);
    }
    collection.removeAdapterAt(0);
    collection.removeAllAdapters();
    collection.updateAdapter(1, nullptr);
    QCOMPARE(removed.size(), 0);
    QCOMPARE(changed.size(), 0);
}

void TestMultiCanAdapterHandler::identifiersCountFromOne()
{
    MultiCanAdapterHandler collection;
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    for (quint16 number = 1; number <= 3; ++number) {
        FakeAdapter *adapter = makeFake(number);
        QCOMPARE(collection.addNewCanAdapter(adapter, false, false, false), number);
        QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionAdapterId), QVariant::fromValue(number));
        QCOMPARE(collection.getAdapterMap()->value(number).data(), adapter);
        QCOMPARE(changed.size(), int(number));
    }
    QCOMPARE(collection.getAdapterCount(), quint16(3));
}

void TestMultiCanAdapterHandler::identifierIsOneAboveTheHighest()
{
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 3; ++number)
        collection.addNewCanAdapter(makeFake(number), false, false, false);
    collection.removeAdapterAt(0);
    QCOMPARE(collection.addNewCanAdapter(makeFake(4), false, false, false), quint16(4));
}

void TestMultiCanAdapterHandler::keptIdentifier_data()
{
    QTest::addColumn<QVariant>("own");
    QTest::addColumn<int>("expected");
    QTest::newRow("free") << QVariant(7u) << 7;
    QTest::newRow("the highest there is") << QVariant(65535u) << 65535;
    QTest::newRow("below the others") << QVariant(1u) << 1;
    QTest::newRow("taken") << QVariant(5u) << 6;
    QTest::newRow("none") << QVariant() << 6;
    QTest::newRow("zero") << QVariant(0u) << 6;
    QTest::newRow("too large for an identifier") << QVariant(65536u + 7) << 6;
    QTest::newRow("no number") << QVariant(QStringLiteral("seven")) << 6;
    QTest::newRow("negative") << QVariant(-3) << 6;
}

void TestMultiCanAdapterHandler::keptIdentifier()
{
    QFETCH(QVariant, own);
    MultiCanAdapterHandler collection;
    FakeAdapter *first = makeFake(1);
    first->setCanAdapterOption(Adapter::OptionAdapterId, 5u);
    QCOMPARE(collection.addNewCanAdapter(first, false, false, true), quint16(5));

    FakeAdapter *adapter = makeFake(2);
    adapter->setCanAdapterOption(Adapter::OptionAdapterId, own);
    const int identifier = collection.addNewCanAdapter(adapter, false, false, true);
    QTEST(identifier, "expected");
    QCOMPARE(int(identifierOf(adapter)), identifier);
}

void TestMultiCanAdapterHandler::numbersRunOutOnlyWhenAllAreInUse()
{
    constexpr int all = 65535;
    const auto record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler collection;
    FakeAdapter *highest = makeFake(0, record);
    highest->setCanAdapterOption(Adapter::OptionAdapterId, uint(all));
    QCOMPARE(collection.addNewCanAdapter(makeFake(1, record), false, false, false), quint16(1));
    QCOMPARE(collection.addNewCanAdapter(highest, false, false, true), quint16(all));
    QCOMPARE(collection.addNewCanAdapter(makeFake(2, record), false, false, false), quint16(2));
    for (uint number = 3; number < all; ++number) {
        FakeAdapter *adapter = makeFake(int(number), record);
        adapter->setCanAdapterOption(Adapter::OptionAdapterId, number);
        if (collection.addNewCanAdapter(adapter, false, false, true) != number)
            QFAIL("A free number was refused");
    }
    QCOMPARE(collection.getAdapterCount(), quint16(all));

    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    const std::unique_ptr<FakeAdapter> left(makeFake(all, record));
    QCOMPARE(collection.addNewCanAdapter(left.get(), true, true, false), quint16(0));
    QCOMPARE(collection.addNewCanAdapter(left.get(), true, true, true), quint16(0));
    QVERIFY(collection.addAdapterFromByteArray(fakeType, name(1), {}) == nullptr);
    QCOMPARE(changed.size(), 0);

    collection.removeAdapterAt(4711);
    FakeAdapter *last = makeFake(all + 1, record);
    QCOMPARE(collection.addNewCanAdapter(last, false, false, false), quint16(4712));
    collection.removeAllAdapters();
    QCOMPARE(collection.getAdapterCount(), quint16(0));
}

void TestMultiCanAdapterHandler::addedAdapterBelongsToTheCollection()
{
    auto collection = std::make_unique<MultiCanAdapterHandler>();
    auto formerParent = std::make_unique<QObject>();
    const QPointer<FakeAdapter> adapter = makeFake(1);
    adapter->setParent(formerParent.get());
    collection->addNewCanAdapter(adapter, false, false, false);
    formerParent.reset();
    QVERIFY(adapter);
    collection.reset();
    QVERIFY(!adapter);
}

void TestMultiCanAdapterHandler::adapterIsTakenUpOnce()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    FakeAdapter *second = makeFake(2);
    QCOMPARE(collection.addNewCanAdapter(second, false, false, false), quint16(2));
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    QCOMPARE(collection.addNewCanAdapter(second, true, true, false), quint16(2));
    QCOMPARE(picture(collection), lines({"1 Device 1 PA", "2 Device 2"}));
    QCOMPARE(changed.size(), 0);
}

void TestMultiCanAdapterHandler::adapterOfAnotherCollectionStaysThere()
{
    MultiCanAdapterHandler owner;
    MultiCanAdapterHandler other;
    FakeAdapter *adapter = makeFake(1);
    owner.addNewCanAdapter(adapter, false, false, false);
    other.addNewCanAdapter(makeFake(2), false, false, false);
    QCOMPARE(other.addNewCanAdapter(adapter, true, true, true), quint16(0));
    other.updateAdapter(1, adapter);
    QCOMPARE(other.moveAdapter(adapter, MultiCanAdapterHandler::Up), quint16(0));
    QCOMPARE(picture(other), lines({"1 Device 2 PA"}));
    QCOMPARE(picture(owner), lines({"1 Device 1 PA"}));
}

void TestMultiCanAdapterHandler::addingNullGivesZero()
{
    MultiCanAdapterHandler collection;
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    QCOMPARE(collection.addNewCanAdapter(nullptr, true, true, true), quint16(0));
    QCOMPARE(changed.size(), 0);
    QVERIFY(collection.getAdapterMap()->isEmpty());
}

void TestMultiCanAdapterHandler::ownMarksOfAnAddedAdapterCountForNothing()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, false, false);
    FakeAdapter *adapter = makeFake(2);
    adapter->setCanAdapterOption(Adapter::OptionPrimary, true);
    adapter->setCanAdapterOption(Adapter::OptionActive, true);
    collection.addNewCanAdapter(adapter, false, false, false);
    QCOMPARE(picture(collection), lines({"1 Device 1 PA", "2 Device 2"}));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionPrimary), QVariant(false));
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionActive), QVariant(false));
}

void TestMultiCanAdapterHandler::firstAdapterIsPrimaryInAnyCase()
{
    MultiCanAdapterHandler collection;
    FakeAdapter *adapter = makeFake(1);
    collection.addNewCanAdapter(adapter, false, false, false);
    QCOMPARE(picture(collection), lines({"1 Device 1 PA"}));
    QCOMPARE(collection.getPrimaryAdapter(), adapter);
    QCOMPARE(collection.getActiveAdapterCount(), quint16(1));
}

void TestMultiCanAdapterHandler::newPrimaryTakesTheRole()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, false, false);
    FakeAdapter *second = makeFake(2);
    collection.addNewCanAdapter(second, true, false, false);
    QCOMPARE(picture(collection), lines({"1 Device 1 A", "2 Device 2 PA"}));
    QCOMPARE(collection.getPrimaryAdapter(), second);
}

void TestMultiCanAdapterHandler::onlyOneOfIdenticalAdaptersIsActive_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QVariant>("port");
    QTest::addColumn<bool>("active");
    const QString device = name(1);
    const QString address = QStringLiteral("10.0.0.1");
    QTest::newRow("all the same") << int(fakeType) << device << address << QVariant(QStringLiteral("80")) << false;
    QTest::newRow("port as a number") << int(fakeType) << device << address << QVariant(80) << false;
    QTest::newRow("other type") << int(otherType) << device << address << QVariant(QStringLiteral("80")) << true;
    QTest::newRow("other device") << int(fakeType) << name(2) << address << QVariant(QStringLiteral("80")) << true;
    QTest::newRow("other address") << int(fakeType) << device << QStringLiteral("10.0.0.2")
                                   << QVariant(QStringLiteral("80")) << true;
    QTest::newRow("other port") << int(fakeType) << device << address << QVariant(QStringLiteral("81")) << true;
    QTest::newRow("no port") << int(fakeType) << device << address << QVariant() << true;
}

void TestMultiCanAdapterHandler::onlyOneOfIdenticalAdaptersIsActive()
{
    QFETCH(int, type);
    QFETCH(QString, device);
    QFETCH(QString, address);
    QFETCH(QVariant, port);
    MultiCanAdapterHandler collection;
    FakeAdapter *first = makeFake(1);
    first->setCanAdapterOption(Adapter::OptionIpAddress, QStringLiteral("10.0.0.1"));
    first->setCanAdapterOption(Adapter::OptionPort, QStringLiteral("80"));
    collection.addNewCanAdapter(first, false, true, false);

    auto *adapter = new FakeAdapter(static_cast<Adapter::CanAdapterType>(type), device);
    adapter->setCanAdapterOption(Adapter::OptionIpAddress, address);
    adapter->setCanAdapterOption(Adapter::OptionPort, port);
    collection.addNewCanAdapter(adapter, false, true, false);
    QTEST(adapter->isActiveAdapter(), "active");
    QVERIFY(first->isActiveAdapter());
}

void TestMultiCanAdapterHandler::newPrimaryPutsItsTwinToRest()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    collection.addNewCanAdapter(makeFake(1), true, true, false);
    QCOMPARE(picture(collection), lines({"1 Device 1", "2 Device 2 A", "3 Device 1 PA"}));
}

void TestMultiCanAdapterHandler::activeChangesAreAnsweredByRole()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false); // primary
    collection.addNewCanAdapter(makeFake(1), false, true, false); // its twin, inactive
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    collection.addNewCanAdapter(makeFake(3), false, false, false);
    QCOMPARE(collection.couldActiveChanged(0), int(MultiCanAdapterHandler::PrimaryStaysActive));
    QCOMPARE(collection.couldActiveChanged(1), int(MultiCanAdapterHandler::SameAdapterActive));
    QCOMPARE(collection.couldActiveChanged(2), int(MultiCanAdapterHandler::ActiveCanChange));
    QCOMPARE(collection.couldActiveChanged(3), int(MultiCanAdapterHandler::ActiveCanChange));
    QCOMPARE(collection.couldActiveChanged(4), int(MultiCanAdapterHandler::ActiveCanChange));
}

void TestMultiCanAdapterHandler::activeStateFollowsWhatIsAllowed()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(1), false, false, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    const QStringList before = picture(collection);
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);

    collection.handleActiveChanged(0, false); // the primary one stays active
    collection.handleActiveChanged(1, true);  // an identical one is active
    collection.handleActiveChanged(-1, true);
    collection.handleActiveChanged(3, true);
    collection.handleActiveChanged(65536 + 2, false);
    QCOMPARE(picture(collection), before);

    collection.handleActiveChanged(2, false);
    QCOMPARE(picture(collection), lines({"1 Device 1 PA", "2 Device 1", "3 Device 2"}));
    QCOMPARE(collection.getActiveAdapterCount(), quint16(1));
    collection.handleActiveChanged(2, true);
    QCOMPARE(picture(collection), before);
    // The map is as it was: a reset of a view in the middle of a click would lose its selection.
    QCOMPARE(changed.size(), 0);
}

void TestMultiCanAdapterHandler::primaryCanBeGivenButNotTakenAway()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, false, false);
    const QStringList before = picture(collection);
    collection.handlePrimaryChanged(0, false);
    collection.handlePrimaryChanged(1, false);
    collection.handlePrimaryChanged(-1, true);
    collection.handlePrimaryChanged(2, true);
    collection.handlePrimaryChanged(65537, true);
    collection.handlePrimaryChanged(0, true);
    QCOMPARE(picture(collection), before);
    collection.handlePrimaryChanged(1, true);
    QCOMPARE(picture(collection), lines({"1 Device 1 A", "2 Device 2 PA"}));
}

void TestMultiCanAdapterHandler::primaryByRowPutsItsTwinToRest()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(1), false, false, false);
    collection.handlePrimaryChanged(1, true);
    QCOMPARE(picture(collection), lines({"1 Device 1", "2 Device 1 PA"}));
}

void TestMultiCanAdapterHandler::rowsFollowIdentifiers()
{
    MultiCanAdapterHandler collection;
    QList<FakeAdapter *> added;
    for (const uint identifier : {30u, 10u, 20u}) {
        added.append(makeFake(int(identifier)));
        added.last()->setCanAdapterOption(Adapter::OptionAdapterId, identifier);
        collection.addNewCanAdapter(added.last(), false, false, true);
    }
    QCOMPARE(collection.adapterAt(0), added[1]);
    QCOMPARE(collection.adapterAt(1), added[2]);
    QCOMPARE(collection.adapterAt(2), added[0]);
    QVERIFY(collection.adapterAt(3) == nullptr);
    QVERIFY(collection.adapterAt(65535) == nullptr);
}

void TestMultiCanAdapterHandler::connectedAdaptersAreTheRunningOnes()
{
    MultiCanAdapterHandler collection;
    QList<FakeAdapter *> added;
    for (int number = 1; number <= 3; ++number) {
        added.append(makeFake(number));
        collection.addNewCanAdapter(added.last(), false, false, false);
    }
    QVERIFY(collection.getConnectedAdapters().isEmpty());
    added[2]->setRunning(true);
    added[0]->setRunning(true);
    const QList<QPointer<Adapter>> expected = {added[0], added[2]};
    QCOMPARE(collection.getConnectedAdapters(), expected);
}

void TestMultiCanAdapterHandler::removedAdapterIsGoneBeforeAnybodyHears()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    const QPointer<FakeAdapter> second = makeFake(2);
    collection.addNewCanAdapter(second, false, true, false);
    QStringList heard;
    const auto state = [&] {
        return QLatin1String(second ? "alive, " : "dead, ") + picture(collection).join(QLatin1Char(','));
    };
    connect(&collection, &MultiCanAdapterHandler::adapterRemoved, this,
            [&](quint16 identifier) { heard.append(QStringLiteral("removed %1 ").arg(identifier) + state()); });
    connect(&collection, &MultiCanAdapterHandler::adapterMapChanged, this,
            [&] { heard.append(QLatin1String("changed ") + state()); });
    collection.removeAdapterAt(2);
    QVERIFY(heard.isEmpty());
    collection.removeAdapterAt(1);
    QCOMPARE(heard, lines({"removed 2 dead, 1 Device 1 PA", "changed dead, 1 Device 1 PA"}));
}

void TestMultiCanAdapterHandler::removedPrimaryIsFollowed_data()
{
    QTest::addColumn<bool>("secondActive");
    QTest::addColumn<bool>("thirdActive");
    QTest::addColumn<QStringList>("after");
    QTest::newRow("by the first active one") << false << true << lines({"2 Device 2", "3 Device 3 PA"});
    QTest::newRow("by the lowest active one") << true << true << lines({"2 Device 2 PA", "3 Device 3 A"});
    QTest::newRow("by the lowest one") << false << false << lines({"2 Device 2 PA", "3 Device 3"});
}

void TestMultiCanAdapterHandler::removedPrimaryIsFollowed()
{
    QFETCH(bool, secondActive);
    QFETCH(bool, thirdActive);
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, secondActive, false);
    collection.addNewCanAdapter(makeFake(3), false, thirdActive, false);
    collection.removeAdapterAt(0);
    QTEST(picture(collection), "after");
}

void TestMultiCanAdapterHandler::runningAdapterIsClosedBeforeItDies()
{
    const auto record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1, record), false, true, false);
    collection.adapterAt(0)->setRunning(true);
    record->take();
    collection.removeAdapterAt(0);
    QCOMPARE(record->take(), lines({"1: close", "1: ~"}));

    collection.addNewCanAdapter(makeFake(2, record), false, true, false);
    collection.removeAdapterAt(0);
    QCOMPARE(record->take(), lines({"2: ~"}));
}

void TestMultiCanAdapterHandler::linksEndWithTheirPartner()
{
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 4; ++number)
        collection.addNewCanAdapter(makeFake(number), false, false, false);
    link(collection.adapterAt(0), 3);
    link(collection.adapterAt(1), 2);
    // As it is read: cut to 16 bits.
    collection.adapterAt(3)->setCanAdapterOption(Adapter::OptionLinkedAdapter, 65536u + 3);
    collection.removeAdapterAt(2);
    QCOMPARE(picture(collection), lines({"1 Device 1 PA", "2 Device 2 ->2", "4 Device 4"}));
    QCOMPARE(collection.adapterAt(0)->getCanAdapterOption(Adapter::OptionLinkedAdapter), QVariant(0u));
}

void TestMultiCanAdapterHandler::removingAllTellsOfEach()
{
    const auto record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 3; ++number)
        collection.addNewCanAdapter(makeFake(number, record), false, false, false);
    collection.adapterAt(1)->setRunning(true);
    record->take();
    QSignalSpy removed(&collection, &MultiCanAdapterHandler::adapterRemoved);
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    collection.removeAllAdapters();
    QCOMPARE(record->take(), lines({"2: close", "1: ~", "2: ~", "3: ~"}));
    QCOMPARE(removed.size(), 3);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(removed[i][0].value<quint16>(), quint16(i + 1));
    QCOMPARE(changed.size(), 1);
    QVERIFY(collection.getAdapterMap()->isEmpty());
    QCOMPARE(collection.addNewCanAdapter(makeFake(4, record), false, false, false), quint16(1));
}

void TestMultiCanAdapterHandler::destructorClosesAndDeletesInSilence()
{
    const auto record = std::make_shared<CallRecord>();
    auto collection = std::make_unique<MultiCanAdapterHandler>();
    collection->addNewCanAdapter(makeFake(1, record), false, true, false);
    collection->addNewCanAdapter(makeFake(2, record), false, true, false);
    collection->adapterAt(1)->setRunning(true);
    record->take();
    int heard = 0;
    connect(collection.get(), &MultiCanAdapterHandler::adapterRemoved, this, [&] { ++heard; });
    connect(collection.get(), &MultiCanAdapterHandler::adapterMapChanged, this, [&] { ++heard; });
    collection.reset();
    QCOMPARE(record->take(), lines({"2: close", "1: ~", "2: ~"}));
    QCOMPARE(heard, 0);
}

void TestMultiCanAdapterHandler::replacementTakesThePlace()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    collection.addNewCanAdapter(makeFake(3), false, false, false);
    link(collection.adapterAt(2), 1);
    QSignalSpy removed(&collection, &MultiCanAdapterHandler::adapterRemoved);
    QList<bool> oldAliveAtChange;
    QPointer<Adapter> old = collection.adapterAt(0);
    connect(&collection, &MultiCanAdapterHandler::adapterMapChanged, this,
            [&] { oldAliveAtChange.append(!old.isNull()); });

    FakeAdapter *replacement = makeFake(4);
    collection.updateAdapter(1, replacement);
    QVERIFY(old.isNull());
    QCOMPARE(collection.adapterAt(0), replacement);
    QCOMPARE(identifierOf(replacement), quint16(1));
    QCOMPARE(picture(collection), lines({"1 Device 4 PA", "2 Device 2 A", "3 Device 3 ->1"}));

    old = collection.adapterAt(2);
    FakeAdapter *inactive = makeFake(5);
    inactive->setCanAdapterOption(Adapter::OptionPrimary, true);
    inactive->setCanAdapterOption(Adapter::OptionActive, true);
    collection.updateAdapter(3, inactive);
    QCOMPARE(picture(collection), lines({"1 Device 4 PA", "2 Device 2 A", "3 Device 5 ->1"}));

    // The number stays in use, so nobody may forget what belongs to it.
    QCOMPARE(removed.size(), 0);
    QCOMPARE(oldAliveAtChange, (QList<bool>{false, false}));
}

void TestMultiCanAdapterHandler::replacementOfARunningAdapterFindsItClosed()
{
    const auto record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1, record), false, true, false);
    collection.adapterAt(0)->setRunning(true);
    record->take();
    collection.updateAdapter(1, makeFake(2, record));
    QCOMPARE(record->take(), lines({"1: close", "1: ~"}));
    QCOMPARE(picture(collection), lines({"1 Device 2 PA"}));
}

void TestMultiCanAdapterHandler::replacementKeepsOrBringsTheLink_data()
{
    QTest::addColumn<QVariant>("brought");
    QTest::addColumn<int>("expected");
    QTest::newRow("says nothing") << QVariant() << 2;
    QTest::newRow("another one") << QVariant(3u) << 3;
    QTest::newRow("none") << QVariant(0u) << 0;
}

void TestMultiCanAdapterHandler::replacementKeepsOrBringsTheLink()
{
    QFETCH(QVariant, brought);
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 3; ++number)
        collection.addNewCanAdapter(makeFake(number), false, false, false);
    link(collection.adapterAt(0), 2);
    FakeAdapter *replacement = makeFake(4);
    if (brought.isValid())
        replacement->setCanAdapterOption(Adapter::OptionLinkedAdapter, brought);
    collection.updateAdapter(1, replacement);
    QTEST(int(linkOf(replacement)), "expected");
}

void TestMultiCanAdapterHandler::replacementThatEqualsAnActiveOneIsPutToRest()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    collection.updateAdapter(2, makeFake(1));
    QCOMPARE(picture(collection), lines({"1 Device 1 PA", "2 Device 1"}));
}

void TestMultiCanAdapterHandler::replacedPrimaryPutsItsNewTwinToRest()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    collection.updateAdapter(1, makeFake(2));
    QCOMPARE(picture(collection), lines({"1 Device 2 PA", "2 Device 2"}));
}

void TestMultiCanAdapterHandler::uselessReplacementChangesNothing()
{
    MultiCanAdapterHandler collection;
    FakeAdapter *first = makeFake(1);
    FakeAdapter *second = makeFake(2);
    collection.addNewCanAdapter(first, false, true, false);
    collection.addNewCanAdapter(second, false, true, false);
    first->setRunning(true);
    const QStringList before = picture(collection);
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    const std::unique_ptr<FakeAdapter> replacement(makeFake(3));
    collection.updateAdapter(0, replacement.get());
    collection.updateAdapter(3, replacement.get());
    collection.updateAdapter(1, nullptr);
    collection.updateAdapter(1, first);
    collection.updateAdapter(1, second);
    QCOMPARE(picture(collection), before);
    QCOMPARE(changed.size(), 0);
}

void TestMultiCanAdapterHandler::moveSwapsIdentifiers()
{
    MultiCanAdapterHandler collection;
    for (const uint identifier : {2u, 5u, 9u}) {
        FakeAdapter *adapter = makeFake(int(identifier));
        adapter->setCanAdapterOption(Adapter::OptionAdapterId, identifier);
        collection.addNewCanAdapter(adapter, false, identifier == 5, true);
    }
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    QSignalSpy removed(&collection, &MultiCanAdapterHandler::adapterRemoved);
    Adapter *moved = collection.adapterAt(0);
    QCOMPARE(collection.moveAdapter(moved, MultiCanAdapterHandler::Down), quint16(5));
    QCOMPARE(picture(collection), lines({"2 Device 5 A", "5 Device 2 PA", "9 Device 9"}));
    QCOMPARE(collection.moveAdapter(moved, MultiCanAdapterHandler::Down), quint16(9));
    QCOMPARE(collection.moveAdapter(moved, MultiCanAdapterHandler::Up), quint16(5));
    QCOMPARE(picture(collection), lines({"2 Device 5 A", "5 Device 2 PA", "9 Device 9"}));
    for (const QPointer<Adapter> &adapter : collection.getAdapterMap()->values())
        QCOMPARE(identifierOf(adapter), collection.getAdapterMap()->key(adapter));
    QCOMPARE(changed.size(), 3);
    QCOMPARE(removed.size(), 0);
}

void TestMultiCanAdapterHandler::moveAtTheEdgeStays()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    const QStringList before = picture(collection);
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    QCOMPARE(collection.moveAdapter(collection.adapterAt(0), MultiCanAdapterHandler::Up), quint16(1));
    QCOMPARE(collection.moveAdapter(collection.adapterAt(1), MultiCanAdapterHandler::Down), quint16(2));
    const auto unknown = static_cast<MultiCanAdapterHandler::Direction>(7);
    QCOMPARE(collection.moveAdapter(collection.adapterAt(0), unknown), quint16(1));
    QCOMPARE(picture(collection), before);
    QCOMPARE(changed.size(), 0);
}

void TestMultiCanAdapterHandler::linksFollowAMove()
{
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 4; ++number)
        collection.addNewCanAdapter(makeFake(number), false, false, false);
    link(collection.adapterAt(0), 2);
    link(collection.adapterAt(1), 1);
    link(collection.adapterAt(2), 3);
    link(collection.adapterAt(3), 2);
    collection.moveAdapter(collection.adapterAt(1), MultiCanAdapterHandler::Down);
    QCOMPARE(picture(collection), lines({"1 Device 1 PA ->3", "2 Device 3 ->2", "3 Device 2 ->1", "4 Device 4 ->3"}));
}

void TestMultiCanAdapterHandler::strangersDoNotMove()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    const QStringList before = picture(collection);
    FakeAdapter stranger;
    stranger.setCanAdapterOption(Adapter::OptionAdapterId, 1u);
    QCOMPARE(collection.moveAdapter(&stranger, MultiCanAdapterHandler::Down), quint16(0));
    QCOMPARE(collection.moveAdapter(nullptr, MultiCanAdapterHandler::Down), quint16(0));
    QCOMPARE(picture(collection), before);
}

void TestMultiCanAdapterHandler::adapterDeletedByOthersLeavesTheMap()
{
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 3; ++number)
        collection.addNewCanAdapter(makeFake(number), false, number != 2, false);
    link(collection.adapterAt(1), 1);
    QSignalSpy removed(&collection, &MultiCanAdapterHandler::adapterRemoved);
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    delete collection.adapterAt(0);
    QCOMPARE(picture(collection), lines({"2 Device 2", "3 Device 3 PA"}));
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed[0][0].value<quint16>(), quint16(1));
    QCOMPARE(changed.size(), 1);
}

void TestMultiCanAdapterHandler::adapterDeletedAfterItsSignalsWereCutLeavesTheMap()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    QSignalSpy removed(&collection, &MultiCanAdapterHandler::adapterRemoved);
    // A moved and a replaced adapter are watched like any other.
    collection.updateAdapter(2, makeFake(3));
    QCOMPARE(collection.moveAdapter(collection.adapterAt(1), MultiCanAdapterHandler::Up), quint16(1));
    for (const QPointer<Adapter> &adapter : collection.getAdapterMap()->values())
        adapter->disconnect();
    delete collection.adapterAt(0);
    QCOMPARE(picture(collection), lines({"2 Device 1 PA"}));
    QCOMPARE(removed.size(), 1);
    QCOMPARE(removed[0][0].value<quint16>(), quint16(1));
    delete collection.adapterAt(0);
    QVERIFY(collection.getAdapterMap()->isEmpty());
    QVERIFY(collection.getPrimaryAdapter() == nullptr);
}

void TestMultiCanAdapterHandler::adapterDeletedWithAForeignParentLeavesTheMap()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    auto thief = std::make_unique<QObject>();
    collection.adapterAt(0)->setParent(thief.get());
    thief.reset();
    QCOMPARE(picture(collection), lines({"2 Device 2 PA"}));
}

void TestMultiCanAdapterHandler::slotOnDestroyedSeesTheMapInOrder()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    collection.addNewCanAdapter(makeFake(2), false, true, false);
    QStringList seen;
    connect(collection.adapterAt(0), &QObject::destroyed, this, [&] { seen = picture(collection); });
    delete collection.adapterAt(0);
    QCOMPARE(seen, lines({"2 Device 2 PA"}));

    // One that was there before the collection sees the moment in which nothing is known yet, and does no harm.
    FakeAdapter *late = makeFake(3);
    connect(late, &QObject::destroyed, this, [&] {
        collection.handlePrimaryChanged(1, true);
        collection.handleActiveChanged(1, true);
        collection.moveAdapter(collection.adapterAt(0), MultiCanAdapterHandler::Down);
        collection.couldActiveChanged(0);
        collection.getConnectedAdapters();
        collection.addNewCanAdapter(makeFake(4), true, true, false);
        restore(collection, {5, 9, true, true, 0});
    });
    collection.addNewCanAdapter(late, true, true, false);
    delete late;
    QCOMPARE(picture(collection), lines({"2 Device 2 A", "4 Device 4 A", "9 Device 5 PA"}));
}

void TestMultiCanAdapterHandler::settingsSurviveARestart()
{
    QStringList before;
    QList<QPair<QString, QByteArray>> file;
    {
        MultiCanAdapterHandler collection;
        for (int number = 1; number <= 4; ++number)
            collection.addNewCanAdapter(makeFake(number), number == 3, number == 4, false);
        collection.removeAdapterAt(1);
        link(collection.adapterAt(0), 4);
        link(collection.adapterAt(2), 1);
        collection.adapterAt(0)->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("lab"));
        before = picture(collection);
        for (const QPointer<Adapter> &adapter : collection.getAdapterMap()->values()) {
            file.append(
                {adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString(), adapter->getValuesAsByteArray()});
        }
    }
    QCOMPARE(before, lines({"1 Device 1 A ->4", "3 Device 3 PA", "4 Device 4 A ->1"}));

    MultiCanAdapterHandler collection;
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    for (const auto &row : qAsConst(file)) {
        Adapter *adapter = collection.addAdapterFromByteArray(fakeType, row.first, row.second);
        QVERIFY(adapter != nullptr);
        QCOMPARE(collection.getAdapterMap()->last().data(), adapter);
    }
    QCOMPARE(picture(collection), before);
    QCOMPARE(collection.adapterAt(0)->getCanAdapterOption(Adapter::OptionDescription), QVariant(QStringLiteral("lab")));
    QCOMPARE(changed.size(), 3);
}

void TestMultiCanAdapterHandler::rolesComeBackInFileOrder_data()
{
    QTest::addColumn<QVector<Stored>>("file");
    QTest::addColumn<QStringList>("after");
    QTest::newRow("the first is primary")
        << QVector<Stored>{{1, 1, true, true, 0}, {2, 2, false, true, 0}} << lines({"1 Device 1 PA", "2 Device 2 A"});
    QTest::newRow("a later one is primary")
        << QVector<Stored>{{1, 1, false, true, 0}, {2, 2, true, true, 0}} << lines({"1 Device 1 A", "2 Device 2 PA"});
    QTest::newRow("the first was not active")
        << QVector<Stored>{{1, 1, false, false, 0}, {2, 2, true, true, 0}} << lines({"1 Device 1", "2 Device 2 PA"});
    QTest::newRow("the first keeps nobody from being active")
        << QVector<Stored>{{1, 1, false, false, 0}, {1, 2, false, true, 0}, {2, 3, true, true, 0}}
        << lines({"1 Device 1", "2 Device 1 A", "3 Device 2 PA"});
    QTest::newRow("the primary one wins over an identical one")
        << QVector<Stored>{{1, 1, false, true, 0}, {1, 2, true, true, 0}} << lines({"1 Device 1", "2 Device 1 PA"});
    QTest::newRow("nobody says that it is primary")
        << QVector<Stored>{{1, 1, false, false, 0}, {2, 2, false, true, 0}, {1, 3, false, true, 0}}
        << lines({"1 Device 1 PA", "2 Device 2 A", "3 Device 1"});
    QTest::newRow("two say that they are primary")
        << QVector<Stored>{{1, 1, true, true, 0}, {2, 2, true, true, 0}} << lines({"1 Device 1 A", "2 Device 2 PA"});
    QTest::newRow("primary but not active")
        << QVector<Stored>{{1, 1, false, true, 0}, {2, 2, true, false, 0}} << lines({"1 Device 1 A", "2 Device 2 PA"});
    QTest::newRow("links to later ones") << QVector<Stored>{{1, 1, true, true, 7},
                                                            {2, 3, false, true, 1},
                                                            {3, 7, false, false, 3}}
                                         << lines({"1 Device 1 PA ->7", "3 Device 2 A ->1", "7 Device 3 ->3"});
    QTest::newRow("without numbers") << QVector<Stored>{{1, 0, false, false, 0}, {2, 0, true, true, 0}}
                                     << lines({"1 Device 1", "2 Device 2 PA"});
}

void TestMultiCanAdapterHandler::rolesComeBackInFileOrder()
{
    QFETCH(QVector<Stored>, file);
    MultiCanAdapterHandler collection;
    for (const Stored &stored : qAsConst(file))
        QVERIFY(restore(collection, stored) != nullptr);
    QTEST(picture(collection), "after");
}

void TestMultiCanAdapterHandler::rolesAreSettledByTheFirstChange()
{
    MultiCanAdapterHandler collection;
    restore(collection, {1, 1, false, false, 0});
    restore(collection, {2, 2, false, true, 0});
    collection.handleActiveChanged(1, false);
    restore(collection, {3, 3, true, true, 0});
    // What the user chose in between is not undone by what the file said before.
    QCOMPARE(picture(collection), lines({"1 Device 1 A", "2 Device 2", "3 Device 3 PA"}));
}

void TestMultiCanAdapterHandler::linkToAnAdapterThatDidNotComeBackEnds()
{
    MultiCanAdapterHandler collection;
    restore(collection, {1, 1, true, true, 2});
    QCOMPARE(picture(collection), lines({"1 Device 1 PA ->2"}));
    QCOMPARE(collection.addNewCanAdapter(makeFake(5), false, false, false), quint16(2));
    QCOMPARE(picture(collection), lines({"1 Device 1 PA", "2 Device 5"}));
}

void TestMultiCanAdapterHandler::unknownTypeIsNotRestored()
{
    MultiCanAdapterHandler collection;
    QSignalSpy changed(&collection, &MultiCanAdapterHandler::adapterMapChanged);
    const auto unknown = static_cast<Adapter::CanAdapterType>(4711);
    QVERIFY(collection.addAdapterFromByteArray(unknown, name(1), bytesOf({1, 1, true, true, 0})) == nullptr);
    QVERIFY(collection.getAdapterMap()->isEmpty());
    QCOMPARE(changed.size(), 0);
}

void TestMultiCanAdapterHandler::damagedBytesStillGiveAnAdapter()
{
    const QByteArray whole = bytesOf({1, 3, true, true, 0});
    for (int length = 0; length < whole.size(); ++length) {
        MultiCanAdapterHandler collection;
        Adapter *adapter = collection.addAdapterFromByteArray(fakeType, name(1), whole.left(length));
        QVERIFY(adapter != nullptr);
        const quint16 identifier = identifierOf(adapter);
        QVERIFY2(identifier == 1 || identifier == 3, qPrintable(QString::number(identifier)));
        QCOMPARE(collection.getAdapterMap()->value(identifier).data(), adapter);
        QCOMPARE(collection.getPrimaryAdapter(), adapter);
    }
}

void TestMultiCanAdapterHandler::restoredIdentifierThatIsTakenIsReplaced()
{
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1), false, true, false);
    restore(collection, {2, 1, true, true, 0});
    QCOMPARE(picture(collection), lines({"1 Device 1 A", "2 Device 2 PA"}));
}

void TestMultiCanAdapterHandler::slotMayRemoveTheRest()
{
    const auto record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 4; ++number)
        collection.addNewCanAdapter(makeFake(number, record), false, true, false);
    connect(&collection, &MultiCanAdapterHandler::adapterRemoved, this, [&] {
        if (collection.getAdapterCount() > 1)
            collection.removeAdapterAt(0);
    });
    collection.removeAdapterAt(1);
    QCOMPARE(picture(collection), lines({"4 Device 4 PA"}));
    QCOMPARE(record->take(), lines({"2: ~", "1: ~", "3: ~"}));
}

void TestMultiCanAdapterHandler::slotMayAddWhileAllGo()
{
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 3; ++number)
        collection.addNewCanAdapter(makeFake(number), false, true, false);
    connect(collection.adapterAt(1), &QObject::destroyed, this,
            [&] { collection.addNewCanAdapter(makeFake(4), false, false, false); });
    collection.removeAllAdapters();
    QCOMPARE(picture(collection), lines({"1 Device 4 PA"}));
}

void TestMultiCanAdapterHandler::slotMayRemoveWhileAnAdapterCloses()
{
    const auto record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler collection;
    for (int number = 1; number <= 3; ++number)
        collection.addNewCanAdapter(makeFake(number, record), false, true, false);
    collection.adapterAt(1)->setRunning(true);
    record->take();
    QSignalSpy removed(&collection, &MultiCanAdapterHandler::adapterRemoved);
    connect(collection.adapterAt(1), &Adapter::runningChanged, this, [&] { collection.removeAllAdapters(); });
    collection.removeAdapterAt(1);
    QCOMPARE(record->take(), lines({"2: close", "1: ~", "3: ~", "2: ~"}));
    QCOMPARE(removed.size(), 3);
    QVERIFY(collection.getAdapterMap()->isEmpty());
}

void TestMultiCanAdapterHandler::slotMayReplaceWhileAnAdapterCloses()
{
    const auto record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler collection;
    collection.addNewCanAdapter(makeFake(1, record), false, true, false);
    collection.adapterAt(0)->setRunning(true);
    record->take();
    const std::unique_ptr<FakeAdapter> refused(makeFake(2, record));
    connect(collection.adapterAt(0), &Adapter::runningChanged, this,
            [&] { collection.updateAdapter(1, refused.get()); });
    collection.updateAdapter(1, makeFake(3, record));
    QCOMPARE(picture(collection), lines({"1 Device 3 PA"}));
    QCOMPARE(record->take(), lines({"1: close", "1: ~"}));

    // The adapter that is closed moves, and with it goes the place that was meant.
    collection.addNewCanAdapter(makeFake(4, record), false, true, false);
    Adapter *moving = collection.adapterAt(0);
    moving->setRunning(true);
    connect(moving, &Adapter::runningChanged, this,
            [&] { collection.moveAdapter(moving, MultiCanAdapterHandler::Down); });
    collection.updateAdapter(1, refused.get());
    QCOMPARE(picture(collection), lines({"1 Device 4 A", "2 Device 3 PA"}));
}

void TestMultiCanAdapterHandler::slotMayDeleteTheCollectionWhileAnAdapterCloses()
{
    const auto record = std::make_shared<CallRecord>();
    const std::unique_ptr<FakeAdapter> replacement(makeFake(3));
    for (const bool replace : {false, true}) {
        QPointer<MultiCanAdapterHandler> collection = new MultiCanAdapterHandler;
        for (int number = 1; number <= 2; ++number)
            collection->addNewCanAdapter(makeFake(number, record), false, true, false);
        const QPointer<Adapter> closing = collection->adapterAt(0);
        closing->setRunning(true);
        record->take();
        connect(closing, &Adapter::runningChanged, this, [&] { delete collection; });
        if (replace)
            collection->updateAdapter(1, replacement.get());
        else
            collection->removeAdapterAt(0);
        QVERIFY(!collection);
        QTRY_VERIFY_WITH_TIMEOUT(!closing, 5000);
        QCOMPARE(record->take(), lines({"1: close", "2: ~", "1: ~"}));
    }
}

void TestMultiCanAdapterHandler::slotMayDeleteTheCollection()
{
    const auto record = std::make_shared<CallRecord>();
    const auto make = [&record](int adapters) {
        auto *collection = new MultiCanAdapterHandler;
        for (int number = 1; number <= adapters; ++number)
            collection->addNewCanAdapter(makeFake(number, record), false, true, false);
        return collection;
    };
    QPointer<MultiCanAdapterHandler> collection;
    const auto deleteCollection = [&] { delete collection; };

    collection = make(3);
    connect(collection, &MultiCanAdapterHandler::adapterRemoved, this, deleteCollection);
    collection->removeAllAdapters();
    QVERIFY(!collection);
    QCOMPARE(record->take(), lines({"1: ~", "2: ~", "3: ~"}));

    collection = make(3);
    connect(collection->adapterAt(1), &QObject::destroyed, this, deleteCollection);
    collection->removeAllAdapters();
    QVERIFY(!collection);
    QCOMPARE(record->take(), lines({"1: ~", "2: ~", "3: ~"}));

    collection = make(2);
    connect(collection, &MultiCanAdapterHandler::adapterRemoved, this, deleteCollection);
    delete collection->adapterAt(0);
    QVERIFY(!collection);
    QCOMPARE(record->take(), lines({"1: ~", "2: ~"}));
}

namespace {
/// Plays random operations on a collection and knows what must hold after each.
class RandomUser
{
public:
    explicit RandomUser(quint32 seed)
        : m_random(seed)
    {
        QObject::connect(&m_collection, &MultiCanAdapterHandler::adapterMapChanged, &m_collection,
                         [this] { m_changed = true; });
        QObject::connect(&m_collection, &MultiCanAdapterHandler::adapterRemoved, &m_collection,
                         [this](quint16 identifier) { m_removed.insert(identifier); });
    }

    /// Empty if all is well, else what is wrong.
    QString step()
    {
        const auto before = *m_collection.getAdapterMap();
        m_changed = false;
        m_removed.clear();
        const QString operation = operate();
        const QString fault = check(before);
        return fault.isEmpty() ? QString() : operation + QStringLiteral(": ") + fault;
    }

private:
    using Map = QMap<quint16, QPointer<Adapter>>;

    bool coin() { return m_random.bounded(2) == 1; }
    /// One row too many, so that a missing one is asked for now and then.
    quint16 anyRow() { return static_cast<quint16>(m_random.bounded(m_collection.getAdapterCount() + 1)); }

    /// Few devices, so that identical adapters are frequent.
    FakeAdapter *make()
    {
        FakeAdapter *adapter = makeFake(m_random.bounded(4), m_record);
        if (coin())
            adapter->setCanAdapterOption(Adapter::OptionPort, QString::number(m_random.bounded(2)));
        adapter->setCanAdapterOption(Adapter::OptionAdapterId, uint(m_random.bounded(12)));
        return adapter;
    }

    QString operate()
    {
        struct Operation
        {
            const char *name;
            void (RandomUser::*run)();
        };
        static constexpr Operation operations[] = {
            {"add", &RandomUser::add},          {"add", &RandomUser::add},
            {"restore", &RandomUser::restore},  {"update", &RandomUser::update},
            {"remove", &RandomUser::remove},    {"move", &RandomUser::move},
            {"active", &RandomUser::setActive}, {"primary", &RandomUser::setPrimary},
            {"link", &RandomUser::link},        {"run", &RandomUser::run},
            {"cut", &RandomUser::cut},          {"delete", &RandomUser::deleteByOthers},
            {"clear", &RandomUser::removeAll},
        };
        // Clearing all is rare: a collection must have time to grow.
        const int count = int(std::size(operations)) - (m_random.bounded(20) == 0 ? 0 : 1);
        const Operation &operation = operations[m_random.bounded(count)];
        (this->*operation.run)();
        return QLatin1String(operation.name);
    }

    void add()
    {
        FakeAdapter *adapter = make();
        m_known.append(adapter);
        m_collection.addNewCanAdapter(adapter, coin(), coin(), coin());
    }

    void restore()
    {
        const Stored stored = {m_random.bounded(4), quint16(m_random.bounded(12)), m_random.bounded(4) == 0, coin(), 0};
        m_known.append(::restore(m_collection, stored));
    }

    void update()
    {
        FakeAdapter *adapter = make();
        const auto identifier = static_cast<quint16>(m_random.bounded(14));
        Adapter *old = m_collection.getAdapterMap()->value(identifier);
        const bool primary = old != nullptr && isPrimary(old);
        // Links name a place, so they lead to who stands there now.
        if (old != nullptr && m_partners.contains(old))
            m_partners.insert(adapter, m_partners.take(old));
        for (QPointer<Adapter> &partner : m_partners) {
            if (old != nullptr && partner == old)
                partner = adapter;
        }
        m_collection.updateAdapter(identifier, adapter);
        if (old == nullptr) {
            delete adapter;
            return;
        }
        m_known.append(adapter);
        if (primary != isPrimary(adapter))
            m_fault = QStringLiteral("the replacement did not keep the primary role");
    }

    void remove() { m_collection.removeAdapterAt(anyRow()); }
    void removeAll() { m_collection.removeAllAdapters(); }

    void move()
    {
        Adapter *adapter = m_collection.adapterAt(anyRow());
        const quint16 number = m_collection.moveAdapter(
            adapter, coin() ? MultiCanAdapterHandler::Up : MultiCanAdapterHandler::Down);
        if (number != (adapter == nullptr ? 0 : m_collection.getAdapterMap()->key(adapter)))
            m_fault = QStringLiteral("move gave %1").arg(number);
    }

    void setActive()
    {
        const int row = anyRow();
        const bool active = coin();
        const bool allowed = m_collection.couldActiveChanged(row) == MultiCanAdapterHandler::ActiveCanChange;
        Adapter *adapter = m_collection.adapterAt(quint16(row));
        const bool before = adapter != nullptr && adapter->isActiveAdapter();
        m_collection.handleActiveChanged(row, active);
        if (adapter != nullptr && adapter->isActiveAdapter() != (allowed ? active : before))
            m_fault = QStringLiteral("the active state is not what was allowed");
    }

    void setPrimary()
    {
        const int row = anyRow();
        const bool primary = coin();
        m_collection.handlePrimaryChanged(row, primary);
        Adapter *adapter = m_collection.adapterAt(quint16(row));
        if (primary && adapter != nullptr && !isPrimary(adapter))
            m_fault = QStringLiteral("the row did not become primary");
    }

    void link()
    {
        Adapter *from = m_collection.adapterAt(anyRow());
        Adapter *to = m_collection.adapterAt(anyRow());
        if (from == nullptr || to == nullptr)
            return;
        ::link(from, identifierOf(to));
        m_partners.insert(from, to);
    }

    void run()
    {
        if (Adapter *adapter = m_collection.adapterAt(anyRow()))
            adapter->setRunning(true);
    }

    void cut()
    {
        if (Adapter *adapter = m_collection.adapterAt(anyRow()))
            adapter->disconnect();
    }

    void deleteByOthers()
    {
        QPointer<Adapter> adapter = m_collection.adapterAt(anyRow());
        if (adapter)
            adapter->close();
        delete adapter;
    }

    bool isAlive(const Adapter *adapter) const
    {
        return std::any_of(m_known.begin(), m_known.end(),
                           [adapter](const QPointer<Adapter> &known) { return known == adapter; });
    }

    QString check(const Map &before)
    {
        if (!m_fault.isEmpty())
            return m_fault;
        const Map &map = *m_collection.getAdapterMap();
        m_known.erase(std::remove_if(m_known.begin(), m_known.end(),
                                     [](const QPointer<Adapter> &known) { return known.isNull(); }),
                      m_known.end());
        if (m_known.size() != map.size())
            return QStringLiteral("%1 adapters live, %2 are in the map").arg(m_known.size()).arg(map.size());
        const QStringList calls = m_record->take();
        if (std::any_of(calls.begin(), calls.end(),
                        [](const QString &call) { return call.endsWith(QLatin1String("~ while running")); })) {
            return QStringLiteral("an adapter died while it ran");
        }
        const QString fault = checkEntries(map);
        return fault.isEmpty() ? checkSignals(before, map) : fault;
    }

    QString checkEntries(const Map &map)
    {
        int primaries = 0;
        QSet<QString> activeDevices;
        QList<QPointer<Adapter>> running;
        int actives = 0;
        int row = 0;
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry, ++row) {
            Adapter *adapter = *entry;
            if (adapter == nullptr)
                return QStringLiteral("null in the map");
            if (entry.key() == 0 || identifierOf(adapter) != entry.key())
                return QStringLiteral("%1 stands at %2").arg(identifierOf(adapter)).arg(entry.key());
            if (m_collection.adapterAt(quint16(row)) != adapter)
                return QStringLiteral("row %1 is not in the order of the map").arg(row);
            if (isPrimary(adapter)) {
                ++primaries;
                if (!adapter->isActiveAdapter() || m_collection.getPrimaryAdapter() != adapter)
                    return QStringLiteral("the primary one is not active, or not the one that the collection names");
            }
            if (adapter->getRunning())
                running.append(adapter);
            if (adapter->isActiveAdapter()) {
                ++actives;
                const QString device = adapter->getCanAdapterOption(Adapter::OptionDeviceName).toString();
                const QString port = adapter->getCanAdapterOption(Adapter::OptionPort).toString();
                activeDevices.insert(device + QLatin1Char('|') + port);
            }
            const QString fault = checkLink(map, adapter);
            if (!fault.isEmpty())
                return fault;
        }
        if (primaries != (map.isEmpty() ? 0 : 1))
            return QStringLiteral("%1 primary adapters").arg(primaries);
        if (activeDevices.size() != actives)
            return QStringLiteral("identical adapters are active");
        if (m_collection.getActiveAdapterCount() != actives || m_collection.getAdapterCount() != map.size())
            return QStringLiteral("the counts are wrong");
        return m_collection.getConnectedAdapters() == running ? QString() : QStringLiteral("not the running ones");
    }

    QString checkLink(const Map &map, Adapter *adapter)
    {
        const QPointer<Adapter> partner = m_partners.value(adapter);
        const quint16 expected = partner ? map.key(partner) : quint16(0);
        if (linkOf(adapter) == expected)
            return {};
        return QStringLiteral("%1 is linked to %2 and not to %3")
            .arg(identifierOf(adapter))
            .arg(linkOf(adapter))
            .arg(expected);
    }

    QString checkSignals(const Map &before, const Map &map)
    {
        for (auto partner = m_partners.begin(); partner != m_partners.end();) {
            if (!isAlive(partner.key()) || partner->isNull())
                partner = m_partners.erase(partner);
            else
                ++partner;
        }
        const QSet<quint16> keysBefore(before.keyBegin(), before.keyEnd());
        const QSet<quint16> keysNow(map.keyBegin(), map.keyEnd());
        if (m_removed != keysBefore - keysNow)
            return QStringLiteral("%1 removals were told").arg(m_removed.size());
        if (m_changed != (before != map))
            return QStringLiteral("the change of the map was %1").arg(QLatin1String(m_changed ? "none" : "kept back"));
        return {};
    }

    QRandomGenerator m_random;
    std::shared_ptr<CallRecord> m_record = std::make_shared<CallRecord>();
    MultiCanAdapterHandler m_collection;
    QList<QPointer<Adapter>> m_known;
    QMap<Adapter *, QPointer<Adapter>> m_partners;
    QString m_fault;
    bool m_changed = false;
    QSet<quint16> m_removed;
};
} // namespace

void TestMultiCanAdapterHandler::rulesHoldAfterAnySequence_data()
{
    QTest::addColumn<quint32>("seed");
    for (const quint32 seed : {1u, 7u, 42u, 1337u, 20240229u, 0xDEADBEEFu, 0xFFFFFFFFu, 99991u})
        QTest::addRow("seed %u", seed) << seed;
}

void TestMultiCanAdapterHandler::rulesHoldAfterAnySequence()
{
    QFETCH(quint32, seed);
    FakeFamily *family = FakeFamily::install(fakeType);
    family->create = [](const QString &device) { return new FakeAdapter(fakeType, device); };
    RandomUser user(seed);
    for (int step = 0; step < 3000; ++step) {
        const QString fault = user.step();
        QVERIFY2(fault.isEmpty(), qPrintable(QStringLiteral("seed %1, step %2, %3").arg(seed).arg(step).arg(fault)));
    }
}

QTEST_GUILESS_MAIN(TestMultiCanAdapterHandler)
#include "tst_multicanadapterhandler.moc"
