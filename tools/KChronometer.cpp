#include "KChronometer.h"

#include "TimeUnits_p.h"

#include <QDateTime>
#include <QThread>

#include <algorithm>
#include <iterator>

namespace {

constexpr size_t kBuckets = 1024; // enough that threads rarely share one
constexpr qint64 kOverheadBase = 124524475;
constexpr int kMatchesWanted = 100;

qint64 GetQTime()
{
    return QDateTime::currentMSecsSinceEpoch();
}

/// Returns "name@thread". The QThread object's address identifies the thread; it may be reused after the thread ends.
QString KeyOf(const QString &name)
{
    const QString thread = QString::number(reinterpret_cast<quintptr>(QThread::currentThread()));
    QString key;
    key.reserve(name.size() + 1 + thread.size());
    key.append(name).append(QLatin1Char('@')).append(thread);
    return key;
}

/// Truncates toward zero. Values beyond 64 bits are clamped to within 2,048 of the limits.
qint64 ToInteger(double value)
{
    constexpr double kLargest = 9223372036854773760.0;
    return static_cast<qint64>(std::clamp(value, -kLargest, kLargest));
}

} // namespace

bool KChronometer::Calibrated = false;

double InTimeUnit(int unit, qint64 ticks, qint64 frequency)
{
    const double seconds = static_cast<double>(ticks) / static_cast<double>(frequency);
    switch (unit) {
    case KChronometer::Nanoseconds:
        return seconds * 1e9;
    case KChronometer::Microseconds:
        return seconds * 1e6;
    case KChronometer::Milliseconds:
        return seconds * 1000.0;
    case KChronometer::Minutes:
        return seconds / 60.0;
    case KChronometer::Hours:
        return seconds / 3600.0;
    default:
        return seconds;
    }
}

KChronometer::KChronometer() : m_counters(kBuckets)
{
    if (!Calibrated)
        Calibrate();
}

void KChronometer::Calibrate()
{
    const QString name = QStringLiteral("pipo");
    m_overhead = kOverheadBase;
    qint64 previous = 0;
    for (int matches = 0; matches < kMatchesWanted;) {
        Start(name);
        const qint64 lap = Stop(name);
        if (lap == previous)
            ++matches;
        previous = lap;
    }
    m_overhead += previous - 1;
    Reset();
    Calibrated = true;
}

void KChronometer::NoteKey(const QString &name, const QString &key)
{
    Map<QStringList>::accessor related;
    m_related.insert(related, name);
    related->second.append(key);
}

void KChronometer::Start(QString name)
{
    const QString key = KeyOf(name);
    Map<Counter>::accessor counter;
    if (!m_counters.find(counter, key) && m_counters.insert(counter, key))
        NoteKey(name, key);
    counter->second.startTime = GetQTime(); // last, so that the bookkeeping isn't measured
}

qint64 KChronometer::Stop(QString name)
{
    const qint64 now = GetQTime(); // first, so that the lookup isn't measured
    Map<Counter>::accessor counter;
    if (!m_counters.find(counter, KeyOf(name)))
        return 0;
    const qint64 lap = now - counter->second.startTime;
    counter->second.totalTime += lap;
    ++counter->second.nbCalls;
    counter->second.stopTime = now;
    return lap;
}

double KChronometer::Stop(QString name, TimeUnits units)
{
    return UnitConv(units, Stop(name));
}

void KChronometer::AccumulateTiming(QString name, qint64 ticks)
{
    Map<Counter>::accessor counter;
    m_counters.insert(counter, KeyOf(name));
    counter->second.totalTime += ticks;
    ++counter->second.nbCalls;
}

void KChronometer::Reset()
{
    m_counters.clear();
    m_related.clear();
}

void KChronometer::Reset(QString name)
{
    for (const QString &key : FindRelatedCounter(name))
        m_counters.erase(key);
    m_related.erase(name);
}

qint64 KChronometer::Sum(const QString &name, int index, qint64 Counter::*field)
{
    const QStringList keys = FindRelatedCounter(name);
    qint64 sum = 0;
    for (int i = 0; i < keys.size(); ++i) {
        Map<Counter>::const_accessor counter;
        if ((index == -1 || index == i) && m_counters.find(counter, keys[i]))
            sum += counter->second.*field;
    }
    return sum;
}

qint64 KChronometer::GetStatTotalTime(QString name, int index)
{
    return Sum(name, index, &Counter::totalTime);
}

double KChronometer::GetStatTotalTime(QString name, TimeUnits units, int index)
{
    return UnitConv(units, GetStatTotalTime(name, index));
}

qint64 KChronometer::GetStatNbCalls(QString name, int index)
{
    return Sum(name, index, &Counter::nbCalls);
}

int KChronometer::GetNbContext(QString name, bool onlyUsed)
{
    int contexts = 0;
    for (const QString &key : FindRelatedCounter(name)) {
        Map<Counter>::const_accessor counter;
        if (m_counters.find(counter, key) && (!onlyUsed || counter->second.nbCalls > 0))
            ++contexts;
    }
    return contexts;
}

QStringList KChronometer::FindRelatedCounter(QString name)
{
    Map<QStringList>::const_accessor related;
    QStringList keys;
    if (m_related.find(related, name))
        std::copy(related->second.begin(), related->second.end(),
                  std::back_inserter(keys)); // a deep copy: another thread may append to the list
    return keys;
}

QString KChronometer::FormattedTime(qint64 ticks)
{
    const qint64 hours = ToInteger(UnitConv(Hours, ticks));
    const qint64 minutes = ToInteger(UnitConv(Minutes, ticks));
    const qint64 seconds = ToInteger(UnitConv(Seconds, ticks) - 60.0 * static_cast<double>(minutes));
    if (UnitConv(Hours, ticks) > 1.0)
        return QStringLiteral("%1 h:%2 min:%3 s").arg(hours).arg(minutes - 60 * hours).arg(seconds);
    if (UnitConv(Minutes, ticks) > 1.0)
        return QStringLiteral("%1 min:%2 s").arg(minutes).arg(seconds);

    static const struct {
        TimeUnits units;
        const char *name;
    } kSmall[] = {{Seconds, "s"}, {Milliseconds, "ms"}, {Microseconds, "us"}, {Nanoseconds, "ns"}};
    size_t i = 0;
    while (i + 1 < std::size(kSmall) && UnitConv(kSmall[i].units, ticks) <= 1.0)
        ++i;
    const double cut = static_cast<double>(ToInteger(UnitConv(kSmall[i].units, ticks) * 1000.0)) / 1000.0;
    return QStringLiteral("%1 %2").arg(cut).arg(QLatin1String(kSmall[i].name));
}

double KChronometer::UnitConv(TimeUnits units, qint64 ticks)
{
    return InTimeUnit(units, ticks, m_frequency);
}

QString KChronometer::Dump()
{
    QString text;
    for (const auto &[key, counter] : m_counters) {
        text += QStringLiteral(" %1 : %2, %3\r\n")
                    .arg(key, QString::number(counter.totalTime), QString::number(counter.nbCalls));
    }
    return text;
}

qint64 KChronometer::GetTick()
{
    return GetQTime();
}
