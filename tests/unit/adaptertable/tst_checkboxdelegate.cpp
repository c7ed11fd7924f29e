#include "checkboxdelegate.h"

#include "fakeadapter.h"
#include "canmultiinterfacemodel.h"

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyleOptionButton>
#include <QTableView>
#include <QtTest>

namespace {
const QRect cell(20, 10, 55, 31);
// In the middle of the cell, 16 pixels in both directions.
const QRect square(39, 17, 16, 16);

QStyleOptionViewItem option()
{
    QStyleOptionViewItem option;
    option.rect = cell;
    option.state = QStyle::State_Enabled | QStyle::State_Selected | QStyle::State_HasFocus;
    return option;
}

QImage emptyPicture()
{
    QImage image(100, 60, QImage::Format_RGB32);
    image.fill(QColor(10, 20, 30));
    return image;
}

/// What the application's style makes of the button alone.
QImage expectedPicture(QStyle::ControlElement element, QStyle::State state)
{
    QImage image = emptyPicture();
    QPainter painter(&image);
    QStyleOptionButton button;
    button.rect = square;
    button.state = state;
    QApplication::style()->drawControl(element, &button, &painter, nullptr);
    return image;
}

/// One cell with a check state.
class CheckModel : public QStandardItemModel
{
public:
    explicit CheckModel(Qt::CheckState state, bool isCheckable = true)
        : QStandardItemModel(1, 1)
    {
        auto *item = new QStandardItem;
        item->setCheckState(state);
        item->setCheckable(isCheckable);
        setItem(0, 0, item);
    }

    bool setData(const QModelIndex &index, const QVariant &value, int role) override
    {
        asked.append({value, role});
        return QStandardItemModel::setData(index, value, role);
    }

    QModelIndex cell() const { return index(0, 0); }

    QList<QPair<QVariant, int>> asked;
};

QMouseEvent mouse(QEvent::Type type, QPointF place, Qt::MouseButton button = Qt::LeftButton)
{
    return {type, place, button, button, Qt::NoModifier};
}
} // namespace

Q_DECLARE_METATYPE(QStyle::ControlElement)

class TestCheckboxDelegate : public QObject
{
    Q_OBJECT

private slots:
    void drawsTheButtonInTheMiddle_data();
    void drawsTheButtonInTheMiddle();
    void aButtonThatIsOffIsSeenOnDarkGround();
    void withoutAModelTheButtonIsOff();
    void aClickTurnsACheckBoxOver_data();
    void aClickTurnsACheckBoxOver();
    void aClickSetsARadioButton();
    void aRadioButtonThatIsSetStaysSet();
    void onlyTheSquareTakesClicks_data();
    void onlyTheSquareTakesClicks();
    void onlyAReleaseCounts_data();
    void onlyAReleaseCounts();
    void aCellThatIsNotCheckableTakesNoClicks();
    void anIndexWithoutAModelTakesNoClicks();
    void aUserClicksInATable();
};

void TestCheckboxDelegate::drawsTheButtonInTheMiddle_data()
{
    QTest::addColumn<QStyle::ControlElement>("element");
    QTest::addColumn<Qt::CheckState>("state");
    QTest::addColumn<int>("drawn");

    QTest::newRow("check box on") << QStyle::CE_CheckBox << Qt::Checked << int(QStyle::State_On);
    QTest::newRow("check box off") << QStyle::CE_CheckBox << Qt::Unchecked << int(QStyle::State_Off);
    QTest::newRow("check box between") << QStyle::CE_CheckBox << Qt::PartiallyChecked << int(QStyle::State_Off);
    QTest::newRow("radio button on") << QStyle::CE_RadioButton << Qt::Checked << int(QStyle::State_On);
    QTest::newRow("radio button off") << QStyle::CE_RadioButton << Qt::Unchecked << int(QStyle::State_Off);
}

void TestCheckboxDelegate::drawsTheButtonInTheMiddle()
{
    QFETCH(QStyle::ControlElement, element);
    QFETCH(Qt::CheckState, state);
    QFETCH(int, drawn);
    const CheckModel model(state);
    const CheckboxDelegate delegate(element, nullptr);
    QImage image = emptyPicture();
    QPainter painter(&image);
    delegate.paint(&painter, option(), model.cell());
    painter.end();
    QCOMPARE(image, expectedPicture(element, static_cast<QStyle::StateFlag>(drawn)));
    QVERIFY(image != emptyPicture());
}

void TestCheckboxDelegate::aButtonThatIsOffIsSeenOnDarkGround()
{
    const QPalette usual = QApplication::palette();
    const QColor ground(30, 31, 34);
    QPalette dark(QColor(58, 61, 65), QColor(43, 45, 48));
    dark.setColor(QPalette::WindowText, Qt::white);
    dark.setColor(QPalette::Base, ground);
    QApplication::setPalette(dark);
    const CheckModel model(Qt::Unchecked);
    QImage image = emptyPicture();
    image.fill(ground);
    QPainter painter(&image);
    CheckboxDelegate(QStyle::CE_CheckBox, nullptr).paint(&painter, option(), model.cell());
    painter.end();
    QApplication::setPalette(usual);
    QVERIFY(image.pixelColor(square.center()).lightness() > ground.lightness() + 10);
}

void TestCheckboxDelegate::withoutAModelTheButtonIsOff()
{
    QImage image = emptyPicture();
    QPainter painter(&image);
    CheckboxDelegate(QStyle::CE_CheckBox, nullptr).paint(&painter, option(), QModelIndex());
    painter.end();
    QCOMPARE(image, expectedPicture(QStyle::CE_CheckBox, QStyle::State_Off));
}

void TestCheckboxDelegate::aClickTurnsACheckBoxOver_data()
{
    QTest::addColumn<Qt::CheckState>("before");
    QTest::addColumn<bool>("asked");

    QTest::newRow("on") << Qt::Unchecked << true;
    QTest::newRow("off") << Qt::Checked << false;
    QTest::newRow("a partial state counts as on") << Qt::PartiallyChecked << false;
}

void TestCheckboxDelegate::aClickTurnsACheckBoxOver()
{
    QFETCH(Qt::CheckState, before);
    QFETCH(bool, asked);
    CheckModel model(before);
    CheckboxDelegate delegate(QStyle::CE_CheckBox, nullptr);
    QMouseEvent release = mouse(QEvent::MouseButtonRelease, square.center());
    QVERIFY(delegate.editorEvent(&release, &model, option(), model.cell()));
    QCOMPARE(model.asked.count(), 1);
    QCOMPARE(model.asked.first().first, QVariant(asked));
    QCOMPARE(model.asked.first().second, int(Qt::CheckStateRole));
}

void TestCheckboxDelegate::aClickSetsARadioButton()
{
    CheckModel model(Qt::Unchecked);
    CheckboxDelegate delegate(QStyle::CE_RadioButton, nullptr);
    QMouseEvent release = mouse(QEvent::MouseButtonRelease, square.center());
    QVERIFY(delegate.editorEvent(&release, &model, option(), model.cell()));
    QCOMPARE(model.asked.count(), 1);
    QCOMPARE(model.asked.first().first, QVariant(true));
}

void TestCheckboxDelegate::aRadioButtonThatIsSetStaysSet()
{
    CheckModel model(Qt::Checked);
    CheckboxDelegate delegate(QStyle::CE_RadioButton, nullptr);
    QMouseEvent release = mouse(QEvent::MouseButtonRelease, square.center());
    QVERIFY(delegate.editorEvent(&release, &model, option(), model.cell()));
    QVERIFY(model.asked.isEmpty());
}

void TestCheckboxDelegate::onlyTheSquareTakesClicks_data()
{
    QTest::addColumn<QPointF>("place");
    QTest::addColumn<bool>("isTaken");

    QTest::newRow("first corner") << QPointF(39, 17) << true;
    QTest::newRow("left of it") << QPointF(38, 17) << false;
    QTest::newRow("above it") << QPointF(39, 16) << false;
    QTest::newRow("last corner") << QPointF(54, 32) << true;
    QTest::newRow("right of it") << QPointF(55, 32) << false;
    QTest::newRow("below it") << QPointF(54, 33) << false;
    QTest::newRow("a part of a pixel inside") << QPointF(38.5, 17) << true;
    QTest::newRow("a part of a pixel outside") << QPointF(38.4, 17) << false;
    QTest::newRow("elsewhere in the cell") << QPointF(22, 12) << false;
}

void TestCheckboxDelegate::onlyTheSquareTakesClicks()
{
    QFETCH(QPointF, place);
    QFETCH(bool, isTaken);
    CheckModel model(Qt::Unchecked);
    CheckboxDelegate delegate(QStyle::CE_CheckBox, nullptr);
    QMouseEvent release = mouse(QEvent::MouseButtonRelease, place);
    QCOMPARE(delegate.editorEvent(&release, &model, option(), model.cell()), isTaken);
    QCOMPARE(model.asked.count(), isTaken ? 1 : 0);
}

void TestCheckboxDelegate::onlyAReleaseCounts_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("press") << int(QEvent::MouseButtonPress);
    QTest::newRow("double click") << int(QEvent::MouseButtonDblClick);
    QTest::newRow("move") << int(QEvent::MouseMove);
}

void TestCheckboxDelegate::onlyAReleaseCounts()
{
    QFETCH(int, type);
    CheckModel model(Qt::Unchecked);
    CheckboxDelegate delegate(QStyle::CE_CheckBox, nullptr);
    QMouseEvent event = mouse(static_cast<QEvent::Type>(type), square.center());
    QVERIFY(!delegate.editorEvent(&event, &model, option(), model.cell()));
    QVERIFY(model.asked.isEmpty());
}

void TestCheckboxDelegate::aCellThatIsNotCheckableTakesNoClicks()
{
    CheckModel model(Qt::Unchecked, false);
    CheckboxDelegate delegate(QStyle::CE_CheckBox, nullptr);
    QMouseEvent release = mouse(QEvent::MouseButtonRelease, square.center());
    QVERIFY(!delegate.editorEvent(&release, &model, option(), model.cell()));
    QVERIFY(model.asked.isEmpty());
    // It is drawn as any other.
    QImage image = emptyPicture();
    QPainter painter(&image);
    delegate.paint(&painter, option(), model.cell());
    painter.end();
    QCOMPARE(image, expectedPicture(QStyle::CE_CheckBox, QStyle::State_Off));
}

void TestCheckboxDelegate::anIndexWithoutAModelTakesNoClicks()
{
    CheckModel model(Qt::Unchecked);
    CheckboxDelegate delegate(QStyle::CE_CheckBox, nullptr);
    QMouseEvent release = mouse(QEvent::MouseButtonRelease, square.center());
    QVERIFY(!delegate.editorEvent(&release, &model, option(), QModelIndex()));
    QVERIFY(!delegate.editorEvent(&release, nullptr, option(), QModelIndex()));
    QVERIFY(model.asked.isEmpty());
}

void TestCheckboxDelegate::aUserClicksInATable()
{
    MultiCanAdapterHandler collection;
    for (const char *device : {"A", "B"})
        collection.addNewCanAdapter(new FakeAdapter(AbstractCanAdapter::CanAdapterDemo, QLatin1String(device)), false,
                                    false, false);
    CanMultiInterfaceModel model(&collection, nullptr);
    QTableView view;
    CheckboxDelegate active(QStyle::CE_CheckBox, &view);
    CheckboxDelegate primary(QStyle::CE_RadioButton, &view);
    view.setModel(&model);
    view.setItemDelegateForColumn(2, &primary);
    view.setItemDelegateForColumn(3, &active);
    view.resize(700, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    const auto click = [&](int row, int column) {
        const QPoint place = view.visualRect(model.index(row, column)).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, place);
    };
    click(1, 3);
    QVERIFY(collection.adapterAt(1)->isActiveAdapter());
    click(1, 2);
    QCOMPARE(collection.getPrimaryAdapter(), collection.adapterAt(1));
    // The primary adapter is active for as long as it is primary.
    click(1, 3);
    QVERIFY(collection.adapterAt(1)->isActiveAdapter());
}

QTEST_MAIN(TestCheckboxDelegate)
#include "tst_checkboxdelegate.moc"
