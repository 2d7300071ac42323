// Library for LD_PRELOAD that makes one call of a given kind fail; scripts/faults runs the program with it. Environment
// variables:
//   FAULT_KIND   one of kKinds
//   FAULT_AT     number of the call that fails, from 1; 0: calls are only counted
//   FAULT_BELOW  only counts calls on files below this folder; without it, calls on all files
//   FAULT_LOG    file that receives "count N" when main() returns, if FAULT_AT is 0; otherwise the name and number of
//                the call that fails, and the stack
// Counting begins with main(): calls by the loader and by static constructors are not affected.
#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

// The C library's internal names for malloc() and the like.
extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
void *__libc_memalign(size_t, size_t);
}

namespace {

struct Kind {
    const char *name;
    int error;
};

const Kind kKinds[] = {{"alloc", ENOMEM}, {"open", EMFILE}, {"read", EIO},    {"write", ENOSPC}, {"fsync", EIO},
                       {"rename", EIO},   {"mmap", ENOMEM}, {"stat", EACCES}, {"unlink", EACCES}};

const Kind *chosen = nullptr;
long failingCall = 0;
const char *folder = "/";
const char *logName = nullptr;
std::atomic<bool> counting{false};
std::atomic<long> calls{0};
thread_local bool inside = false; // true during this library's own calls, which aren't counted

void Log(const char *text, long number)
{
    if (!logName)
        return;
    const int file = static_cast<int>(syscall(SYS_openat, AT_FDCWD, logName, O_WRONLY | O_CREAT | O_APPEND, 0600));
    char line[200];
    const int length = std::snprintf(line, sizeof(line), "%s %ld\n", text, number);
    syscall(SYS_write, file, line, static_cast<size_t>(length));
    if (failingCall > 0) {
        void *frames[60];
        backtrace_symbols_fd(frames, backtrace(frames, 60), file);
    }
    syscall(SYS_close, file);
}

/// Returns whether @p call must fail now; if so, errno is set.
bool Fails(const char *call)
{
    if (++calls != failingCall)
        return false;
    inside = true;
    Log(call, failingCall);
    inside = false;
    errno = chosen->error;
    return true;
}

bool Counts(const char *kind)
{
    return counting && !inside && std::strcmp(chosen->name, kind) == 0;
}

bool LiesBelow(const char *path)
{
    return std::strncmp(path, folder, std::strlen(folder)) == 0;
}

/// Returns whether a call on @p path must fail. Relative paths always count, because their folder isn't known.
bool FailsAt(const char *kind, const char *call, const char *path)
{
    return Counts(kind) && (path[0] != '/' || LiesBelow(path)) && Fails(call);
}

/// Returns whether a call on an open file must fail. Pipes, sockets and the standard streams never count.
bool FailsOn(const char *kind, const char *call, int file)
{
    if (!Counts(kind) || file <= STDERR_FILENO)
        return false;
    char link[64];
    char path[PATH_MAX];
    std::snprintf(link, sizeof(link), "/proc/self/fd/%d", file);
    const ssize_t length = syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof(path) - 1);
    if (length <= 0)
        return false;
    path[length] = '\0';
    return LiesBelow(path) && Fails(call);
}

template <typename Function> Function *Next(const char *name)
{
    inside = true; // dlsym() allocates memory
    void *const function = dlsym(RTLD_NEXT, name);
    inside = false;
    return reinterpret_cast<Function *>(function);
}

int (*realMain)(int, char **, char **) = nullptr;

int CountingMain(int argc, char **argv, char **environment)
{
    void *frame[1];
    backtrace(frame, 1); // the first call loads a library, which must not count
    const char *const kind = std::getenv("FAULT_KIND");
    for (const Kind &known : kKinds) {
        if (kind && std::strcmp(kind, known.name) == 0)
            chosen = &known;
    }
    if (const char *const at = std::getenv("FAULT_AT"))
        failingCall = std::atol(at);
    if (const char *const below = std::getenv("FAULT_BELOW"))
        folder = below;
    logName = std::getenv("FAULT_LOG");
    counting = chosen != nullptr;
    const int result = realMain(argc, argv, environment);
    if (chosen && failingCall == 0) {
        counting = false;
        Log("count", calls);
    }
    return result;
}

} // namespace

// Redefines the C library's symbol NAME, under an identifier that doesn't clash with its declaration in the headers.
#define REPLACE(type, name, parameters)                                                                                \
    extern "C" type fault_##name parameters __asm__(#name);                                                            \
    type fault_##name parameters

// CONDITION decides whether the call fails with RESULT.
#define FAIL_IF(condition, result, type, name, parameters, arguments)                                                  \
    REPLACE(type, name, parameters)                                                                                    \
    {                                                                                                                  \
        static type(*const next) parameters = Next<type parameters>(#name);                                            \
        return (condition) ? (result) : next arguments;                                                                \
    }

#define FAIL_ON(kind, type, name, parameters, arguments)                                                               \
    FAIL_IF(FailsOn(kind, #name, file), static_cast<type>(-1), type, name, parameters, arguments)
#define FAIL_AT(kind, path, name, parameters, arguments)                                                               \
    FAIL_IF(FailsAt(kind, #name, path), -1, int, name, parameters, arguments)

REPLACE(int, __libc_start_main,
        (int (*begin)(int, char **, char **), int argc, char **argv, void (*init)(), void (*fini)(), void (*loader)(),
         void *stack))
{
    realMain = begin;
    auto *const next =
        Next<int(decltype(begin), int, char **, void (*)(), void (*)(), void (*)(), void *)>("__libc_start_main");
    return next(CountingMain, argc, argv, init, fini, loader, stack);
}

// Memory. C++'s operator new calls malloc().
#define ALLOCATION(name, parameters, allocate)                                                                         \
    REPLACE(void *, name, parameters)                                                                                  \
    {                                                                                                                  \
        return Counts("alloc") && Fails(#name) ? nullptr : allocate;                                                   \
    }
ALLOCATION(malloc, (size_t size), __libc_malloc(size))
ALLOCATION(calloc, (size_t count, size_t size), __libc_calloc(count, size))
ALLOCATION(realloc, (void *old, size_t size), __libc_realloc(old, size))
ALLOCATION(aligned_alloc, (size_t alignment, size_t size), __libc_memalign(alignment, size))
ALLOCATION(memalign, (size_t alignment, size_t size), __libc_memalign(alignment, size))
REPLACE(int, posix_memalign, (void **result, size_t alignment, size_t size))
{
    *result = Counts("alloc") && Fails("posix_memalign") ? nullptr : __libc_memalign(alignment, size);
    return *result ? 0 : ENOMEM;
}

REPLACE(void *, mmap, (void *address, size_t size, int protection, int flags, int file, off_t offset))
{
    const bool fails = file == -1 ? Counts("mmap") && Fails("mmap") : FailsOn("mmap", "mmap", file);
    if (fails)
        return reinterpret_cast<void *>(-1);
    return reinterpret_cast<void *>(syscall(SYS_mmap, address, size, protection, flags, file, offset));
}
REPLACE(void *, mmap64, (void *address, size_t size, int protection, int flags, int file, off_t offset))
{
    return fault_mmap(address, size, protection, flags, file, offset);
}

FAIL_AT("open", path, open, (const char *path, int flags, mode_t mode), (path, flags, mode))
FAIL_AT("open", path, open64, (const char *path, int flags, mode_t mode), (path, flags, mode))
FAIL_AT("open", path, __open_2, (const char *path, int flags), (path, flags))
FAIL_AT("open", path, __open64_2, (const char *path, int flags), (path, flags))
FAIL_AT("open", path, openat, (int folder, const char *path, int flags, mode_t mode), (folder, path, flags, mode))
FAIL_AT("open", path, openat64, (int folder, const char *path, int flags, mode_t mode), (folder, path, flags, mode))
FAIL_AT("open", path, __openat_2, (int folder, const char *path, int flags), (folder, path, flags))
FAIL_AT("open", path, __openat64_2, (int folder, const char *path, int flags), (folder, path, flags))
FAIL_IF(FailsAt("open", "fopen", path), nullptr, FILE *, fopen, (const char *path, const char *mode), (path, mode))
FAIL_IF(FailsAt("open", "fopen64", path), nullptr, FILE *, fopen64, (const char *path, const char *mode), (path, mode))
FAIL_IF(FailsAt("open", "opendir", path), nullptr, DIR *, opendir, (const char *path), (path))

FAIL_ON("read", ssize_t, read, (int file, void *to, size_t size), (file, to, size))
FAIL_ON("read", ssize_t, __read_chk, (int file, void *to, size_t size, size_t room), (file, to, size, room))
FAIL_ON("read", ssize_t, pread, (int file, void *to, size_t size, off_t at), (file, to, size, at))
FAIL_ON("read", ssize_t, pread64, (int file, void *to, size_t size, off_t at), (file, to, size, at))
FAIL_ON("read", ssize_t, readv, (int file, const iovec *parts, int count), (file, parts, count))
FAIL_ON("write", ssize_t, write, (int file, const void *from, size_t size), (file, from, size))
FAIL_ON("write", ssize_t, pwrite, (int file, const void *from, size_t size, off_t at), (file, from, size, at))
FAIL_ON("write", ssize_t, pwrite64, (int file, const void *from, size_t size, off_t at), (file, from, size, at))
FAIL_ON("write", ssize_t, writev, (int file, const iovec *parts, int count), (file, parts, count))
FAIL_ON("write", int, ftruncate, (int file, off_t size), (file, size))
FAIL_ON("write", int, ftruncate64, (int file, off_t size), (file, size))
FAIL_ON("write", ssize_t, sendfile, (int file, int from, off_t *at, size_t size), (file, from, at, size))
FAIL_ON("write", ssize_t, copy_file_range, (int from, off_t *begin, int file, off_t *at, size_t size, unsigned flags),
        (from, begin, file, at, size, flags))
FAIL_ON("fsync", int, fsync, (int file), (file))
FAIL_ON("fsync", int, fdatasync, (int file), (file))

// Streams read and write inside the C library, where calls can't be replaced, so the stream functions are replaced.
bool FailsOn(const char *kind, const char *call, FILE *stream)
{
    if (!Counts(kind) || !FailsOn(kind, call, fileno(stream)))
        return false;
    constexpr int kErrorSeen = 0x20; // the flag that the GNU C library's ferror() reads
    stream->_flags |= kErrorSeen;
    return true;
}

FAIL_IF(FailsOn("read", "fread", stream), 0, size_t, fread, (void *to, size_t size, size_t count, FILE *stream),
        (to, size, count, stream))
FAIL_IF(FailsOn("read", "__fread_chk", stream), 0, size_t, __fread_chk,
        (void *to, size_t room, size_t size, size_t count, FILE *stream), (to, room, size, count, stream))
FAIL_IF(FailsOn("read", "fgets", stream), nullptr, char *, fgets, (char *to, int size, FILE *stream),
        (to, size, stream))
FAIL_IF(FailsOn("read", "getc", stream), EOF, int, getc, (FILE * stream), (stream))
FAIL_IF(FailsOn("write", "fwrite", stream), 0, size_t, fwrite,
        (const void *from, size_t size, size_t count, FILE *stream), (from, size, count, stream))
FAIL_IF(stream &&FailsOn("write", "fflush", stream), EOF, int, fflush, (FILE * stream), (stream))

FAIL_AT("rename", from, rename, (const char *from, const char *to), (from, to))
FAIL_AT("rename", from, renameat, (int source, const char *from, int target, const char *to),
        (source, from, target, to))
FAIL_AT("rename", from, renameat2, (int source, const char *from, int target, const char *to, unsigned flags),
        (source, from, target, to, flags))
FAIL_AT("rename", from, link, (const char *from, const char *to), (from, to))
FAIL_AT("rename", from, linkat, (int source, const char *from, int target, const char *to, int flags),
        (source, from, target, to, flags))
FAIL_AT("unlink", path, unlink, (const char *path), (path))
FAIL_AT("unlink", path, unlinkat, (int folder, const char *path, int flags), (folder, path, flags))
FAIL_AT("unlink", path, rmdir, (const char *path), (path))
FAIL_AT("unlink", path, remove, (const char *path), (path))

FAIL_AT("stat", path, stat, (const char *path, struct stat *to), (path, to))
FAIL_AT("stat", path, stat64, (const char *path, struct stat64 *to), (path, to))
FAIL_AT("stat", path, lstat, (const char *path, struct stat *to), (path, to))
FAIL_AT("stat", path, lstat64, (const char *path, struct stat64 *to), (path, to))
FAIL_AT("stat", path, fstatat, (int folder, const char *path, struct stat *to, int flags), (folder, path, to, flags))
FAIL_AT("stat", path, fstatat64, (int folder, const char *path, struct stat64 *to, int flags),
        (folder, path, to, flags))
FAIL_AT("stat", path, __xstat64, (int version, const char *path, struct stat64 *to), (version, path, to))
FAIL_AT("stat", path, __lxstat64, (int version, const char *path, struct stat64 *to), (version, path, to))
FAIL_AT("stat", path, access, (const char *path, int mode), (path, mode))
FAIL_AT("stat", path, faccessat, (int folder, const char *path, int mode, int flags), (folder, path, mode, flags))
FAIL_ON("stat", int, fstat, (int file, struct stat *to), (file, to))
FAIL_ON("stat", int, fstat64, (int file, struct stat64 *to), (file, to))
FAIL_IF(path[0] ? FailsAt("stat", "statx", path) : FailsOn("stat", "statx", file), -1, int, statx,
        (int file, const char *path, int flags, unsigned mask, struct statx *to), (file, path, flags, mask, to))
