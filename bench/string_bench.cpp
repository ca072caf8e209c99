// KepString against std::u16string and icu::UnicodeString, in one run: building
// from 8-bit text, copying, concatenating, searching, comparing and hashing, for
// short (8 units) and long (4 KiB) strings. Each benchmark reports the heap
// allocations per operation ("allocs"), counted by interposing malloc, calloc and
// realloc over the C library's.
#include <benchmark/benchmark.h>

#include <unicode/unistr.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>

#include "kep/Kep.h"

// --- Allocation counting ---------------------------------------------------

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* p, size_t size);
}

namespace {
std::atomic<uint64_t> gAllocations{0};
}

extern "C" void* malloc(size_t size) {
  gAllocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(size);
}

extern "C" void* calloc(size_t count, size_t size) {
  gAllocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_calloc(count, size);
}

extern "C" void* realloc(void* p, size_t size) {
  gAllocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_realloc(p, size);
}

namespace {

// Runs `op` in the benchmark loop and reports allocations per iteration.
template <class Op>
void measure(benchmark::State& state, Op&& op) {
  uint64_t before = gAllocations.load(std::memory_order_relaxed);
  for (auto _ : state) op();
  uint64_t after = gAllocations.load(std::memory_order_relaxed);
  state.counters["allocs"] = benchmark::Counter(static_cast<double>(after - before) /
                                                static_cast<double>(state.iterations()));
}

// Lower-case words and spaces, the same for every peer.
std::string sampleText(size_t n) {
  std::mt19937 rng(static_cast<unsigned>(n));
  std::string text(n, ' ');
  for (char& c : text) c = rng() % 6 == 0 ? ' ' : static_cast<char>('a' + rng() % 26);
  return text;
}

// The needle searched for: the last units of the text (3 of a short text, 16 of
// a long one), found once at the end.
std::string needleOf(std::string const& text) {
  return text.substr(text.size() - (text.size() > 8 ? 16 : 3));
}

std::u16string widened(std::string const& s) { return std::u16string(s.begin(), s.end()); }

icu::UnicodeString icuOf(std::string const& s) {
  return icu::UnicodeString(s.data(), static_cast<int32_t>(s.size()), US_INV);
}

// --- Construction from 8-bit text ---

void Construct_Kep(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  measure(state, [&] {
    KepString s(text.c_str());
    benchmark::DoNotOptimize(s);
  });
}

void Construct_U16(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  measure(state, [&] {
    std::u16string s(text.begin(), text.end());
    benchmark::DoNotOptimize(s);
  });
}

void Construct_ICU(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  measure(state, [&] {
    icu::UnicodeString s(text.data(), static_cast<int32_t>(text.size()), US_INV);
    benchmark::DoNotOptimize(s);
  });
}

// --- Copy ---

void Copy_Kep(benchmark::State& state) {
  KepString s(sampleText(static_cast<size_t>(state.range(0))).c_str());
  measure(state, [&] {
    KepString copy(s);
    benchmark::DoNotOptimize(copy);
  });
}

void Copy_U16(benchmark::State& state) {
  std::u16string s = widened(sampleText(static_cast<size_t>(state.range(0))));
  measure(state, [&] {
    std::u16string copy(s);
    benchmark::DoNotOptimize(copy);
  });
}

void Copy_ICU(benchmark::State& state) {
  icu::UnicodeString s = icuOf(sampleText(static_cast<size_t>(state.range(0))));
  measure(state, [&] {
    icu::UnicodeString copy(s);
    benchmark::DoNotOptimize(copy);
  });
}

// --- Concatenation of two strings of the size ---

void Concat_Kep(benchmark::State& state) {
  KepString s(sampleText(static_cast<size_t>(state.range(0))).c_str());
  measure(state, [&] {
    KepString joined = s + s;
    benchmark::DoNotOptimize(joined);
  });
}

void Concat_U16(benchmark::State& state) {
  std::u16string s = widened(sampleText(static_cast<size_t>(state.range(0))));
  measure(state, [&] {
    std::u16string joined = s + s;
    benchmark::DoNotOptimize(joined);
  });
}

void Concat_ICU(benchmark::State& state) {
  icu::UnicodeString s = icuOf(sampleText(static_cast<size_t>(state.range(0))));
  measure(state, [&] {
    icu::UnicodeString joined = s + s;
    benchmark::DoNotOptimize(joined);
  });
}

// --- Substring search ---

void IndexOf_Kep(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  KepString s(text.c_str());
  KepString needle(needleOf(text).c_str());
  measure(state, [&] { benchmark::DoNotOptimize(s.indexOf(needle)); });
}

void IndexOf_U16(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  std::u16string s = widened(text);
  std::u16string needle = widened(needleOf(text));
  measure(state, [&] { benchmark::DoNotOptimize(s.find(needle)); });
}

void IndexOf_ICU(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  icu::UnicodeString s = icuOf(text);
  icu::UnicodeString needle = icuOf(needleOf(text));
  measure(state, [&] { benchmark::DoNotOptimize(s.indexOf(needle)); });
}

// --- Comparison of equal texts in different bodies (a full walk) ---

void CompareTo_Kep(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  KepString a(text.c_str()), b(text.c_str());
  measure(state, [&] { benchmark::DoNotOptimize(a.compareTo(b)); });
}

void CompareTo_U16(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  std::u16string a = widened(text), b = widened(text);
  measure(state, [&] { benchmark::DoNotOptimize(a.compare(b)); });
}

void CompareTo_ICU(benchmark::State& state) {
  std::string text = sampleText(static_cast<size_t>(state.range(0)));
  icu::UnicodeString a = icuOf(text), b = icuOf(text);
  measure(state, [&] { benchmark::DoNotOptimize(a.compare(b)); });
}

// --- Hash ---

void HashCode_Kep(benchmark::State& state) {
  KepString s(sampleText(static_cast<size_t>(state.range(0))).c_str());
  measure(state, [&] { benchmark::DoNotOptimize(s.hashCode()); });
}

void HashCode_U16(benchmark::State& state) {
  std::u16string s = widened(sampleText(static_cast<size_t>(state.range(0))));
  std::hash<std::u16string> hash;
  measure(state, [&] { benchmark::DoNotOptimize(hash(s)); });
}

void HashCode_ICU(benchmark::State& state) {
  icu::UnicodeString s = icuOf(sampleText(static_cast<size_t>(state.range(0))));
  measure(state, [&] { benchmark::DoNotOptimize(s.hashCode()); });
}

}  // namespace

#define KEP_STRING_BENCH(op)              \
  BENCHMARK(op##_Kep)->Arg(8)->Arg(4096); \
  BENCHMARK(op##_U16)->Arg(8)->Arg(4096); \
  BENCHMARK(op##_ICU)->Arg(8)->Arg(4096)

KEP_STRING_BENCH(Construct);
KEP_STRING_BENCH(Copy);
KEP_STRING_BENCH(Concat);
KEP_STRING_BENCH(IndexOf);
KEP_STRING_BENCH(CompareTo);
KEP_STRING_BENCH(HashCode);

BENCHMARK_MAIN();
