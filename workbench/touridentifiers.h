#pragma once

#include <QtGlobal>

/// Identifiers of the tour that no node of the simulated network uses.
namespace TourIdentifiers {
constexpr quint32 firstToSecond = 0x6E1;
constexpr quint32 secondToFirst = 0x6E2;
constexpr quint32 panel = 0x6E3;
constexpr quint32 cyclic = 0x6E4;
constexpr quint32 replayedLog = 0x6E5;
constexpr quint32 replayedTrace = 0x6E6;
constexpr quint32 logStart = 0x6E7;
} // namespace TourIdentifiers
