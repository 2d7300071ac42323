// English texts and decimal points, whatever locale the host has set.
#pragma once

#include <clocale>

namespace imagefile {

/// Scope in which this thread's locale is "C": printf writes a decimal point, and Exiv2, which translates its output,
/// answers in English. If there is no memory for a locale, the thread keeps its locale.
class EnglishThread {
public:
    EnglishThread()
        : m_plain(newlocale(LC_ALL_MASK, "C", nullptr)), m_before(m_plain ? uselocale(m_plain) : nullptr) { }
    ~EnglishThread()
    {
        if (!m_plain)
            return;
        uselocale(m_before);
        freelocale(m_plain);
    }
    EnglishThread(const EnglishThread &) = delete;
    EnglishThread &operator=(const EnglishThread &) = delete;

private:
    locale_t m_plain, m_before;
};

} // namespace imagefile
