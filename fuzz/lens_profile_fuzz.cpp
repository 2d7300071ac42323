// Reads arbitrary bytes as a lens profile and corrects a small picture with the result.
#include "KImage.h"
#include "ProfileReport.h"
#include "newLCP.h"

#include <QString>

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

namespace {

/// Applies all combinations of corrections to one picture. Its size and values don't matter: positions come from the
/// profile.
void CorrectBy(newLCP &lcp)
{
    lcp.scale = 0.01F;
    for (int switches = 0; switches < 16; ++switches) {
        const int bits = switches & 8 ? 32 : 8;
        KImage source(9, 7, GFL_RGBA, bits, /*clear=*/true, nullptr, 0);
        KImage destination(11, 5, GFL_RGBA, 40 - bits, /*clear=*/true, nullptr, 0);
        lcp.Render(source, destination, switches & 1, switches & 2, switches & 4, switches % 3);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const int file = memfd_create("profile", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size))
        __builtin_trap();
    const QString fileName = QStringLiteral("/proc/self/fd/%1").arg(file);
    const ProfileReport report = ReadProfileReport(fileName);
    bool ok = false;
    newLCP lcp(fileName, ok);
    close(file);
    if (report.usable && !ok)
        __builtin_trap(); // the report contradicts the reader
    if (report.usable == !report.problem.isEmpty() || report.problem.contains(QLatin1Char('\n')))
        __builtin_trap();
    CorrectBy(lcp);
    return 0;
}
