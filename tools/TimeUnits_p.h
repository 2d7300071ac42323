// One conversion of ticks for both kinds of chronometers.
#pragma once

#include <QtGlobal>

/// @p ticks at @p frequency ticks a second, in a unit numbered as in KChronometer::TimeUnits; any other number:
/// seconds.
double InTimeUnit(int unit, qint64 ticks, qint64 frequency);
