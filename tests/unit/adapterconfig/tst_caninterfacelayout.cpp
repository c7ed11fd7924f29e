#include "interfaceform.h"

#include <QBoxLayout>

// The form on the screen: its place, its fonts, and its way for the keyboard.
class TestCanInterfaceLayout : public QObject
{
    Q_OBJECT

private slots:
    void tabKeyWalksInReadingOrder();
    void fieldsBeginAtOneLine_data();
    void fieldsBeginAtOneLine();
    void largeFontCutsNothingOff();
    void boxesStandInTwoColumnsWhereThereIsRoom();
    void shownFormStandsInTheMiddleOfItsParent();
    void shownFormStaysInItsLayout();
};

void TestCanInterfaceLayout::tabKeyWalksInReadingOrder()
{
    const InterfaceForm form;
    form->show();
    form.selectType(AbstractCanAdapter::CanAdapterSystecEthernet);
    form.list("cbCanInterfaceType")->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(&*form));
    QStringList names;
    for (int i = 0; i < 30; ++i) {
        names.append(form->focusWidget()->objectName());
        QTest::keyClick(form->focusWidget(), Qt::Key_Tab);
        if (form->focusWidget() == form.list("cbCanInterfaceType"))
            break;
    }
    names.removeAll(QString());
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("cbCanInterfaceType cbCanDevice cbBitrate leDescription cbLinkedAdapter chLogErrorFrames "
                            "cbAutoBusOn cbLowSpeed cbSystemTime cbContSystemTime cbCanfdConfig sbUsdoId "
                            "cbAdvancedConfig le_ipAddress le_port sb_reconnectTimeout sb_connectTimeout "
                            "sb_disconnectTimeout rb_tcp"));
}

void TestCanInterfaceLayout::fieldsBeginAtOneLine_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<QString>("fields");
    QTest::newRow("above") << 1U << "cbCanInterfaceType cbCanDevice cbBitrate leDescription cbLinkedAdapter sbUsdoId";
    QTest::newRow("network page") << 8U << "le_ipAddress le_port sb_reconnectTimeout sb_disconnectTimeout rb_tcp";
    QTest::newRow("serial page") << 13U
                                 << "cb_internExtern ch_HardwareFlowControl cb_Baudrate cb_Parity cb_ResetDevice";
}

void TestCanInterfaceLayout::fieldsBeginAtOneLine()
{
    QFETCH(unsigned int, type);
    QFETCH(QString, fields);
    const InterfaceForm form;
    for (const int pointSize : {10, 20}) {
        QFont font = form->font();
        font.setPointSize(pointSize);
        form->setFont(font);
        form->show();
        form.selectType(type);
        QVERIFY(QTest::qWaitForWindowExposed(&*form));
        QCoreApplication::sendPostedEvents();
        QSet<int> lines;
        for (const QString &name : fields.split(QLatin1Char(' '))) {
            const auto *field = form->findChild<QWidget *>(name);
            lines.insert(field->mapTo(&*form, QPoint(0, 0)).x());
        }
        QCOMPARE(lines.size(), 1);
    }
}

void TestCanInterfaceLayout::largeFontCutsNothingOff()
{
    const InterfaceForm form;
    QFont font = form->font();
    font.setPointSize(24);
    form->setFont(font);
    form->show();
    QVERIFY(QTest::qWaitForWindowExposed(&*form));
    for (unsigned int type = 1; type <= InterfaceForm::highestType; ++type) {
        form.selectType(type);
        QCoreApplication::sendPostedEvents();
        form->resize(form->minimumSize().expandedTo(form->minimumSizeHint()));
        QCoreApplication::sendPostedEvents();
        for (const QWidget *widget : form->findChildren<QWidget *>()) {
            const bool hasText = qobject_cast<const QCheckBox *>(widget) != nullptr
                || qobject_cast<const QRadioButton *>(widget) != nullptr
                || (qobject_cast<const QLabel *>(widget) != nullptr && !widget->hasHeightForWidth());
            if (hasText && widget->isVisible())
                QVERIFY2(widget->width() >= widget->minimumSizeHint().width(), qPrintable(widget->objectName()));
        }
    }
}

void TestCanInterfaceLayout::boxesStandInTwoColumnsWhereThereIsRoom()
{
    const InterfaceForm form;
    form->show();
    QVERIFY(QTest::qWaitForWindowExposed(&*form));
    form->resize(1000, 700);
    QTRY_COMPARE(form.box("cbListenOnly")->y(), form.box("chLogErrorFrames")->y());
    form->resize(form->minimumWidth(), 700);
    QTRY_COMPARE(form.box("cbListenOnly")->x(), form.box("chLogErrorFrames")->x());
}

void TestCanInterfaceLayout::shownFormStandsInTheMiddleOfItsParent()
{
    const InterfaceForm world; // the families
    QWidget parent;
    parent.setGeometry(100, 50, 1400, 1000);
    auto *form = new CanInterfaceWidget(&parent);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    const QPoint middle = form->geometry().center() - parent.geometry().center();
    QVERIFY2(middle.manhattanLength() <= 2, qPrintable(QStringLiteral("%1,%2").arg(middle.x()).arg(middle.y())));
}

void TestCanInterfaceLayout::shownFormStaysInItsLayout()
{
    const InterfaceForm world;
    QWidget parent;
    parent.setGeometry(300, 200, 1400, 1000);
    auto *layout = new QVBoxLayout(&parent);
    auto *form = new CanInterfaceWidget;
    layout->addWidget(form);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    QTRY_COMPARE(form->geometry(), layout->contentsRect());
    form->on_cbCanInterfaceType_currentIndexChanged(0);
    QTRY_COMPARE(form->geometry(), layout->contentsRect());
}

QTEST_MAIN(TestCanInterfaceLayout)
#include "tst_caninterfacelayout.moc"
