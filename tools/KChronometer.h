// Named timers that run in many threads at once, their statistics and a text report.
#pragma once

#include <QString>
#include <QStringList>
#include <tbb/concurrent_hash_map.h>
#include <tbb/tbb_allocator.h>

/// A counter a name and thread: threads never wait for each other. Timers of different names nest; one name in one
/// thread doesn't. Ticks are milliseconds of the system's clock. Any thread may use it at any time, but Reset() without
/// a name and Dump() are for moments without running timers.
///
/// The class is meant to have one instance, gChrono.
class KChronometer {
public:
    enum TimeUnits { Nanoseconds = 1, Microseconds, Milliseconds, Seconds, Minutes, Hours };

    /// In ticks.
    struct Counter {
        qint64 nbCalls = 0; // completed pairs, and AccumulateTiming() calls
        qint64 totalTime = 0;
        qint64 startTime = 0;
        qint64 stopTime = 0;
    };

    struct TbbHashStringCompare {
        static size_t hash(const QString &key) { return qHash(key, 0); }
        static bool equal(const QString &a, const QString &b) { return a == b; }
    };

    /// The first instance measures what a pair of Start and Stop costs.
    KChronometer();

    /// Starting twice only moves the start on.
    void Start(QString name);
    /// Time since Start(), in ticks; 0 if this thread never started the name. A second Stop counts from the same Start.
    qint64 Stop(QString name);
    double Stop(QString name, TimeUnits units);
    /// Counts a time measured elsewhere. A name that was never started stays unknown to the statistics by name.
    void AccumulateTiming(QString name, qint64 ticks);

    void Reset();
    /// Forgets the name in all threads.
    void Reset(QString name);

    // Index -1: all threads; else the thread's place in the order in which threads first started the name; 0 if there
    // is none.
    qint64 GetStatTotalTime(QString name, int index);
    double GetStatTotalTime(QString name, TimeUnits units, int index);
    qint64 GetStatNbCalls(QString name, int index);
    /// In how many threads the timer was started or, with @p onlyUsed, stopped as well.
    int GetNbContext(QString name, bool onlyUsed);
    /// Keys "name@thread" of a name, in the order of their first start.
    QStringList FindRelatedCounter(QString name);

    /// "1 h:1 min:1 s", "1.5 s", "1000 ms": the largest unit of which there is more than one; cut to three decimals.
    QString FormattedTime(qint64 ticks);
    double UnitConv(TimeUnits units, qint64 ticks);
    /// A line a counter: " key : ticks, calls".
    QString Dump();
    qint64 GetTick();

    /// Whether the first instance has measured.
    static bool Calibrated;

private:
    friend class KSimpleChronometer; // takes the frequency

    template <typename Value>
    using Map = tbb::concurrent_hash_map<QString, Value, TbbHashStringCompare,
                                         tbb::tbb_allocator<std::pair<const QString, Value>>>;

    void Calibrate();
    void NoteKey(const QString &name, const QString &key);
    qint64 Sum(const QString &name, int index, qint64 Counter::*field);

    qint64 m_frequency = 1000;  // ticks a second
    qint64 m_overhead = 0;      // written, never read
    Map<Counter> m_counters;    // by name and thread
    Map<QStringList> m_related; // keys of a name. When both are held, m_counters comes first.
};

/// The process's timers, built before main().
extern KChronometer gChrono;
