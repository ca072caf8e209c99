// Handle copies, bridge calls and body life cycles against their std::
// counterparts, in one run.
#include <benchmark/benchmark.h>

#include <memory>
#include <thread>

#include "kep/Kep.h"

namespace {

// A plain polymorphic class of the same size as a root body, for the std:: side.
struct PlainBody {
  virtual ~PlainBody() = default;
  virtual int getService() const { return service; }
  char pad[sizeof(KepRObject) - sizeof(void*) - sizeof(int)] = {};
  int service = 7;
};
static_assert(sizeof(PlainBody) == sizeof(KepRObject), "same size as the body");

void BM_HandleCopyDestroy(benchmark::State& state) {
  KepObject h(new KepRObject);
  for (auto _ : state) {
    KepObject copy(h);
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_HandleCopyDestroy);

void BM_SharedPtrCopyDestroy(benchmark::State& state) {
  auto p = std::make_shared<PlainBody>();
  for (auto _ : state) {
    std::shared_ptr<PlainBody> copy(p);
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_SharedPtrCopyDestroy);

void BM_BridgeCall(benchmark::State& state) {
  KepObject h(new KepRObject);
  KepBridgeToObject* target = h.getTarget();
  for (auto _ : state) {
    benchmark::DoNotOptimize(target);
    benchmark::DoNotOptimize(bridgeKepRObject_getService(target));
  }
}
BENCHMARK(BM_BridgeCall);

void BM_HandleMethodCall(benchmark::State& state) {
  KepObject h(new KepRObject);
  KepObject* hp = &h;
  for (auto _ : state) {
    benchmark::DoNotOptimize(hp);
    benchmark::DoNotOptimize(hp->getService());
  }
}
BENCHMARK(BM_HandleMethodCall);

void BM_DirectVirtualCall(benchmark::State& state) {
  KepObject h(new KepRObject);
  KepRObject* body = h.getRealKepObj();
  for (auto _ : state) {
    benchmark::DoNotOptimize(body);
    benchmark::DoNotOptimize(body->getService());
  }
}
BENCHMARK(BM_DirectVirtualCall);

void BM_PlainVirtualCall(benchmark::State& state) {
  auto p = std::make_shared<PlainBody>();
  PlainBody* body = p.get();
  for (auto _ : state) {
    benchmark::DoNotOptimize(body);
    benchmark::DoNotOptimize(body->getService());
  }
}
BENCHMARK(BM_PlainVirtualCall);

void BM_BodyCreateWrapDestroy(benchmark::State& state) {
  for (auto _ : state) {
    KepObject h(new KepRObject);
    benchmark::DoNotOptimize(h);
  }
}
BENCHMARK(BM_BodyCreateWrapDestroy);

void BM_MakeSharedSameSize(benchmark::State& state) {
  for (auto _ : state) {
    auto p = std::make_shared<PlainBody>();
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(BM_MakeSharedSameSize);

// The process has had a second thread from here on: counts (ours and
// libstdc++'s) use locked instructions, as in every multi-threaded host.
void BM_HandleCopyDestroyThreaded(benchmark::State& state) {
  std::thread([] {}).join();
  KepObject h(new KepRObject);
  for (auto _ : state) {
    KepObject copy(h);
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_HandleCopyDestroyThreaded);

void BM_SharedPtrCopyDestroyThreaded(benchmark::State& state) {
  auto p = std::make_shared<PlainBody>();
  for (auto _ : state) {
    std::shared_ptr<PlainBody> copy(p);
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_SharedPtrCopyDestroyThreaded);

void BM_BodyCreateWrapDestroyThreaded(benchmark::State& state) {
  for (auto _ : state) {
    KepObject h(new KepRObject);
    benchmark::DoNotOptimize(h);
  }
}
BENCHMARK(BM_BodyCreateWrapDestroyThreaded);

void BM_MakeSharedSameSizeThreaded(benchmark::State& state) {
  for (auto _ : state) {
    auto p = std::make_shared<PlainBody>();
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(BM_MakeSharedSameSizeThreaded);

}  // namespace

BENCHMARK_MAIN();
