// How much processor time a wait costs while nothing happens: the component waits up to 2 s
// for an acknowledgement, 31 s for a host's release. Prints the processor time a 2-s wait
// that nothing ends uses, as a share of one core (target: well under 2 %).
#include "settings/wait.h"

#include <quendrix/Platform.h>

#include <sys/resource.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>

namespace {
double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}
}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    quendrix::Waiter waiter(quendrix::qtPlatform());
    const double limit = argc > 1 ? QByteArray(argv[1]).toDouble() : 2.0;

    QElapsedTimer wall;
    const double cpuBefore = processorSeconds();
    wall.start();
    const auto result = waiter.waitFor([] { return false; }, limit);
    const double wallSeconds = wall.nsecsElapsed() / 1e9;
    const double cpuSeconds = processorSeconds() - cpuBefore;

    std::printf("wait of %.1f s: ended %s after %.3f s wall, %.4f s processor time\n", limit,
                result == quendrix::Waiter::Result::TimedOut ? "by its limit" : "early",
                wallSeconds, cpuSeconds);
    std::printf("processor share of one core: %.3f %% (target: well under 2 %%)\n",
                100.0 * cpuSeconds / wallSeconds);
    return 0;
}
