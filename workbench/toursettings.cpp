#include "toursteps.h"

#include "mainwindow.h"
#include "tourcontext.h"

#include <QFile>

namespace {
constexpr quint64 savedNumber = 4711;
} // namespace

namespace TourSteps {

bool saveAndReopen(TourContext &tour)
{
    SettingsDatabase *settings = tour.window()->session()->settings();
    settings->setValue(QStringLiteral("tour"), savedNumber);
    tour.report().add(TourContext::tr("Settings saved"), TourContext::tr("yes"),
                      TourContext::yesOrNo(tour.window()->session()->saveSettings()),
                      QFile::exists(settings->getSettingsFileBaseName()));

    // What the next start of the workbench does.
    SettingsDatabase reopened(nullptr);
    MultiCanAdapterHandler restored;
    const bool opened = reopened.openDatabase(QString());
    reopened.restoreAdapters(&restored);
    tour.report().compare(TourContext::tr("Settings opened again"), TourContext::tr("yes"),
                          TourContext::yesOrNo(opened));
    tour.report().compare(TourContext::tr("Saved value"), savedNumber,
                          reopened.value(QStringLiteral("tour"), 0).toULongLong());
    tour.report().compare(TourContext::tr("Interfaces that come back"),
                          tour.window()->session()->adapters()->getAdapterCount(), restored.getAdapterCount());
    for (quint16 row = 0; row < restored.getAdapterCount(); ++row) {
        const AbstractCanAdapter *before = tour.interfaceAt(row);
        const AbstractCanAdapter *after = restored.adapterAt(row);
        const QByteArray wanted = before != nullptr ? before->getValuesAsByteArray() : QByteArray();
        tour.report().compare(TourContext::tr("  settings of interface %1 are the same").arg(row + 1),
                              TourContext::tr("yes"), TourContext::yesOrNo(wanted == after->getValuesAsByteArray()));
    }
    return true;
}

} // namespace TourSteps
