// Functions of libraries that are loaded on first use.
#pragma once

#include <atomic>

namespace imagefile {

/// Returns the address of a function of libheif or libjxl; the first call loads both. Loading them and their codecs
/// takes 10 ms, half of the program's startup time, and most runs read no file that needs them. Throws
/// std::runtime_error with the reason if they can't be loaded. Thread-safe.
void *FindLate(const char *name);

/// A function of libheif or libjxl, called like the original. The constants that VITRELUX_LATE defines in this
/// namespace have the names of the original functions and hide them.
template <class Function> class LateFunction;

template <class Result, class... Arguments> class LateFunction<Result(Arguments...)> {
public:
    explicit constexpr LateFunction(const char *name) : m_name(name) { }

    Result operator()(Arguments... arguments) const
    {
        void *address = m_address.load(std::memory_order_relaxed);
        if (!address) {
            address = FindLate(m_name);
            m_address.store(address, std::memory_order_relaxed);
        }
        return reinterpret_cast<Result (*)(Arguments...)>(address)(arguments...);
    }

private:
    const char *m_name;
    mutable std::atomic<void *> m_address{nullptr};
};

/// Defines the LateFunction constant for the function @p name.
#define VITRELUX_LATE(name)                                                                                            \
    inline const LateFunction<decltype(::name)> name                                                                   \
    {                                                                                                                  \
#name                                                                                                          \
    }

} // namespace imagefile
