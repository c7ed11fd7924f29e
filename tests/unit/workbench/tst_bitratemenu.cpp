#include "bitratemenu.h"

#include "session.h"
#include "settingshome.h"

#include <QRegularExpression>
#include <QtTest>

#include <memory>

class TestBitrateMenu : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theUsualBitrateIsCheckedFirst();
    void aChosenBitrateIsKept();
    void aChosenBitrateComesBack();
    void aBitrateThatIsNotListedLeavesAllUnchecked();
    void withoutSettingsNothingCanBeChosen();

private:
    QString checked() const
    {
        emit m_menu->aboutToShow();
        QStringList texts;
        for (const QAction *action : m_menu->actions()) {
            if (action->isChecked())
                texts.append(action->text());
        }
        return texts.join(QLatin1Char(' '));
    }
    void choose(const QString &text) const
    {
        for (QAction *action : m_menu->actions()) {
            if (action->text() == text)
                action->trigger();
        }
    }
    QVariant kept() const { return m_session->settings()->value(QStringLiteral("defaultBitrate"), -1); }

    std::unique_ptr<SettingsHome> m_home;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<BitrateMenu> m_menu;
};

void TestBitrateMenu::init()
{
    m_home = std::make_unique<SettingsHome>();
    m_session = std::make_unique<Session>();
    QVERIFY(m_session->openSettings());
    m_menu = std::make_unique<BitrateMenu>(m_session.get(), nullptr);
}

void TestBitrateMenu::cleanup()
{
    m_menu.reset();
    m_session.reset();
    m_home.reset();
}

void TestBitrateMenu::theUsualBitrateIsCheckedFirst()
{
    QCOMPARE(checked(), QStringLiteral("250 kBit/s"));
    QCOMPARE(kept(), QVariant(-1));
}

void TestBitrateMenu::aChosenBitrateIsKept()
{
    choose(QStringLiteral("500 kBit/s"));
    QCOMPARE(kept().toInt(), 500);
    QCOMPARE(checked(), QStringLiteral("500 kBit/s"));
}

void TestBitrateMenu::aChosenBitrateComesBack()
{
    choose(QStringLiteral("125 kBit/s"));
    Session next;
    QVERIFY(next.openSettings());
    QCOMPARE(next.settings()->value(QStringLiteral("defaultBitrate"), -1).toInt(), 125);
}

void TestBitrateMenu::aBitrateThatIsNotListedLeavesAllUnchecked()
{
    m_session->settings()->setValue(QStringLiteral("defaultBitrate"), 83);
    QCOMPARE(checked(), QString());
}

void TestBitrateMenu::withoutSettingsNothingCanBeChosen()
{
    Session closed;
    BitrateMenu menu(&closed, nullptr);
    emit menu.aboutToShow();
    for (const QAction *action : menu.actions())
        QVERIFY(!action->isEnabled());
}

QTEST_MAIN(TestBitrateMenu)
#include "tst_bitratemenu.moc"
