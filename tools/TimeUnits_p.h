// Conversion of ticks, shared by both chronometers.
#pragma once

#include <QtGlobal>

/// Converts @p ticks, at @p frequency ticks per second, to a unit numbered as in KChronometer::TimeUnits; any other
/// number means seconds.
double InTimeUnit(int unit, qint64 ticks, qint64 frequency);
