#include "kestrune.h"

#include <QtTest>

class TestKestrune : public QObject
{
    Q_OBJECT

private slots:
    void versionIsThatOfTheLibrary()
    {
        const Kestrune kestrune;
        QCOMPARE(kestrune.version, QStringLiteral("0.9"));
    }
};

QTEST_GUILESS_MAIN(TestKestrune)
#include "tst_kestrune.moc"
