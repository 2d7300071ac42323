// A stopwatch for one thread.
#pragma once

#include <QtGlobal>

/// Ticks are those of gChrono: milliseconds of the system's clock. Laps don't add up.
class KSimpleChronometer {
public:
    enum TimeUnits { Nanoseconds = 1, Microseconds, Milliseconds, Seconds, Minutes, Hours };

    KSimpleChronometer();
    virtual ~KSimpleChronometer();

    /// Begins from zero; does nothing on a running watch.
    void Start();
    /// The elapsed time, which stays until the next Start().
    qint64 Stop();
    /// Back to zero; a running watch keeps running.
    void Reset();
    /// 0 on a running watch if the clock was set back.
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
