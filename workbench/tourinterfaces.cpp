#include "toursteps.h"

#include "canbusparameterdialog.h"
#include "canfdbusparameterdialog.h"
#include "canmultiinterfacedialog.h"
#include "mainwindow.h"
#include "tourcontext.h"
#include "tourfamily.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

namespace {
using Adapter = AbstractCanAdapter;

/// A kind of adapter for which the form has a page, or rows, of its own.
struct FormPage
{
    Adapter::CanAdapterType type;
    const char *name; ///< in the list of types, and of the picture
    const char *picture;
    bool isBuiltIn = false;
    const char *control = nullptr; ///< what the user fills in
    const char *input = nullptr;
};

constexpr FormPage pages[] = {
    {Adapter::CanAdapterDemo, "Demo", "demo", true},
    {Adapter::CanAdapterFixedNetwork20, "CAN over TCP", "network", true, "le_ipAddress", "192.168.7.20"},
    {Adapter::CanAdapterSystecUsb, "Adapter with bit timing register", "register"},
    {Adapter::CanAdapterJanzTec, "Adapter with termination", "termination"},
    {Adapter::CanAdapterSystecEthernet, "Gateway with time-outs", "gateway", false, "le_ipAddress", "192.168.7.21"},
    {Adapter::CanAdapterSerialInternExtern, "Serial adapter, intern or extern", "serial", false, "cb_Stopbits", "1"},
    {Adapter::CanAdapterVelmorSerial, "Serial adapter, single wire", "single-wire", false, "cb_Stopbits", "2"},
    {Adapter::CanAdapterPcanAdvanced, "Adapter with segments", "segments"},
    {Adapter::CanAdapterSystecXm3, "Adapter with filter", "filter", false, "xm3cbFilterMode", "CAN ID filter"},
};

void press(const QWidget &dialog, const char *button)
{
    dialog.findChild<QPushButton *>(QString::fromLatin1(button))->click();
}

void fillIn(const QWidget &dialog, const FormPage &page)
{
    auto *moreSettings = dialog.findChild<QCheckBox *>(QStringLiteral("cbAdvancedConfig"));
    if (!moreSettings->isChecked())
        moreSettings->click();
    if (page.control == nullptr)
        return;
    const QString name = QLatin1String(page.control);
    if (auto *list = dialog.findChild<QComboBox *>(name))
        list->setCurrentText(QLatin1String(page.input));
    else
        dialog.findChild<QLineEdit *>(name)->setText(QLatin1String(page.input));
}

void describe(const QWidget &dialog, const QString &description)
{
    dialog.findChild<QLineEdit *>(QStringLiteral("leDescription"))->setText(description);
}

/// Runs `visit` in the overview that the command of the window opens.
void visitOverview(const TourContext &tour, const std::function<void(CanMultiInterfaceDialog &)> &visit)
{
    QTimer::singleShot(0, tour.window(), [&visit] {
        if (auto *dialog = qobject_cast<CanMultiInterfaceDialog *>(QApplication::activeModalWidget()))
            visit(*dialog);
    });
    tour.trigger(QStringLiteral("actionInterfaces"));
}

void reviewInterfaces(TourContext &tour, CanMultiInterfaceDialog &dialog)
{
    const QAbstractItemModel *table = dialog.findChild<QTableView *>(QStringLiteral("tableView"))->model();
    tour.report().compare(TourContext::tr("Interfaces in the overview"), 2, static_cast<quint64>(table->rowCount()));
    describe(dialog, TourContext::tr("left door"));
    press(dialog, "btnUpdateInterface");
    tour.report().compare(TourContext::tr("Description, as the overview shows it"),
                          TourContext::tr("Demo - Demo 1 (left door)"), table->index(0, 1).data().toString());
    tour.takePicture(&dialog, QStringLiteral("overview"), TourContext::tr("the overview of the interfaces"));
    tour.takeOtherLooks(&dialog, QStringLiteral("overview"), TourContext::tr("the overview of the interfaces"));
    press(dialog, "btnUpdateCloseConnect");
}

/// As a user adds one adapter of each kind.
void visitPages(TourContext &tour, CanMultiInterfaceDialog &dialog)
{
    auto *types = dialog.findChild<QComboBox *>(QStringLiteral("cbCanInterfaceType"));
    for (const FormPage &page : pages) {
        types->setCurrentIndex(types->findData(static_cast<unsigned int>(page.type)));
        fillIn(dialog, page);
        press(dialog, "btnAddInterface");
        const QString subject = TourContext::tr("the form, \"%1\"").arg(QLatin1String(page.name));
        const QString picture = QStringLiteral("interface-%1").arg(QLatin1String(page.picture));
        tour.takePicture(&dialog, picture, subject);
        // The page with the most rows.
        if (page.type == Adapter::CanAdapterSystecEthernet)
            tour.takeOtherLooks(&dialog, picture, subject);
    }
    tour.report().compare(
        TourContext::tr("Interfaces added in the overview"), static_cast<quint64>(std::size(pages)),
        static_cast<quint64>(dialog.findChild<QTableView *>(QStringLiteral("tableView"))->model()->rowCount()));
    press(dialog, "btnClose");
}

template <typename Dialog>
void showTiming(TourContext &tour, Dialog &dialog, const QString &picture, const QString &subject)
{
    dialog.open();
    tour.takePicture(&dialog, picture, subject);
    tour.takeOtherLooks(&dialog, picture, subject);
    dialog.reject();
}
} // namespace

namespace TourSteps {

bool manageInterfaces(TourContext &tour)
{
    tour.window()->disconnectAdapters();
    visitOverview(tour, [&tour](CanMultiInterfaceDialog &dialog) { reviewInterfaces(tour, dialog); });
    tour.report().compare(TourContext::tr("Connected by the overview"), TourContext::tr("yes"),
                          TourContext::yesOrNo(tour.window()->session()->isConnected()));
    return true;
}

bool showInterfaceForms(TourContext &tour)
{
    for (const FormPage &page : pages) {
        if (!page.isBuiltIn)
            CanAdapterFactory::registerFamily(std::make_unique<TourFamily>(page.type, QLatin1String(page.name)));
    }
    {
        MultiCanAdapterHandler collection;
        bool connectRequest = false;
        CanMultiInterfaceDialog dialog(&collection, connectRequest, true, tour.window());
        dialog.open();
        visitPages(tour, dialog);
    }
    for (const FormPage &page : pages) {
        if (!page.isBuiltIn)
            CanAdapterFactory::unregisterFamily(page.type);
    }
    return true;
}

bool showBitTimings(TourContext &tour)
{
    const std::unique_ptr<Adapter> adapter(CanAdapterFactory::createCanAdapter(Adapter::CanAdapterDemo, {}));
    CANBusParameterDialog classic(tour.window());
    classic.setThresholds(adapter->getThresholds(false));
    CAN::CANClassicBusParameter values;
    values.name = TourContext::tr("Long line");
    values.bitrate = 125;
    values.samplePoint = 87.5;
    classic.setValues(values);
    press(classic, "btnUpdateTimings");
    tour.report().compare(TourContext::tr("Bitrate of the timing that was found"), 125, classic.getValues().bitrate);
    showTiming(tour, classic, QStringLiteral("bit-timing"), TourContext::tr("the bit timing"));

    CANFDBusParameterDialog data(tour.window());
    CAN::CANFDBusParameter fdValues;
    fdValues.name = TourContext::tr("Fast data");
    fdValues.bitrate = 2000;
    fdValues.timing.tSeg1 = 31;
    fdValues.timing.tSeg2 = 8;
    fdValues.timing.sjw = 8;
    data.setValues(fdValues, Adapter::CanAdapterIxxatVci3);
    showTiming(tour, data, QStringLiteral("data-timing"), TourContext::tr("the timing of the data phase"));
    return true;
}

} // namespace TourSteps
