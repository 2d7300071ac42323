#include "KSimpleChronometer.h"

#include "KChronometer.h"
#include "TimeUnits_p.h"

KSimpleChronometer::KSimpleChronometer() : m_frequency(gChrono.m_frequency) { }

KSimpleChronometer::~KSimpleChronometer() = default;

void KSimpleChronometer::Start()
{
    if (m_started)
        return;
    m_startTime = gChrono.GetTick();
    m_started = true;
}

qint64 KSimpleChronometer::Stop()
{
    m_elapsed = ElapsedTime();
    m_started = false;
    return m_elapsed;
}

void KSimpleChronometer::Reset()
{
    m_elapsed = 0;
    if (m_started)
        m_startTime = gChrono.GetTick();
}

qint64 KSimpleChronometer::ElapsedTime()
{
    return m_started ? qMax(gChrono.GetTick() - m_startTime, qint64(0)) : m_elapsed;
}

double KSimpleChronometer::ElapsedTime(TimeUnits units)
{
    return UnitConv(units, ElapsedTime());
}

double KSimpleChronometer::UnitConv(TimeUnits units, qint64 ticks)
{
    return InTimeUnit(units, ticks, m_frequency);
}
