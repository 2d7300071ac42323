// A stopwatch for one thread.
#pragma once

#include <QtGlobal>

/// Stopwatch with the ticks of gChrono: milliseconds of the system clock. Laps are not summed.
class KSimpleChronometer {
public:
    enum TimeUnits { Nanoseconds = 1, Microseconds, Milliseconds, Seconds, Minutes, Hours };

    KSimpleChronometer();
    virtual ~KSimpleChronometer();

    /// Starts from zero; does nothing if already running.
    void Start();
    /// Stops and returns the elapsed time, which stays until the next Start() or Reset().
    qint64 Stop();
    /// Sets the time to zero; a running watch keeps running.
    void Reset();
    /// Returns the elapsed time; 0 if the clock was set back while running.
    qint64 ElapsedTime();
    double ElapsedTime(TimeUnits units);
    bool IsStarted() { return m_started; }
    double UnitConv(TimeUnits units, qint64 ticks);

private:
    qint64 m_frequency;
    qint64 m_startTime = 0;
    qint64 m_elapsed = 0;
    bool m_started = false;
};
