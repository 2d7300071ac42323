// Shared by all fuzz targets: the entry point, and the input as values or as a file.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstring>
#include <vector>

/// A fuzz target: a function that takes an input, and the name of its folders of seeds and findings.
struct FuzzTarget {
    const char *name;
    void (*run)(const std::uint8_t *data, std::size_t size);
};

/// Returns the targets of this program: one in a fuzzer, all in the test that replays findings.
inline std::vector<FuzzTarget> &FuzzTargets()
{
    static std::vector<FuzzTarget> targets;
    return targets;
}

inline bool AddTarget(const FuzzTarget &target)
{
    FuzzTargets().push_back(target);
    return true;
}

/// FUZZ_TARGET(name) { body } defines a target; its body uses `data` and `size`.
#define FUZZ_TARGET(name)                                                                                              \
    static void Run(const std::uint8_t *data, std::size_t size);                                                       \
    static const bool g_added = AddTarget({#name, Run});                                                               \
    static void Run([[maybe_unused]] const std::uint8_t *data, [[maybe_unused]] std::size_t size)

/// Ends the program if an invariant doesn't hold.
inline void Require(bool condition)
{
    if (!condition)
        __builtin_trap();
}

/// Starts the image kernel on the first call.
void StartKernel();

/// Sequential reader of an input. A value that needs more bytes than are left reads as 0 and consumes nothing.
class Input {
public:
    Input(const std::uint8_t *data, std::size_t size) : m_data(data), m_left(size) { }

    template <typename T> T Next()
    {
        T value{};
        if (m_left >= sizeof value) {
            std::memcpy(&value, m_data, sizeof value);
            m_data += sizeof value;
            m_left -= sizeof value;
        }
        return value;
    }
    int Below(int end) { return Next<std::uint8_t>() % end; }
    bool IsEmpty() const { return m_left == 0; }

    /// Returns up to @p count bytes.
    QByteArray Bytes(std::size_t count)
    {
        const std::size_t taken = count < m_left ? count : m_left;
        const QByteArray bytes(reinterpret_cast<const char *>(m_data), static_cast<int>(taken));
        m_data += taken;
        m_left -= taken;
        return bytes;
    }
    /// Returns the bytes up to the next line feed, which is skipped, or to the end.
    QByteArray Line()
    {
        const void *end = m_left ? std::memchr(m_data, '\n', m_left) : nullptr;
        if (!end)
            return Rest();
        const QByteArray line = Bytes(static_cast<std::size_t>(static_cast<const std::uint8_t *>(end) - m_data));
        Next<char>();
        return line;
    }
    QByteArray Rest() { return Bytes(m_left); }

private:
    const std::uint8_t *m_data;
    std::size_t m_left;
};

/// A file in memory, with a path.
class MemoryFile {
public:
    explicit MemoryFile(const QByteArray &content);
    ~MemoryFile();
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    QString Path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_file); }

private:
    int m_file;
};

inline QByteArray AsBytes(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<int>(size)};
}
