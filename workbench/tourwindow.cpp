#include "toursteps.h"

#include "frameprobe.h"
#include "frametext.h"
#include "frameview.h"
#include "mainwindow.h"
#include "tourcontext.h"
#include "touridentifiers.h"
#include "tracepage.h"
#include "transmitpanel.h"
#include "waiting.h"

#include <QDir>
#include <QDoubleSpinBox>

namespace {
constexpr quint64 cyclicFrames = 25;
constexpr double cyclicPeriod = 20.0; // ms
} // namespace

namespace TourSteps {

bool showEmptyWindow(TourContext &tour)
{
    if (!QDir().mkpath(tour.directory()))
        return tour.stop(
            TourContext::tr("\"%1\" cannot be made. Give another directory with --out.").arg(tour.directory()));
    tour.report().add(TourContext::tr("A window without interfaces says what to do"), TourContext::tr("empty state"),
                      tour.window()->tracePage()->showsEmptyState() ? TourContext::tr("empty state")
                                                                    : TourContext::tr("a list"),
                      tour.window()->tracePage()->showsEmptyState());
    tour.takePicture(QStringLiteral("empty"), TourContext::tr("the empty window"));
    return true;
}

bool sendFromPanel(TourContext &tour)
{
    tour.fillPanel(FrameText::identifier(TourIdentifiers::panel, false), QStringLiteral("DE AD BE EF"));
    tour.pressButton(QStringLiteral("btnSend"));
    TourContext::await([&] { return tour.second()->count(TourIdentifiers::panel) > 0; });
    tour.report().compare(TourContext::tr("Frame sent from the transmit panel"), QStringLiteral("DE AD BE EF"),
                          FrameText::data(tour.second()->last(TourIdentifiers::panel)));
    return true;
}

bool sendCyclically(TourContext &tour)
{
    tour.fillPanel(FrameText::identifier(TourIdentifiers::cyclic, false), QStringLiteral("01 02"));
    tour.window()->transmitPanel()->findChild<QDoubleSpinBox *>(QStringLiteral("sbPeriod"))->setValue(cyclicPeriod);
    tour.pressButton(QStringLiteral("btnSendCyclically"));
    const bool came = TourContext::await([&] { return tour.second()->count(TourIdentifiers::cyclic) >= cyclicFrames; });
    tour.report().add(TourContext::tr("Cyclic frames, every %1 ms").arg(cyclicPeriod),
                      TourContext::tr("at least %1").arg(cyclicFrames),
                      QString::number(tour.second()->count(TourIdentifiers::cyclic)), came);

    tour.pressButton(QStringLiteral("btnStopAllCyclic"));
    // What was sent before the stop has arrived when a frame that was sent after it has.
    const quint64 marks = tour.second()->count(TourIdentifiers::panel);
    tour.fillPanel(FrameText::identifier(TourIdentifiers::panel, false), QStringLiteral("00"));
    tour.pressButton(QStringLiteral("btnSend"));
    TourContext::await([&] { return tour.second()->count(TourIdentifiers::panel) > marks; });
    const quint64 atStop = tour.second()->count(TourIdentifiers::cyclic);
    waitFor(static_cast<int>(10 * cyclicPeriod));
    tour.report().compare(TourContext::tr("Cyclic frames after \"Stop all\""), 0,
                          tour.second()->count(TourIdentifiers::cyclic) - atStop);
    // Goes on, to be seen in the pictures and after connecting again.
    tour.fillPanel(FrameText::identifier(TourIdentifiers::cyclic, false), QStringLiteral("01 02"));
    tour.pressButton(QStringLiteral("btnSendCyclically"));
    return true;
}

bool showTraffic(TourContext &tour)
{
    const auto rows = [](TracePage *page) { return page->view()->model()->rowCount(); };
    constexpr int screenful = 40;
    constexpr int fewIdentifiers = 10;
    TourContext::await([&] {
        return rows(tour.window()->tracePage()) > screenful && rows(tour.window()->identifierPage()) > fewIdentifiers;
    });
    tour.report().add(TourContext::tr("Rows of the trace"), TourContext::tr("more than %1").arg(screenful),
                      QString::number(rows(tour.window()->tracePage())), rows(tour.window()->tracePage()) > screenful);
    tour.report().add(TourContext::tr("Rows by identifier"), TourContext::tr("more than %1").arg(fewIdentifiers),
                      QString::number(rows(tour.window()->identifierPage())),
                      rows(tour.window()->identifierPage()) > fewIdentifiers);
    tour.fillPanel(QStringLiteral("123"), QStringLiteral("01 02 03 04"));

    tour.window()->showPage(tour.window()->identifierPage());
    tour.takePicture(QStringLiteral("identifiers"), TourContext::tr("the identifiers"));
    tour.takeOtherLooks(tour.window(), QStringLiteral("identifiers"), TourContext::tr("the identifiers"));
    tour.window()->showPage(tour.window()->tracePage());
    tour.takePicture(QStringLiteral("trace"), TourContext::tr("the trace"));
    tour.takeOtherLooks(tour.window(), QStringLiteral("trace"), TourContext::tr("the trace"));
    return true;
}

} // namespace TourSteps
