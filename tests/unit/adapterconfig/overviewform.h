#pragma once

#include "caninterfacewidget.h"
#include "canmultiinterfacedialog.h"
#include "fakefamily.h"
#include "messageboxes.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/// A user at the overview of the saved adapters. Its families are fakes: "Demo", whose adapters the user describes
/// alone, and "SocketCAN", where a link called "can0" exists that the system has set up. The windows that it saves go to
/// a folder of its own.
class OverviewForm
{
public:
    using Adapter = AbstractCanAdapter;

    OverviewForm()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsFolder.path());
        QCoreApplication::setOrganizationName(QStringLiteral("Harrier"));
        QCoreApplication::setApplicationName(QStringLiteral("Falcon"));
        qApp->setProperty("AppNameWithVersion", QStringLiteral("Falcon 2.4.1"));

        demo = installFamily(Adapter::CanAdapterDemo, QStringLiteral("Demo"));
        demo->additionalConfig = true;
        demo->deviceMap = {{QStringLiteral("East"), demoFeatures}, {QStringLiteral("West"), demoFeatures}};
        link = installFamily(Adapter::CanAdapterSocketCan, QStringLiteral("SocketCAN"));
        link->deviceMap = {{QStringLiteral("can0"), Adapter::FeatureListenOnly | Adapter::FeatureErrorFrames}};
        setLink(250);
    }

    ~OverviewForm()
    {
        dialog.reset();
        // The families stay for the next form, which puts its own in their places of the list.
        demo->create = nullptr;
        link->create = nullptr;
        qApp->setProperty("AppNameWithVersion", QVariant());
    }

    /// As the system reports the link from now on.
    void setLink(quint16 bitrate, bool canFd = false)
    {
        Adapter::SocketCANProps props;
        props.bitrate = bitrate;
        props.canFd = canFd;
        props.fdBitrate = canFd ? 2000 : 0;
        link->props.insert(QStringLiteral("can0"), props);
    }

    bool show(bool showConnectButton = true)
    {
        make(showConnectButton);
        dialog->show();
        return QTest::qWaitForWindowExposed(dialog.get());
    }

    void make(bool showConnectButton = true)
    {
        dialog = std::make_unique<CanMultiInterfaceDialog>(&collection, connectRequest, showConnectButton, nullptr);
    }

    /// What a user does to describe an adapter in the form.
    void describe(Adapter::CanAdapterType type, const QString &device, const QString &description)
    {
        auto *types = find<QComboBox>("cbCanInterfaceType");
        types->setCurrentIndex(types->findData(static_cast<unsigned int>(type)));
        find<QComboBox>("cbCanDevice")->setCurrentText(device);
        editDescription(description);
    }
    void editDescription(const QString &text) { find<QLineEdit>("leDescription")->setText(text); }

    /// Adapters as the overview itself saves them, of the types in turn, which the dialog shows from its start on. The
    /// description of each is its number.
    bool showWith(const QList<Adapter::CanAdapterType> &types)
    {
        if (!show())
            return false;
        for (const Adapter::CanAdapterType type : types) {
            const bool isLink = type == Adapter::CanAdapterSocketCan;
            // While nothing is selected, or a link would replace it at once.
            table()->selectionModel()->reset();
            describe(type, isLink ? QStringLiteral("can0") : QStringLiteral("East"),
                     QString::number(collection.getAdapterCount() + 1));
            press("btnAddInterface");
        }
        dialog.reset();
        boxes.shown.clear();
        return show();
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        return dialog->findChild<Widget *>(QLatin1String(name));
    }
    QTableView *table() const { return find<QTableView>("tableView"); }
    CanInterfaceWidget *form() const { return dialog->findChild<CanInterfaceWidget *>(); }
    void press(const char *button) const { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    void clickRow(int row) const
    {
        const QPoint place = table()->visualRect(table()->model()->index(row, 1)).center();
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }

    QList<int> selectedRows() const
    {
        QList<int> rows;
        for (const QModelIndex &index : table()->selectionModel()->selectedRows())
            rows.append(index.row());
        return rows;
    }
    QString shownDescription() const { return find<QLineEdit>("leDescription")->text(); }

    Adapter *adapterAt(int row) { return collection.adapterAt(static_cast<quint16>(row)); }
    QVariant saved(int row, Adapter::AdapterOption option) { return adapterAt(row)->getCanAdapterOption(option); }
    QString savedDescription(int row) { return saved(row, Adapter::OptionDescription).toString(); }
    QStringList savedDescriptions()
    {
        QStringList texts;
        for (int row = 0; row < collection.getAdapterCount(); ++row)
            texts.append(savedDescription(row));
        return texts;
    }
    QList<QByteArray> savedBytes()
    {
        QList<QByteArray> bytes;
        for (int row = 0; row < collection.getAdapterCount(); ++row)
            bytes.append(adapterAt(row)->getValuesAsByteArray());
        return bytes;
    }

    /// Of all that were ever made by the families.
    int livingAdapters() const
    {
        return static_cast<int>(std::count_if(made.begin(), made.end(), [](const auto &adapter) { return adapter; }));
    }

    QTemporaryDir settingsFolder;
    FakeFamily *demo;
    FakeFamily *link;
    QList<QPointer<Adapter>> made;
    /// No adapter comes from the families while it is set.
    bool makesNothing = false;
    MultiCanAdapterHandler collection;
    bool connectRequest = true;
    std::unique_ptr<CanMultiInterfaceDialog> dialog;
    MessageBoxes boxes;

private:
    static constexpr unsigned int demoFeatures = Adapter::FeatureListenOnly | Adapter::FeatureCanFd;

    FakeFamily *installFamily(Adapter::CanAdapterType type, const QString &name)
    {
        FakeFamily *family = FakeFamily::install(type, name);
        family->classicBitrates = {{QStringLiteral("125 kBit/s"), 125, 0.875},
                                   {QStringLiteral("250 kBit/s"), 250, 0.875},
                                   {QStringLiteral("500 kBit/s"), 500, 0.875}};
        family->fdArbitrationBitrates = family->classicBitrates;
        family->fdDataBitrates = {{QStringLiteral("1000 kBit/s"), 1000, 0.8},
                                  {QStringLiteral("2000 kBit/s"), 2000, 0.8}};
        family->create = [this, type](const QString &device) -> Adapter * {
            if (makesNothing)
                return nullptr;
            auto *adapter = new FakeAdapter(type, device);
            adapter->supportedOptions = {Adapter::OptionUseCanFd,       Adapter::OptionAdapterName,
                                         Adapter::OptionDeviceName,     Adapter::OptionDeviceData,
                                         Adapter::OptionPort,           Adapter::OptionAutoBusOn,
                                         Adapter::OptionLogErrorFrames, Adapter::OptionSystemTimestamp,
                                         Adapter::OptionListenOnly,     Adapter::OptionDescription,
                                         Adapter::OptionUsdoNodeId,     Adapter::OptionLinkedAdapter,
                                         Adapter::OptionFdBusParameter, Adapter::OptionClassicBusParameter,
                                         Adapter::OptionFdBitrate,      Adapter::OptionBitrate,
                                         Adapter::OptionForcedEcho};
            made.append(adapter);
            return adapter;
        };
        return family;
    }
};
