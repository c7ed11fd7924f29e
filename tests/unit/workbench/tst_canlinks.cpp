#include "canlinks.h"
#include "fakefamily.h"
#include "interfacename.h"
#include "session.h"

#include <QSignalSpy>
#include <QTest>

class TestCanLinks : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void withoutLinksNothingIsOffered();
    void linksAreNamedWithoutTheirController();
    void eachLinkBecomesAnInterface();
    void linkInUseIsNotOfferedAgain();
    void linkThatComesIsTold();
    void linkThatGoesIsNoLongerOffered();
    void devicesOfOtherKindsAreNoLinks();

private:
    void plugIn(const QString &device)
    {
        m_family->deviceMap.insert(device, AbstractCanAdapter::FeatureListenOnly);
        emit CanAdapterFactory::notifier()->devicesChanged(AbstractCanAdapter::CanAdapterSocketCan);
    }
    QVariant option(int row, AbstractCanAdapter::AdapterOption option)
    {
        return m_session->adapters()->adapterAt(static_cast<quint16>(row))->getCanAdapterOption(option);
    }

    FakeFamily *m_family = nullptr;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<CanLinks> m_links;
};

void TestCanLinks::init()
{
    m_family = FakeFamily::install(AbstractCanAdapter::CanAdapterSocketCan, QStringLiteral("SocketCAN"));
    m_session = std::make_unique<Session>();
    m_links = std::make_unique<CanLinks>(m_session.get());
}

void TestCanLinks::cleanup()
{
    m_links.reset();
    m_session.reset();
    CanAdapterFactory::unregisterFamily(AbstractCanAdapter::CanAdapterSocketCan);
}

void TestCanLinks::withoutLinksNothingIsOffered()
{
    QVERIFY(m_links->unused().isEmpty());
    m_links->addInterfaces();
    QVERIFY(!m_session->hasInterfaces());
}

void TestCanLinks::linksAreNamedWithoutTheirController()
{
    plugIn(QStringLiteral("vcan0"));
    plugIn(QStringLiteral("can0|mcp251xfd"));
    QCOMPARE(m_links->unused(), QStringList({QStringLiteral("can0"), QStringLiteral("vcan0")}));
}

void TestCanLinks::eachLinkBecomesAnInterface()
{
    plugIn(QStringLiteral("can0|mcp251xfd"));
    plugIn(QStringLiteral("vcan0"));
    m_links->addInterfaces();
    QCOMPARE(int(m_session->adapters()->getAdapterCount()), 2);
    QCOMPARE(interfaceName(*m_session->adapters()->adapterAt(0)), QStringLiteral("can0"));
    QCOMPARE(option(0, AbstractCanAdapter::OptionDeviceName).toString(), QStringLiteral("can0|mcp251xfd"));
    QCOMPARE(interfaceName(*m_session->adapters()->adapterAt(1)), QStringLiteral("vcan0"));
    QVERIFY(option(0, AbstractCanAdapter::OptionPrimary).toBool());
    QVERIFY(!option(1, AbstractCanAdapter::OptionPrimary).toBool());
    QVERIFY(option(1, AbstractCanAdapter::OptionActive).toBool());
}

void TestCanLinks::linkInUseIsNotOfferedAgain()
{
    plugIn(QStringLiteral("can0"));
    m_links->addInterfaces();
    plugIn(QStringLiteral("can1"));
    QCOMPARE(m_links->unused(), QStringList(QStringLiteral("can1")));
    m_links->addInterfaces();
    QCOMPARE(int(m_session->adapters()->getAdapterCount()), 2);
    QVERIFY(option(0, AbstractCanAdapter::OptionPrimary).toBool());
    QVERIFY(!option(1, AbstractCanAdapter::OptionPrimary).toBool());
}

void TestCanLinks::linkThatComesIsTold()
{
    QSignalSpy changed(m_links.get(), &CanLinks::changed);
    QSignalSpy remark(m_links.get(), &CanLinks::remark);
    plugIn(QStringLiteral("can0"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(remark.count(), 1);
    QCOMPARE(remark[0][0].toString(), QStringLiteral("There is a new CAN link: can0."));
}

void TestCanLinks::linkThatGoesIsNoLongerOffered()
{
    plugIn(QStringLiteral("can0"));
    QSignalSpy remark(m_links.get(), &CanLinks::remark);
    m_family->deviceMap.clear();
    emit CanAdapterFactory::notifier()->devicesChanged(AbstractCanAdapter::CanAdapterSocketCan);
    QVERIFY(m_links->unused().isEmpty());
    QCOMPARE(remark.count(), 0);
}

void TestCanLinks::devicesOfOtherKindsAreNoLinks()
{
    QSignalSpy changed(m_links.get(), &CanLinks::changed);
    m_family->deviceMap.insert(QStringLiteral("can0"), 0);
    emit CanAdapterFactory::notifier()->devicesChanged(AbstractCanAdapter::CanAdapterDemo);
    QCOMPARE(changed.count(), 0);
    QVERIFY(m_links->unused().isEmpty());
}

QTEST_MAIN(TestCanLinks)
#include "tst_canlinks.moc"
