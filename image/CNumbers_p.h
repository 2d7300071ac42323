// Locale-independent parsing of numbers.
#pragma once

#include <clocale>
#include <cmath>

/// While an instance exists, strtod and sscanf on this thread expect a decimal point. Otherwise they would expect a
/// comma in hosts whose locale uses one.
class CNumbers {
public:
    CNumbers() : m_before(uselocale(CLocale())) { }
    ~CNumbers() { uselocale(m_before); }
    CNumbers(const CNumbers &) = delete;
    CNumbers &operator=(const CNumbers &) = delete;

private:
    static locale_t CLocale()
    {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr); // one per process, never freed
        return locale;
    }

    locale_t m_before;
};

/// Returns @p number, or @p otherwise if it is infinite or NaN.
template <typename Number> Number FiniteOr(Number number, Number otherwise)
{
    return std::isfinite(number) ? number : otherwise;
}
