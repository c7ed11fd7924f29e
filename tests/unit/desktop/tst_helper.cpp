#include "helper.h"

#include <QtTest>

using Version = std::array<quint8, 4>;
Q_DECLARE_METATYPE(Version)

class TestHelper : public QObject
{
    Q_OBJECT

private slots:
    void versionIsReadFromTheApplication_data();
    void versionIsReadFromTheApplication();
};

void TestHelper::versionIsReadFromTheApplication_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Version>("version");
    QTest::newRow("plain") << QStringLiteral("1.2.3") << Version{1, 2, 3, 0};
    QTest::newRow("suffix") << QStringLiteral("1.2.3-dev") << Version{1, 2, 3, 1};
    QTest::newRow("suffix with points") << QStringLiteral("1.2.3-rc.1-4") << Version{1, 2, 3, 1};
    QTest::newRow("dash without a suffix") << QStringLiteral("1.2.3-") << Version{1, 2, 3, 0};
    QTest::newRow("suffix after one number") << QStringLiteral("7-dev") << Version{7, 0, 0, 1};
    QTest::newRow("two numbers") << QStringLiteral("1.2") << Version{1, 2, 0, 0};
    QTest::newRow("one number") << QStringLiteral("1") << Version{1, 0, 0, 0};
    QTest::newRow("four numbers") << QStringLiteral("1.2.3.4") << Version{1, 2, 3, 0};
    QTest::newRow("none") << QString() << Version{0, 0, 0, 0};
    QTest::newRow("no number in the middle") << QStringLiteral("1.x.3") << Version{1, 0, 3, 0};
    QTest::newRow("words") << QStringLiteral("trunk") << Version{0, 0, 0, 0};
    QTest::newRow("largest") << QStringLiteral("255.255.255") << Version{255, 255, 255, 0};
    QTest::newRow("low eight bits are kept") << QStringLiteral("256.257.4711") << Version{0, 1, 4711 & 0xFF, 0};
    QTest::newRow("more than any number") << QStringLiteral("99999999999999999999.2.3") << Version{0, 2, 3, 0};
    QTest::newRow("blanks around") << QStringLiteral(" 1.2.3 ") << Version{1, 2, 3, 0};
    QTest::newRow("empty parts") << QStringLiteral("..3") << Version{0, 0, 3, 0};
}

void TestHelper::versionIsReadFromTheApplication()
{
    QFETCH(QString, text);
    QFETCH(Version, version);
    QCoreApplication::setApplicationVersion(text);
    const Version read = Helper::getCurrentAppVersion();
    for (size_t i = 0; i < version.size(); ++i)
        QCOMPARE(read[i], version[i]);
}

QTEST_GUILESS_MAIN(TestHelper)
#include "tst_helper.moc"
