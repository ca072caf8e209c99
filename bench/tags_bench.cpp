// Name-to-tag and tag-to-name over the built-in vocabulary (3795 names) against
// std::map, std::unordered_map and GLib's quarks, in one run. Every benchmark
// walks the same shuffled order of names.
//
// The process stays single-threaded up to the last two benchmarks, which start
// (and join) one thread first and then measure the tag manager with its lock
// taken, as in any process that runs threads.
#include <benchmark/benchmark.h>
#include <glib.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "kep/Kep.h"

namespace {

struct Vocabulary {
  std::vector<KepString> names;
  // Strings made in table order, as the tag manager's names are.
  std::vector<KepString> made;
  std::vector<std::string> texts;
  std::vector<std::u16string> units;
  std::vector<int> tags;
  std::vector<GQuark> quarks;
  std::map<std::u16string, int> byName;
  std::unordered_map<std::u16string, int> byNameHashed;
  std::map<int, std::u16string> byTag;
  std::unordered_map<int, std::u16string> byTagHashed;

  Vocabulary() {
    Kep::init(0);
    // Every peer is built in table order, as the tag manager loads its tables;
    // the lookups then walk one shuffled order, so that no peer finds its data in
    // the order it was made.
    int n = 0;
    _KepBuiltInTagTable const* tables = _KepGetBuiltInTagTables(n);
    for (int t = 0; t < n; ++t) {
      for (int i = 0; i < tables[t].count; ++i) {
        std::string text = tables[t].names[i];
        std::u16string wide(text.begin(), text.end());
        int tag = tables[t].start + i;
        texts.push_back(text);
        made.emplace_back(text.c_str());
        tags.push_back(tag);
        quarks.push_back(g_quark_from_string(text.c_str()));
        byName.emplace(wide, tag);
        byNameHashed.emplace(wide, tag);
        byTag.emplace(tag, wide);
        byTagHashed.emplace(tag, wide);
      }
    }
    std::vector<size_t> order(texts.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(20240601));
    auto permute = [&order](auto& v) {
      auto copy = v;
      for (size_t i = 0; i < order.size(); ++i) v[i] = copy[order[i]];
    };
    permute(texts);
    permute(made);
    permute(tags);
    permute(quarks);
    // The keys that the lookups are given, made in walking order for every peer.
    for (std::string const& text : texts) {
      names.emplace_back(text.c_str());
      units.emplace_back(text.begin(), text.end());
    }
  }
  size_t size() const { return texts.size(); }
};

Vocabulary& vocabulary() {
  static Vocabulary v;
  return v;
}

// Runs `lookup(i)` for i walking the shuffled vocabulary.
template <class Lookup>
void walk(benchmark::State& state, Lookup lookup) {
  size_t const n = vocabulary().size();
  size_t i = 0;
  for (auto _ : state) {
    lookup(i);
    if (++i == n) i = 0;
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_NameToTag_Kep(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) { benchmark::DoNotOptimize(KepProcess::nameToTag(v.names[i])); });
}
BENCHMARK(BM_NameToTag_Kep);

void BM_NameToTag_Kep8Bit(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) { benchmark::DoNotOptimize(KepNameToTag(v.texts[i].c_str())); });
}
BENCHMARK(BM_NameToTag_Kep8Bit);

void BM_NameToTag_StdMap(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) { benchmark::DoNotOptimize(v.byName.find(v.units[i])->second); });
}
BENCHMARK(BM_NameToTag_StdMap);

void BM_NameToTag_StdUnorderedMap(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state,
       [&v](size_t i) { benchmark::DoNotOptimize(v.byNameHashed.find(v.units[i])->second); });
}
BENCHMARK(BM_NameToTag_StdUnorderedMap);

void BM_NameToTag_GQuark(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) { benchmark::DoNotOptimize(g_quark_try_string(v.texts[i].c_str())); });
}
BENCHMARK(BM_NameToTag_GQuark);

void BM_TagToName_Kep(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) {
    KepString name = KepProcess::tagToName(v.tags[i]);
    benchmark::DoNotOptimize(name.getTarget());
  });
}
BENCHMARK(BM_TagToName_Kep);

void BM_TagToName_StdMap(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) { benchmark::DoNotOptimize(&v.byTag.find(v.tags[i])->second); });
}
BENCHMARK(BM_TagToName_StdMap);

void BM_TagToName_StdUnorderedMap(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) { benchmark::DoNotOptimize(&v.byTagHashed.find(v.tags[i])->second); });
}
BENCHMARK(BM_TagToName_StdUnorderedMap);

void BM_TagToName_GQuark(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) { benchmark::DoNotOptimize(g_quark_to_string(v.quarks[i])); });
}
BENCHMARK(BM_TagToName_GQuark);

// The floor of every tag-to-name answer of this library: the answer is a counted
// KepString handle, and making one on a string body and dropping it costs this
// much by itself. The peers answer borrowed pointers.
void BM_StringHandle(benchmark::State& state) {
  Vocabulary& v = vocabulary();
  walk(state, [&v](size_t i) {
    KepString name(v.made[i].getTarget());
    benchmark::DoNotOptimize(name.getTarget());
  });
}
BENCHMARK(BM_StringHandle);

// From here on the process has run a second thread: the tag lock is taken.
void startAThread() {
  static bool started = false;
  if (!started) std::thread([] {}).join();
  started = true;
}

void BM_NameToTag_KepThreaded(benchmark::State& state) {
  startAThread();
  BM_NameToTag_Kep(state);
}
BENCHMARK(BM_NameToTag_KepThreaded);

void BM_TagToName_KepThreaded(benchmark::State& state) {
  startAThread();
  BM_TagToName_Kep(state);
}
BENCHMARK(BM_TagToName_KepThreaded);

}  // namespace

BENCHMARK_MAIN();
