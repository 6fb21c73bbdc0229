// Reading speed of every reader, in bytes of plain text a second.
#include <benchmark/benchmark.h>

#include <string>

#include "io/antennas.h"
#include "io/file_bytes.h"
#include "io/navigation.h"
#include "io/observation_reader.h"
#include "io/precise_orbits.h"

namespace {

using namespace vornel;

std::string Plain(const std::string& name) {
    return io::ReadFile(std::string(VORNEL_TREE) + "/" + name).front().bytes;
}

void CountBytes(benchmark::State& state, std::size_t plainSize) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(plainSize));
}

void ReadRinex3(benchmark::State& state) {
    const std::string bytes = Plain("data/wettzell/WTZZ00DEU_R_20201770000_01H_30S_MO.rnx.gz");
    for (auto _ : state) {
        benchmark::DoNotOptimize(io::ReadObservations(bytes, "WTZZ"));
    }
    CountBytes(state, bytes.size());
}
BENCHMARK(ReadRinex3);

// Measured by the size of the plain twin.
void ReadCompact(benchmark::State& state) {
    const std::string bytes = Plain("tests/data/formats/delf0010.21d.gz");
    const std::string plain = Plain("tests/data/formats/delf0010.21o.gz");
    for (auto _ : state) {
        benchmark::DoNotOptimize(io::ReadObservations(bytes, "delf"));
    }
    CountBytes(state, plain.size());
}
BENCHMARK(ReadCompact);

void ReadNavigationFile(benchmark::State& state) {
    const std::string bytes = Plain("data/wettzell/ESBC00DNK_R_20201770000_01D_MN.rnx.gz");
    for (auto _ : state) {
        benchmark::DoNotOptimize(io::ReadNavigation(bytes, "ESBC"));
    }
    CountBytes(state, bytes.size());
}
BENCHMARK(ReadNavigationFile);

void ReadPreciseOrbitFile(benchmark::State& state) {
    const std::string bytes = Plain("tests/data/formats/Sta21114.sp3.gz");
    for (auto _ : state) {
        benchmark::DoNotOptimize(io::ReadPreciseOrbits(bytes, "Sta"));
    }
    CountBytes(state, bytes.size());
}
BENCHMARK(ReadPreciseOrbitFile);

}  // namespace

BENCHMARK_MAIN();
