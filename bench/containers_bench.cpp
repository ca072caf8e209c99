// The ordered set, its object form and the pointer vector against their std::
// counterparts with the same comparison function, in one run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include "kep/Kep.h"

namespace {

unsigned long lessKey(void* a, void* b) {
  return reinterpret_cast<uintptr_t>(a) < reinterpret_cast<uintptr_t>(b);
}

// Orders the handles an object set holds by the address of their targets.
unsigned long lessTarget(void* a, void* b) {
  return reinterpret_cast<uintptr_t>(static_cast<KepObject*>(a)->getTarget()) <
         reinterpret_cast<uintptr_t>(static_cast<KepObject*>(b)->getTarget());
}

// The same comparison function, called through a pointer the compiler cannot
// see through, as the tree calls it.
struct FunctionLess {
  KepCompareFunction fn;
  bool operator()(void* a, void* b) const { return fn(a, b) != 0; }
};

KepCompareFunction opaque(KepCompareFunction fn) {
  benchmark::DoNotOptimize(fn);
  return fn;
}

// n distinct keys in random order.
std::vector<void*> shuffledKeys(int64_t n) {
  std::vector<void*> keys;
  for (int64_t i = 0; i < n; ++i) keys.push_back(reinterpret_cast<void*>((i + 1) * 16));
  std::shuffle(keys.begin(), keys.end(), std::mt19937(42));
  return keys;
}

// --- Raw set: insert ------------------------------------------------------

void BM_KepSetImplInsert(benchmark::State& state) {
  std::vector<void*> keys = shuffledKeys(state.range(0));
  for (auto _ : state) {
    _KepOrderedSetImpl set(opaque(lessKey));
    for (void* k : keys) set.insert(k);
    benchmark::DoNotOptimize(set.size());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_KepSetImplInsert)->Arg(1000)->Arg(100000);

void BM_StdSetInsert(benchmark::State& state) {
  std::vector<void*> keys = shuffledKeys(state.range(0));
  for (auto _ : state) {
    std::set<void*, FunctionLess> set(FunctionLess{opaque(lessKey)});
    for (void* k : keys) set.insert(k);
    benchmark::DoNotOptimize(set.size());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StdSetInsert)->Arg(1000)->Arg(100000);

// --- Raw set: find --------------------------------------------------------

void BM_KepSetImplFind(benchmark::State& state) {
  std::vector<void*> keys = shuffledKeys(state.range(0));
  _KepOrderedSetImpl set(opaque(lessKey));
  for (void* k : keys) set.insert(k);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
  for (auto _ : state) {
    for (void* k : keys) benchmark::DoNotOptimize(set.find(k));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_KepSetImplFind)->Arg(1000)->Arg(100000);

void BM_StdSetFind(benchmark::State& state) {
  std::vector<void*> keys = shuffledKeys(state.range(0));
  std::set<void*, FunctionLess> set(FunctionLess{opaque(lessKey)});
  for (void* k : keys) set.insert(k);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
  for (auto _ : state) {
    for (void* k : keys) benchmark::DoNotOptimize(set.find(k));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StdSetFind)->Arg(1000)->Arg(100000);

// --- Object set: put and find through the handles -------------------------
// Both sides hold one heap handle per element (newBridge) and compare with the
// same function; the std:: side frees its handles as the set's body does.

std::vector<KepObject> objects(int64_t n) {
  std::vector<KepObject> out;
  for (int64_t i = 0; i < n; ++i) out.emplace_back(new KepRObject);
  std::shuffle(out.begin(), out.end(), std::mt19937(42));
  return out;
}

void BM_KepOrderedSetPut(benchmark::State& state) {
  std::vector<KepObject> elems = objects(state.range(0));
  for (auto _ : state) {
    KepOrderedSet set(new KepROrderedSet);
    set.setComparator(opaque(lessTarget));
    for (KepObject& e : elems) set.put(e);
    benchmark::DoNotOptimize(set.size());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_KepOrderedSetPut)->Arg(1000)->Arg(100000);

void BM_StdSetOfHandlesInsert(benchmark::State& state) {
  std::vector<KepObject> elems = objects(state.range(0));
  for (auto _ : state) {
    std::set<void*, FunctionLess> set(FunctionLess{opaque(lessTarget)});
    for (KepObject& e : elems) set.insert(e.newBridge());
    benchmark::DoNotOptimize(set.size());
    for (void* h : set) static_cast<KepObject*>(h)->freeBridge();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StdSetOfHandlesInsert)->Arg(1000)->Arg(100000);

void BM_KepOrderedSetFind(benchmark::State& state) {
  std::vector<KepObject> elems = objects(state.range(0));
  KepOrderedSet set(new KepROrderedSet);
  set.setComparator(opaque(lessTarget));
  for (KepObject& e : elems) set.put(e);
  std::shuffle(elems.begin(), elems.end(), std::mt19937(7));
  for (auto _ : state) {
    for (KepObject& e : elems) benchmark::DoNotOptimize(set.find(e));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_KepOrderedSetFind)->Arg(1000)->Arg(100000);

void BM_StdSetOfHandlesFind(benchmark::State& state) {
  std::vector<KepObject> elems = objects(state.range(0));
  std::set<void*, FunctionLess> set(FunctionLess{opaque(lessTarget)});
  for (KepObject& e : elems) set.insert(e.newBridge());
  std::shuffle(elems.begin(), elems.end(), std::mt19937(7));
  for (auto _ : state) {
    for (KepObject& e : elems) benchmark::DoNotOptimize(set.find(&e));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  for (void* h : set) static_cast<KepObject*>(h)->freeBridge();
}
BENCHMARK(BM_StdSetOfHandlesFind)->Arg(1000)->Arg(100000);

// --- Pointer vector: appends ----------------------------------------------

void BM_KepVectorPushBack(benchmark::State& state) {
  for (auto _ : state) {
    _KepVectorImpl v;
    for (int64_t i = 0; i < state.range(0); ++i) v.push_back(reinterpret_cast<void*>(i));
    benchmark::DoNotOptimize(v.begin());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_KepVectorPushBack)->Arg(1000)->Arg(100000);

void BM_StdVectorPushBack(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<void*> v;
    for (int64_t i = 0; i < state.range(0); ++i) v.push_back(reinterpret_cast<void*>(i));
    benchmark::DoNotOptimize(v.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StdVectorPushBack)->Arg(1000)->Arg(100000);

}  // namespace

BENCHMARK_MAIN();
