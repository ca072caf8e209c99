// GMT conversions of the calendar layer against glibc, in one run:
// _KepDateSecs2Date against gmtime_r and _KepDateDate2Secs against timegm, over
// the same pseudo-random instants of 1970-2106.
#include <benchmark/benchmark.h>

#include <ctime>
#include <vector>

#include "kep/Kep.h"

namespace {

constexpr size_t kSamples = 4096;  // a power of two, cycled through

std::vector<unsigned long> const& instants() {
  static std::vector<unsigned long> values = [] {
    std::vector<unsigned long> v(kSamples);
    uint64_t state = 12345;
    for (auto& s : v) {
      state = state * 6364136223846793005ull + 1442695040888963407ull;
      s = static_cast<unsigned long>(state >> 32);
    }
    return v;
  }();
  return values;
}

void BM_KepSecs2Date(benchmark::State& state) {
  auto const& in = instants();
  size_t i = 0;
  _KepDateTime d;
  for (auto _ : state) {
    _KepDateSecs2Date(in[i++ & (kSamples - 1)], &d, nullptr);
    benchmark::DoNotOptimize(d);
  }
}
BENCHMARK(BM_KepSecs2Date);

void BM_GlibcGmtime(benchmark::State& state) {
  auto const& in = instants();
  size_t i = 0;
  std::tm tm;
  for (auto _ : state) {
    std::time_t t = static_cast<std::time_t>(in[i++ & (kSamples - 1)]);
    gmtime_r(&t, &tm);
    benchmark::DoNotOptimize(tm);
  }
}
BENCHMARK(BM_GlibcGmtime);

void BM_KepDate2Secs(benchmark::State& state) {
  std::vector<_KepDateTime> dates(kSamples);
  for (size_t k = 0; k < kSamples; ++k) _KepDateSecs2Date(instants()[k], &dates[k], nullptr);
  size_t i = 0;
  unsigned long secs = 0;
  for (auto _ : state) {
    _KepDateDate2Secs(&dates[i++ & (kSamples - 1)], &secs, nullptr);
    benchmark::DoNotOptimize(secs);
  }
}
BENCHMARK(BM_KepDate2Secs);

void BM_GlibcTimegm(benchmark::State& state) {
  std::vector<std::tm> dates(kSamples);
  for (size_t k = 0; k < kSamples; ++k) {
    std::time_t t = static_cast<std::time_t>(instants()[k]);
    gmtime_r(&t, &dates[k]);
  }
  size_t i = 0;
  for (auto _ : state) {
    std::tm tm = dates[i++ & (kSamples - 1)];  // timegm normalises its argument
    std::time_t t = timegm(&tm);
    benchmark::DoNotOptimize(t);
  }
}
BENCHMARK(BM_GlibcTimegm);

}  // namespace

BENCHMARK_MAIN();
