// kovdoa_soak [SECONDS]: runs the library's whole chain for that long (20 s when not told), and fails when the process
// then holds more memory than after its warm-up, the first third of the time.
//
// Exit status: 0 when the memory stays, 1 when it grows or something else goes wrong, 2 for wrong arguments.
#include <QtCore/QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "tests/soak/chain.h"
#include "tests/support/residentmemory.h"

namespace {

using testsupport::memoryKib;

// By so much the peak may lie above that of the warm-up: the allocator hands freed memory back late, and which thread
// gets which of its heaps is chance.
constexpr std::int64_t marginKib = 4096;
constexpr int framesOfRound = 50;

// However slow the machine is: the first rounds fill buffers, queues and the allocator's heaps.
constexpr long long leastWarmRounds = testsupport::canMeasureMemory ? 5 : 1;
constexpr long long leastJudgedRounds = testsupport::canMeasureMemory ? 3 : 1;

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int run(double seconds)
{
    soak::Chain chain(KOVDOA_MODELS_DIR);
    const auto start = std::chrono::steady_clock::now();
    chain.playRound(framesOfRound);
    const std::int64_t first = memoryKib("VmRSS");

    std::int64_t warm = first;
    while (secondsSince(start) < seconds / 3.0 || chain.counts().rounds < leastWarmRounds) {
        chain.playRound(framesOfRound);
        warm = std::max(warm, memoryKib("VmRSS"));
    }
    const long long warmRounds = chain.counts().rounds;
    std::int64_t highest = 0;
    std::int64_t last = 0;
    while (secondsSince(start) < seconds || chain.counts().rounds < warmRounds + leastJudgedRounds) {
        chain.playRound(framesOfRound);
        last = memoryKib("VmRSS");
        highest = std::max(highest, last);
    }

    const soak::Counts& counts = chain.counts();
    std::cout << counts.frames << " frames in " << counts.rounds << " recordings and " << secondsSince(start)
              << " s; " << counts.patterns << " discharge patterns, " << counts.samplesHeard
              << " samples heard\n"
              << "resident memory after the first round " << first << " KiB, highest of the warm-up ("
              << warmRounds << " rounds) " << warm << " KiB, highest after it " << highest
              << " KiB, at the end " << last << " KiB\n";
    if (counts.patterns == 0 || counts.samplesHeard == 0) {
        std::cerr << "nothing was heard\n";
        return EXIT_FAILURE;
    }
    if (!testsupport::canMeasureMemory) {
        std::cout << "not judged: a sanitizer keeps what is freed\n";
        return EXIT_SUCCESS;
    }
    if (highest > warm + marginKib) {
        std::cerr << "memory grows: by " << highest - warm << " KiB, " << marginKib << " are allowed\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const double seconds = argc > 1 ? std::atof(argv[1]) : 20.0;
    if (argc > 2 || !(seconds > 0.0)) {
        std::cerr << "usage: kovdoa_soak [SECONDS]\n";
        return 2;
    }
    try {
        return run(seconds);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
