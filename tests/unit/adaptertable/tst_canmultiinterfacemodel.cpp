#include "canmultiinterfacemodel.h"

#include "fakeadapter.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Adapter = AbstractCanAdapter;
using Model = CanMultiInterfaceModel;

namespace {
/// Gives indexes that no view ever asks for.
class OpenModel : public Model
{
public:
    using Model::Model;
    QModelIndex at(int row, int column) const { return createIndex(row, column); }
};

struct Rows
{
    int first;
    int last;
    int column;
};

QList<Rows> reportedRows(const QSignalSpy &changes)
{
    QList<Rows> rows;
    for (const QVariantList &change : changes) {
        const auto topLeft = change.at(0).toModelIndex();
        const auto bottomRight = change.at(1).toModelIndex();
        if (topLeft.column() == bottomRight.column() && change.at(2).value<QVector<int>>().isEmpty())
            rows.append({topLeft.row(), bottomRight.row(), topLeft.column()});
    }
    return rows;
}

bool operator==(const Rows &a, const Rows &b)
{
    return a.first == b.first && a.last == b.last && a.column == b.column;
}
} // namespace

class TestCanMultiInterfaceModel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void anEmptyCollectionHasNoRows();
    void eachAdapterIsARowOfFiveColumns();
    void cellsHaveNoRowsBelowThem();
    void keepsTheRulesOfModels();
    void anyChangeOfTheMapResets();
    void headers_data();
    void headers();
    void otherHeadersAreEmpty_data();
    void otherHeadersAreEmpty();
    void columnsDisplay_data();
    void columnsDisplay();
    void anEmptyDescriptionLeavesTheNameAlone();
    void aColumnThatIsNoneSaysSo();
    void checkColumnsShowTheRoles_data();
    void checkColumnsShowTheRoles();
    void checkStatesAreNumbers();
    void noRoleAnswersForAMissingRow();
    void otherRolesAreEmpty();
    void eachFlagHasItsOption_data();
    void eachFlagHasItsOption();
    void flagsHaveAName();
    void theirNameIsKnownFromTheStart();
    void aLinkToNobodyCountsAsALink();
    void columnsCanBeUsed_data();
    void columnsCanBeUsed();
    void aMissingCellCannotBeUsed();
    void thePrimaryRowStaysActive();
    void aTwinCannotBecomeActive();
    void adoptingIsAlwaysFree();
    void anyOtherModelTypeIsFreeToo();
    void onlyTheActiveColumnHasAToolTip();
    void aPrimaryRowIsChosenInItsColumn();
    void anActiveStateIsChangedInItsColumn();
    void adoptingGoesToTheActiveState();
    void otherCellsTakeNothing_data();
    void otherCellsTakeNothing();
    void otherRolesTakeNothing();
    void identifiersAreFound();

private:
    FakeAdapter *add(const QString &device, bool active = false)
    {
        auto *adapter = new FakeAdapter(Adapter::CanAdapterDemo, device);
        m_collection->addNewCanAdapter(adapter, false, active, false);
        return adapter;
    }

    /// Primary and active, active, and neither.
    void addThree()
    {
        add(QStringLiteral("A"));
        add(QStringLiteral("B"), true);
        add(QStringLiteral("C"));
    }

    QVariant cell(int row, int column, int role = Qt::DisplayRole) const
    {
        return m_model->data(m_model->index(row, column), role);
    }
    bool isCheckable(int row, int column) const
    {
        return m_model->flags(m_model->index(row, column)).testFlag(Qt::ItemIsUserCheckable);
    }
    bool isActive(int row) const { return m_collection->adapterAt(static_cast<quint16>(row))->isActiveAdapter(); }

    // Asked when there is no model yet.
    const int m_typeAtStart = QMetaType::type("CanMultiInterfaceModel::AdapterModelFlags");
    std::unique_ptr<MultiCanAdapterHandler> m_collection;
    std::unique_ptr<OpenModel> m_model;
};

void TestCanMultiInterfaceModel::init()
{
    // The model goes before the collection that it asks.
    m_model.reset();
    m_collection = std::make_unique<MultiCanAdapterHandler>();
    m_model = std::make_unique<OpenModel>(m_collection.get(), nullptr);
}

void TestCanMultiInterfaceModel::anEmptyCollectionHasNoRows()
{
    QCOMPARE(m_model->rowCount(), 0);
    QCOMPARE(m_model->columnCount(), 5);
    QCOMPARE(m_model->findRowOfId(0), -1);
    QCOMPARE(m_model->findRowOfId(1), -1);
}

void TestCanMultiInterfaceModel::eachAdapterIsARowOfFiveColumns()
{
    addThree();
    QCOMPARE(m_model->rowCount(), 3);
    QCOMPARE(m_model->columnCount(), 5);
}

void TestCanMultiInterfaceModel::cellsHaveNoRowsBelowThem()
{
    addThree();
    QCOMPARE(m_model->rowCount(m_model->index(0, 0)), 0);
}

void TestCanMultiInterfaceModel::keepsTheRulesOfModels()
{
    const QAbstractItemModelTester tester(m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    addThree();
    m_model->setData(m_model->index(2, Model::ColumnPrimary), true, Qt::CheckStateRole);
    m_model->setData(m_model->index(0, Model::ColumnActive), false, Qt::CheckStateRole);
    m_collection->moveAdapter(m_collection->adapterAt(0), MultiCanAdapterHandler::Down);
    m_collection->updateAdapter(2, new FakeAdapter);
    m_collection->removeAdapterAt(1);
    m_model->setModelType(Model::ModelTypeAdopt);
    m_model->updateData();
    m_collection->removeAllAdapters();
    QCOMPARE(m_model->rowCount(), 0);
}

void TestCanMultiInterfaceModel::anyChangeOfTheMapResets()
{
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    FakeAdapter *first = add(QStringLiteral("A"));
    QCOMPARE(resets.count(), 1);
    add(QStringLiteral("B"));
    QCOMPARE(resets.count(), 2);
    m_collection->moveAdapter(first, MultiCanAdapterHandler::Down);
    QCOMPARE(resets.count(), 3);
    m_collection->removeAdapterAt(0);
    QCOMPARE(resets.count(), 4);
}

void TestCanMultiInterfaceModel::headers_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("section");
    QTest::addColumn<QString>("header");

    QTest::newRow("identifier") << 0 << 0 << QStringLiteral("ID");
    QTest::newRow("name") << 0 << 1 << QStringLiteral("Name");
    QTest::newRow("primary") << 0 << 2 << QStringLiteral("Primary");
    QTest::newRow("active") << 0 << 3 << QStringLiteral("Active");
    QTest::newRow("adopt") << 1 << 3 << QStringLiteral("Adopt");
    QTest::newRow("a type that is neither") << 2 << 3 << QStringLiteral("Active");
    QTest::newRow("flags") << 0 << 4 << QStringLiteral("Flags");
    QTest::newRow("behind the last") << 0 << 5 << QStringLiteral("Not handled correctly");
    QTest::newRow("before the first") << 0 << -1 << QStringLiteral("Not handled correctly");
}

void TestCanMultiInterfaceModel::headers()
{
    QFETCH(int, type);
    QFETCH(int, section);
    QFETCH(QString, header);
    m_model->setModelType(static_cast<Model::ModelType>(type));
    QCOMPARE(m_model->headerData(section, Qt::Horizontal, Qt::DisplayRole), QVariant(header));
}

void TestCanMultiInterfaceModel::otherHeadersAreEmpty_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("role");

    QTest::newRow("at the side") << int(Qt::Vertical) << int(Qt::DisplayRole);
    QTest::newRow("tool tip") << int(Qt::Horizontal) << int(Qt::ToolTipRole);
    QTest::newRow("alignment") << int(Qt::Horizontal) << int(Qt::TextAlignmentRole);
}

void TestCanMultiInterfaceModel::otherHeadersAreEmpty()
{
    QFETCH(int, orientation);
    QFETCH(int, role);
    QVERIFY(!m_model->headerData(0, static_cast<Qt::Orientation>(orientation), role).isValid());
}

void TestCanMultiInterfaceModel::columnsDisplay_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("shown");

    QTest::newRow("identifier") << 0 << QVariant::fromValue(quint16(2));
    QTest::newRow("name") << 1 << QVariant(QStringLiteral("Demo - B (left door)"));
    QTest::newRow("primary") << 2 << QVariant();
    QTest::newRow("active") << 3 << QVariant();
    QTest::newRow("flags") << 4 << QVariant();
}

void TestCanMultiInterfaceModel::columnsDisplay()
{
    QFETCH(int, column);
    QFETCH(QVariant, shown);
    add(QStringLiteral("A"));
    FakeAdapter *adapter = add(QStringLiteral("B"));
    adapter->setCanAdapterOption(Adapter::OptionAdapterName, QStringLiteral("Demo - B"));
    adapter->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("left door"));
    QCOMPARE(cell(1, column), shown);
}

void TestCanMultiInterfaceModel::anEmptyDescriptionLeavesTheNameAlone()
{
    FakeAdapter *adapter = add(QStringLiteral("A"));
    adapter->setCanAdapterOption(Adapter::OptionAdapterName, QStringLiteral("Demo - A %1"));
    QCOMPARE(cell(0, 1).toString(), QStringLiteral("Demo - A %1"));
    adapter->setCanAdapterOption(Adapter::OptionDescription, QString());
    QCOMPARE(cell(0, 1).toString(), QStringLiteral("Demo - A %1"));
}

void TestCanMultiInterfaceModel::aColumnThatIsNoneSaysSo()
{
    addThree();
    QCOMPARE(m_model->data(m_model->at(0, 5), Qt::DisplayRole).toString(),
             QStringLiteral("unhandled column 5, fix me"));
}

void TestCanMultiInterfaceModel::checkColumnsShowTheRoles_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QVariant>("primary");
    QTest::addColumn<QVariant>("active");

    QTest::newRow("primary and active") << 0 << QVariant(2) << QVariant(2);
    QTest::newRow("active") << 1 << QVariant(0) << QVariant(2);
    QTest::newRow("neither") << 2 << QVariant(0) << QVariant(0);
}

void TestCanMultiInterfaceModel::checkColumnsShowTheRoles()
{
    QFETCH(int, row);
    QFETCH(QVariant, primary);
    QFETCH(QVariant, active);
    addThree();
    QCOMPARE(cell(row, 2, Qt::CheckStateRole), primary);
    QCOMPARE(cell(row, 3, Qt::CheckStateRole), active);
}

void TestCanMultiInterfaceModel::checkStatesAreNumbers()
{
    addThree();
    QCOMPARE(cell(0, 2, Qt::CheckStateRole).userType(), int(QMetaType::Int));
    for (const int column : {0, 1, 4})
        QVERIFY(!cell(0, column, Qt::CheckStateRole).isValid());
}

void TestCanMultiInterfaceModel::noRoleAnswersForAMissingRow()
{
    addThree();
    for (const int role : {int(Qt::DisplayRole), int(Qt::ToolTipRole), int(Qt::CheckStateRole), 257}) {
        QVERIFY(m_model->data(m_model->at(2, 3), role).isValid() == (role != Qt::DisplayRole));
        QVERIFY(!m_model->data(m_model->at(3, 3), role).isValid());
        QVERIFY(!m_model->data(QModelIndex(), role).isValid());
    }
}

void TestCanMultiInterfaceModel::otherRolesAreEmpty()
{
    addThree();
    for (const int role : {int(Qt::EditRole), int(Qt::DecorationRole), int(Qt::UserRole), 258})
        QVERIFY(!cell(0, 1, role).isValid());
}

void TestCanMultiInterfaceModel::eachFlagHasItsOption_data()
{
    QTest::addColumn<int>("option");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("set");

    QTest::newRow("CAN FD") << int(Adapter::OptionUseCanFd) << QVariant(true) << QStringLiteral("FD");
    QTest::newRow("listen only") << int(Adapter::OptionListenOnly) << QVariant(true) << QStringLiteral("LO");
    QTest::newRow("auto bus on") << int(Adapter::OptionAutoBusOn) << QVariant(true) << QStringLiteral("Auto");
    QTest::newRow("error frames") << int(Adapter::OptionLogErrorFrames) << QVariant(true) << QStringLiteral("EF");
    QTest::newRow("low speed") << int(Adapter::OptionLowSpeed) << QVariant(true) << QStringLiteral("LS");
    QTest::newRow("link") << int(Adapter::OptionLinkedAdapter) << QVariant(7u) << QStringLiteral("LNK");
    QTest::newRow("no link") << int(Adapter::OptionLinkedAdapter) << QVariant(0u) << QString();
    QTest::newRow("something else") << int(Adapter::OptionForcedEcho) << QVariant(true) << QString();
}

void TestCanMultiInterfaceModel::eachFlagHasItsOption()
{
    QFETCH(int, option);
    QFETCH(QVariant, value);
    QFETCH(QString, set);
    add(QStringLiteral("A"))->setCanAdapterOption(static_cast<Adapter::AdapterOption>(option), value);
    const auto flags = cell(0, 4, 257).value<Model::AdapterModelFlags>();
    QStringList letters;
    const QList<QPair<bool, const char *>> all = {{flags.canFd, "FD"},       {flags.listenOnly, "LO"},
                                                  {flags.autoBusOn, "Auto"}, {flags.errorFrames, "EF"},
                                                  {flags.lowSpeed, "LS"},    {flags.linked, "LNK"}};
    for (const auto &flag : all) {
        if (flag.first)
            letters.append(QLatin1String(flag.second));
    }
    QCOMPARE(letters.join(QLatin1Char(' ')), set);
}

void TestCanMultiInterfaceModel::flagsHaveAName()
{
    add(QStringLiteral("A"));
    QCOMPARE(cell(0, 0, 257).typeName(), "CanMultiInterfaceModel::AdapterModelFlags");
    QCOMPARE(m_model->getAdapterFlags(m_model->index(0, 4)).userType(),
             qMetaTypeId<CanMultiInterfaceModel::AdapterModelFlags>());
}

void TestCanMultiInterfaceModel::theirNameIsKnownFromTheStart()
{
    QCOMPARE(m_typeAtStart, qMetaTypeId<Model::AdapterModelFlags>());
}

void TestCanMultiInterfaceModel::aLinkToNobodyCountsAsALink()
{
    FakeAdapter *adapter = add(QStringLiteral("A"));
    add(QStringLiteral("B"));
    m_collection->removeAdapterAt(1);
    adapter->setCanAdapterOption(Adapter::OptionLinkedAdapter, 2u);
    QVERIFY(cell(0, 4, 257).value<Model::AdapterModelFlags>().linked);
}

void TestCanMultiInterfaceModel::columnsCanBeUsed_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("isCheckable");

    QTest::newRow("identifier") << 0 << false;
    QTest::newRow("name") << 1 << false;
    QTest::newRow("primary") << 2 << true;
    QTest::newRow("active") << 3 << true;
    QTest::newRow("flags") << 4 << false;
}

void TestCanMultiInterfaceModel::columnsCanBeUsed()
{
    QFETCH(int, column);
    QFETCH(bool, isCheckable);
    addThree();
    Qt::ItemFlags expected = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    expected.setFlag(Qt::ItemIsUserCheckable, isCheckable);
    QCOMPARE(m_model->flags(m_model->index(2, column)), expected);
}

void TestCanMultiInterfaceModel::aMissingCellCannotBeUsed()
{
    QCOMPARE(m_model->flags(QModelIndex()), Qt::ItemFlags());
}

void TestCanMultiInterfaceModel::thePrimaryRowStaysActive()
{
    addThree();
    QCOMPARE(cell(0, 3, Qt::CheckStateRole).toInt(), 2);
    QVERIFY(!isCheckable(0, 3));
    QCOMPARE(m_model->flags(m_model->index(0, 3)), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    QCOMPARE(cell(0, 3, Qt::ToolTipRole).toString(),
             QStringLiteral("Adapter is set as primary, cannot unset active state."));
}

void TestCanMultiInterfaceModel::aTwinCannotBecomeActive()
{
    add(QStringLiteral("A"));
    add(QStringLiteral("A"));
    QVERIFY(!isCheckable(1, 3));
    QCOMPARE(cell(1, 3, Qt::ToolTipRole).toString(),
             QStringLiteral("Set active not possible, same active adapter already exists."));
}

void TestCanMultiInterfaceModel::adoptingIsAlwaysFree()
{
    add(QStringLiteral("A"));
    add(QStringLiteral("A"));
    m_model->setModelType(Model::ModelTypeAdopt);
    for (const int row : {0, 1}) {
        QVERIFY(isCheckable(row, 3));
        QCOMPARE(cell(row, 3, Qt::ToolTipRole), QVariant(QString()));
    }
}

void TestCanMultiInterfaceModel::anyOtherModelTypeIsFreeToo()
{
    add(QStringLiteral("A"));
    m_model->setModelType(static_cast<Model::ModelType>(2));
    QVERIFY(isCheckable(0, 3));
    QCOMPARE(cell(0, 3, Qt::ToolTipRole), QVariant(QString()));
}

void TestCanMultiInterfaceModel::onlyTheActiveColumnHasAToolTip()
{
    addThree();
    for (const int column : {0, 1, 2, 4})
        QCOMPARE(cell(0, column, Qt::ToolTipRole), QVariant(QString()));
    // May be changed, and so has nothing to explain.
    QCOMPARE(cell(1, 3, Qt::ToolTipRole), QVariant(QString()));
}

void TestCanMultiInterfaceModel::aPrimaryRowIsChosenInItsColumn()
{
    addThree();
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);
    QVERIFY(m_model->setData(m_model->index(2, 2), true, Qt::CheckStateRole));
    QCOMPARE(m_collection->getPrimaryAdapter(), m_collection->adapterAt(2));
    // Who is active may have changed with it.
    QCOMPARE(reportedRows(changes), (QList<Rows>{{0, 2, 2}, {0, 2, 3}}));
}

void TestCanMultiInterfaceModel::anActiveStateIsChangedInItsColumn()
{
    addThree();
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);
    QVERIFY(m_model->setData(m_model->index(2, 3), true, Qt::CheckStateRole));
    QVERIFY(isActive(2));
    QVERIFY(m_model->setData(m_model->index(1, 3), 0, Qt::CheckStateRole));
    QVERIFY(!isActive(1));
    QCOMPARE(reportedRows(changes), (QList<Rows>{{0, 2, 3}, {0, 2, 3}}));
}

void TestCanMultiInterfaceModel::adoptingGoesToTheActiveState()
{
    addThree();
    m_model->setModelType(Model::ModelTypeAdopt);
    QVERIFY(m_model->setData(m_model->index(2, 3), true, Qt::CheckStateRole));
    QVERIFY(isActive(2));
    // The collection has its rules whatever the column is called.
    QVERIFY(m_model->setData(m_model->index(0, 3), false, Qt::CheckStateRole));
    QVERIFY(isActive(0));
}

void TestCanMultiInterfaceModel::otherCellsTakeNothing_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");

    QTest::newRow("identifier") << 0 << 0;
    QTest::newRow("name") << 0 << 1;
    QTest::newRow("flags") << 0 << 4;
    QTest::newRow("behind the last column") << 0 << 5;
    QTest::newRow("behind the last row") << 3 << 2;
    QTest::newRow("nowhere") << -1 << -1;
}

void TestCanMultiInterfaceModel::otherCellsTakeNothing()
{
    QFETCH(int, row);
    QFETCH(int, column);
    addThree();
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);
    const QModelIndex index = row < 0 ? QModelIndex() : m_model->at(row, column);
    QVERIFY(!m_model->setData(index, true, Qt::CheckStateRole));
    QCOMPARE(changes.count(), 0);
}

void TestCanMultiInterfaceModel::otherRolesTakeNothing()
{
    addThree();
    QVERIFY(!m_model->setData(m_model->index(2, 2), true, Qt::EditRole));
    QCOMPARE(m_collection->getPrimaryAdapter(), m_collection->adapterAt(0));
}

void TestCanMultiInterfaceModel::identifiersAreFound()
{
    addThree();
    m_collection->removeAdapterAt(1);
    QCOMPARE(m_model->findRowOfId(1), 0);
    QCOMPARE(m_model->findRowOfId(2), -1);
    QCOMPARE(m_model->findRowOfId(3), 1);
}

QTEST_MAIN(TestCanMultiInterfaceModel)
#include "tst_canmultiinterfacemodel.moc"
