// Named timers for many concurrent threads, with statistics and a text report.
#pragma once

#include <QString>
#include <QStringList>
#include <tbb/concurrent_hash_map.h>
#include <tbb/tbb_allocator.h>

/// Named timers with one counter per name and thread, so threads rarely wait for each other. Timers with different
/// names can nest; on one thread, a timer can't nest in itself. Ticks are milliseconds of the system clock. Any thread
/// may call any function at any time, except Reset() without a name and Dump(), which require that no timer runs.
///
/// Use the single instance, gChrono.
class KChronometer {
public:
    enum TimeUnits { Nanoseconds = 1, Microseconds, Milliseconds, Seconds, Minutes, Hours };

    /// Times in ticks.
    struct Counter {
        qint64 nbCalls = 0; // completed Start/Stop pairs, and AccumulateTiming() calls
        qint64 totalTime = 0;
        qint64 startTime = 0;
        qint64 stopTime = 0;
    };

    struct TbbHashStringCompare {
        static size_t hash(const QString &key) { return qHash(key, 0); }
        static bool equal(const QString &a, const QString &b) { return a == b; }
    };

    /// Measures the overhead of one Start/Stop pair if this is the first instance.
    KChronometer();

    /// Starts the timer, or restarts it if it is running.
    void Start(QString name);
    /// Returns the ticks since Start(), or 0 if this thread never started the timer. A second call measures from the
    /// same start.
    qint64 Stop(QString name);
    double Stop(QString name, TimeUnits units);
    /// Adds a time measured elsewhere. Statistics by name include only counters that Start() created.
    void AccumulateTiming(QString name, qint64 ticks);

    void Reset();
    /// Resets the timer in all threads.
    void Reset(QString name);

    // The index is -1 for all threads, otherwise a position in the order in which threads first started the timer. The
    // result is 0 if there is no such thread.
    qint64 GetStatTotalTime(QString name, int index);
    double GetStatTotalTime(QString name, TimeUnits units, int index);
    qint64 GetStatNbCalls(QString name, int index);
    /// Returns the number of threads that started the timer or, with @p onlyUsed, also stopped it.
    int GetNbContext(QString name, bool onlyUsed);
    /// Returns the keys "name@thread" of a timer, in the order of their first start.
    QStringList FindRelatedCounter(QString name);

    /// Formats a time like "1 h:1 min:1 s", "1.5 s" or "1000 ms": in the largest unit that gives a value above one,
    /// otherwise in nanoseconds; truncated to three decimals.
    QString FormattedTime(qint64 ticks);
    double UnitConv(TimeUnits units, qint64 ticks);
    /// Returns one line per counter: " key : ticks, calls".
    QString Dump();
    qint64 GetTick();

    /// Whether the first instance has measured the overhead.
    static bool Calibrated;

private:
    friend class KSimpleChronometer; // reads the frequency

    template <typename Value>
    using Map = tbb::concurrent_hash_map<QString, Value, TbbHashStringCompare,
                                         tbb::tbb_allocator<std::pair<const QString, Value>>>;

    void Calibrate();
    void NoteKey(const QString &name, const QString &key);
    qint64 Sum(const QString &name, int index, qint64 Counter::*field);

    qint64 m_frequency = 1000;  // ticks per second
    qint64 m_overhead = 0;      // written, never read
    Map<Counter> m_counters;    // by name and thread
    Map<QStringList> m_related; // keys of a name; lock m_counters first
};

/// The process's timers, constructed before main().
extern KChronometer gChrono;
