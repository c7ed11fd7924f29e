#pragma once

class TourContext;

/// The steps of the tour, as a user would take them. Each gives false if what follows makes no sense without it.
namespace TourSteps {

// The network and the way of frames through it.
bool connectDemo(TourContext &tour);
bool meetAllNodes(TourContext &tour);
bool sendBothWays(TourContext &tour);
bool readObject(TourContext &tour);
bool stopAndStartNode(TourContext &tour);
bool seeBitRateSwitch(TourContext &tour);
bool connectAgain(TourContext &tour);
bool loseNothing(TourContext &tour);

// The window, its transmit panel and its views.
bool showEmptyWindow(TourContext &tour);
bool sendFromPanel(TourContext &tour);
bool sendCyclically(TourContext &tour);
bool showTraffic(TourContext &tour);

// Messages composed in the builder.
bool buildMessages(TourContext &tour);
bool markFrames(TourContext &tour);

// Recordings.
bool replayRecordings(TourContext &tour);
bool recordAndOpenTrace(TourContext &tour);
bool logAndReplay(TourContext &tour);

// The overview of the interfaces, its form and the bit timings.
bool manageInterfaces(TourContext &tour);
bool showInterfaceForms(TourContext &tour);
bool showBitTimings(TourContext &tour);

// The settings file.
bool saveAndReopen(TourContext &tour);

} // namespace TourSteps
