#include "tour.h"

#include "boxwatcher.h"
#include "toursteps.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcTour, "kestrune.workbench")

namespace {
struct Step
{
    const char *name;
    bool (*run)(TourContext &tour);
};

const Step steps[] = {
    {"empty window", TourSteps::showEmptyWindow},
    {"connect", TourSteps::connectDemo},
    {"meet all nodes", TourSteps::meetAllNodes},
    {"send both ways", TourSteps::sendBothWays},
    {"read an object", TourSteps::readObject},
    {"stop and start a node", TourSteps::stopAndStartNode},
    {"bit rate switch", TourSteps::seeBitRateSwitch},
    {"send from the panel", TourSteps::sendFromPanel},
    {"send cyclically", TourSteps::sendCyclically},
    {"show traffic", TourSteps::showTraffic},
    {"build messages", TourSteps::buildMessages},
    {"mark frames", TourSteps::markFrames},
    {"replay", TourSteps::replayRecordings},
    {"log and replay", TourSteps::logAndReplay},
    {"connect again", TourSteps::connectAgain},
    {"save and reopen", TourSteps::saveAndReopen},
    {"lose nothing", TourSteps::loseNothing},
    {"record and open", TourSteps::recordAndOpenTrace},
    {"interface forms", TourSteps::showInterfaceForms},
    {"bit timings", TourSteps::showBitTimings},
    {"interfaces", TourSteps::manageInterfaces},
};
} // namespace

Tour::Tour(MainWindow *window, const QString &outputDirectory)
    : m_context(window, outputDirectory)
{
}

bool Tour::run()
{
    const BoxWatcher boxes;
    for (const Step &step : steps) {
        qCInfo(lcTour) << "Step:" << step.name;
        if (!step.run(m_context))
            break;
    }
    m_context.report().compare(TourContext::tr("Message boxes"), QString(), boxes.texts().join(QLatin1String(" | ")));
    return obstacle().isEmpty() && report().allPassed();
}
