#include "KSystemInfo.h"

#include "KSystemInfo_p.h"
#include "cpuid2/cpu_topo.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <fcntl.h>
#include <omp.h>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>

namespace {

/// Returns @p counted or, if it is 0, which means unknown, OpenMP's count, at least 1.
int CountOrOpenMpThreads(unsigned counted)
{
    return counted ? static_cast<int>(counted) : std::max(omp_get_max_threads(), 1);
}

/// Returns the product, clamped to 64 bits: network file systems without a limit report up to 2^64 bytes.
unsigned long long ProductOrMax(unsigned long long blocks, unsigned long long blockBytes)
{
    unsigned long long bytes;
    return __builtin_mul_overflow(blocks, blockBytes, &bytes) ? std::numeric_limits<unsigned long long>::max() : bytes;
}

/// Ends of a pipe, closed when the scope ends.
struct Pipe {
    int ends[2] = {-1, -1};

    Pipe() = default;
    ~Pipe()
    {
        CloseWrite();
        if (ends[0] != -1)
            close(ends[0]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    /// Opens with close-on-exec in one step, so that a program started by another thread can't inherit an end.
    bool Open() { return pipe2(ends, O_CLOEXEC) == 0; }
    void CloseWrite()
    {
        if (ends[1] != -1)
            close(ends[1]);
        ends[1] = -1;
    }
};

[[noreturn]] void Execute(const char *program, int errorPipe)
{
    char *const arguments[] = {const_cast<char *>(program), const_cast<char *>("--version"), nullptr};
    execvp(program, arguments);
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(errorPipe, &error, sizeof error);
    _exit(0);
}

ssize_t ReadRetrying(int file, void *data, size_t size)
{
    ssize_t got;
    do
        got = read(file, data, size);
    while (got == -1 && (errno == EAGAIN || errno == EINTR));
    return got;
}

} // namespace

KSystemInfo *KSystemInfo::m_instance = nullptr;
bool KSystemInfo::m_bInit = false;

KSystemInfo::KSystemInfo() : m_topology(CPUIDInit()) { }

KSystemInfo::~KSystemInfo()
{
    if (m_topology)
        CPUIDExit();
}

void KSystemInfo::init(KSystemInfo *instance)
{
    if (m_bInit)
        return;
    m_instance = instance ? instance : new KSystemInfo;
    glbl_ptr = m_instance->m_topology;
    m_bInit = true;
}

void KSystemInfo::exit()
{
    if (!m_bInit)
        return;
    delete m_instance;
    m_instance = nullptr;
    m_bInit = false;
}

unsigned long long CacheBytesAllowed(unsigned long long freeBytes)
{
    const float freeGib = static_cast<float>(freeBytes) * 9.313226e-10f;
    const float gib = std::max({0.128f, 0.66f * freeGib, freeGib - 4.0f});
    return static_cast<unsigned long long>(gib * 1024.0f * 1024.0f * 1024.0f);
}

unsigned long long KSystemInfo::maxCacheSize()
{
    return CacheBytesAllowed(freePhysicalMemory());
}

QString KSystemInfo::memText(unsigned long long bytes)
{
    static const char *const kUnits[] = {QT_TRANSLATE_NOOP("KSystemInfo", "Bytes"),
                                         QT_TRANSLATE_NOOP("KSystemInfo", "KB"), QT_TRANSLATE_NOOP("KSystemInfo", "MB"),
                                         QT_TRANSLATE_NOOP("KSystemInfo", "GB"),
                                         QT_TRANSLATE_NOOP("KSystemInfo", "TB")};
    auto value = static_cast<float>(bytes);
    size_t unit = 0;
    for (; value >= 1024.0f && unit + 1 < std::size(kUnits); ++unit)
        value *= 1.0f / 1024.0f;
    QString text = QStringLiteral("%1").arg(static_cast<double>(value)).left(4);
    if (text.size() == 4 && QStringLiteral("., ").contains(text[3]))
        text.chop(1); // no number ends with a separator
    return QStringLiteral("%1 %2").arg(text, QCoreApplication::translate("KSystemInfo", kUnits[unit]));
}

unsigned long long InstalledBytes(unsigned long long bytes)
{
    constexpr unsigned long long kModuleBytes = 134217728;
    return (bytes + kModuleBytes - 1) / kModuleBytes * kModuleBytes;
}

unsigned long long KSystemInfo::physicalMemory()
{
    const long pages = sysconf(_SC_PHYS_PAGES), pageBytes = sysconf(_SC_PAGESIZE);
    if (pages < 0 || pageBytes < 0)
        return 0;
    return InstalledBytes(static_cast<unsigned long long>(pages) * static_cast<unsigned long long>(pageBytes));
}

unsigned long long FreeBytesReported(const char *meminfo)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(meminfo, "r"), std::fclose);
    char line[128];
    long long kilobytes = 0;
    while (file && std::fgets(line, sizeof line, file.get())) {
        long long number = 0;
        for (const char *form : {"MemFree: %lld kB", "Buffers: %lld kB", "Cached: %lld kB"}) {
            if (std::sscanf(line, form, &number) == 1)
                kilobytes += number;
        }
    }
    return static_cast<unsigned long long>(kilobytes) * 1024;
}

unsigned long long KSystemInfo::freePhysicalMemory()
{
    return FreeBytesReported("/proc/meminfo");
}

void KSystemInfo::DiskInfo(const QString &path, unsigned long long &freeBytes, unsigned long long &totalBytes)
{
    freeBytes = 0;
    totalBytes = 0;
    struct statfs disk;
    if (statfs(path.toLocal8Bit().constData(), &disk) != 0)
        return;
    const auto blockBytes = static_cast<unsigned long long>(disk.f_bsize);
    freeBytes = ProductOrMax(disk.f_bavail, blockBytes);
    totalBytes = ProductOrMax(disk.f_blocks, blockBytes);
}

int KSystemInfo::MaxOpenFiles()
{
    struct rlimit limit;
    return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? static_cast<int>(limit.rlim_cur) : -1;
}

int KSystemInfo::SetMaxOpenFiles(int count)
{
    struct rlimit limit;
    const int failed = getrlimit(RLIMIT_NOFILE, &limit);
    if (failed)
        return failed;
    limit.rlim_cur = static_cast<rlim_t>(count);
    return setrlimit(RLIMIT_NOFILE, &limit);
}

QString KSystemInfo::osDescription()
{
    struct utsname names = {};
    uname(&names);
    return QStringLiteral("%1_%2_%3")
        .arg(QString::fromLocal8Bit(names.sysname), QString::fromLocal8Bit(names.release),
             QString::fromLocal8Bit(names.nodename));
}

Runnable IsRunnable(const char *program)
{
    Pipe errors;
    if (!errors.Open())
        return Runnable::No;
    const pid_t child = fork();
    if (child == -1)
        return Runnable::No;
    if (child == 0)
        Execute(program, errors.ends[1]);
    errors.CloseWrite();
    int error;
    const ssize_t got = ReadRetrying(errors.ends[0], &error, sizeof error);
    while (waitpid(child, nullptr, 0) == -1 && errno == EINTR) { }
    if (got == 0)
        return Runnable::Yes; // the pipe closed when the program started
    return got > 0 ? Runnable::No : Runnable::Unknown;
}

QString KSystemInfo::osDownloadVersion()
{
    switch (IsRunnable("dpkg")) {
    case Runnable::Yes:
        return QStringLiteral("linux64deb");
    case Runnable::No:
        return QStringLiteral("linux64tar");
    case Runnable::Unknown:
        break;
    }
    return QString();
}

void KSystemInfo::applicationVersion(int &major, int &minor, int &patch)
{
    major = 1;
    minor = 4;
    patch = 0;
}

Qt::KeyboardModifiers KSystemInfo::KeyboardModifiers()
{
    return QGuiApplication::keyboardModifiers();
}

int KSystemInfo::cpuVirtualCount()
{
    return CountOrOpenMpThreads(GetSysLogicalProcessorCount());
}

int KSystemInfo::cpuPhysicalCount()
{
    return CountOrOpenMpThreads(GetSysProcessorCoreCount());
}

int KSystemInfo::cpuHyperThreadingCount()
{
    return cpuVirtualCount() / cpuPhysicalCount();
}

QString KSystemInfo::cpuDescription()
{
    return QString::fromLatin1(GetCpuDescription());
}
