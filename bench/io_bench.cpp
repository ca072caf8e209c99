// Sequential reads and writes of a 256 MiB file through the file layer
// (_KepIORead/_KepIOWrite) against plain read(2)/write(2), in 32 KiB and 4 KiB
// pieces, in one run. The file lives under /tmp and is removed at the end; it
// stays in the page cache, so the runs measure what each call adds on top of
// the system call.
//
// Every variant moves its bytes through the same buffer, at the same place in
// a page: the kernel's copy between the page cache and user memory runs at
// different speeds for different offsets of the buffer within a page (a few
// percent between cache-line offsets, more than half again just after the
// start of a page), so buffers allocated per variant would compare where the
// allocator put them rather than the calls.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kep/Kep.h"

namespace {

constexpr size_t kFileSize = size_t{256} << 20;
constexpr size_t kLargestPiece = 32 * 1024;

// The one transfer buffer of every variant: 256 bytes into a page, away from
// the slow start of a page (null when it cannot be had).
char* transferBuffer() {
  constexpr size_t kPage = 4096;
  constexpr size_t kOffset = 256;
  static char* buffer = [] {
    auto* page = static_cast<char*>(std::aligned_alloc(kPage, kLargestPiece + kPage));
    if (page == nullptr) return page;
    std::memset(page + kOffset, 'w', kLargestPiece);
    return page + kOffset;
  }();
  return buffer;
}

std::string const& benchPath() {
  static std::string path = "/tmp/kep-io-bench-" + std::to_string(getpid());
  return path;
}

bool createBenchFile() {
  int fd = open(benchPath().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) return false;
  std::vector<char> block(1 << 20);
  for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 31);
  bool ok = true;
  for (size_t done = 0; ok && done < kFileSize; done += block.size()) {
    ok = write(fd, block.data(), block.size()) == static_cast<ssize_t>(block.size());
  }
  return close(fd) == 0 && ok;
}

// Runs whole-file passes in pieces of state.range(0) bytes: `rewind()` before
// each pass, then `transfer(buffer, piece)` once per piece, which answers
// success.
template <class Rewind, class Transfer>
void passes(benchmark::State& state, Rewind rewind, Transfer transfer) {
  size_t const piece = static_cast<size_t>(state.range(0));
  char* buffer = transferBuffer();
  for (auto _ : state) {
    rewind();
    for (size_t done = 0; done < kFileSize; done += piece) {
      if (!transfer(buffer, piece)) {
        state.SkipWithError("transfer failed");
        break;
      }
    }
    benchmark::DoNotOptimize(buffer);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
}

void BM_PlainRead(benchmark::State& state) {
  int fd = open(benchPath().c_str(), O_RDONLY | O_CLOEXEC);
  passes(
      state, [&] { lseek(fd, 0, SEEK_SET); },
      [&](char* buffer, size_t piece) { return read(fd, buffer, piece) == ssize_t(piece); });
  close(fd);
}

void BM_KepIORead(benchmark::State& state) {
  _Io_File file;
  __KepIOOpen(benchPath().c_str(), KEP_IO_READ, &file, 1);
  passes(
      state, [&] { _KepIOSeek(&file, 0, KEP_IO_SEEK_SET, nullptr); },
      [&](char* buffer, size_t piece) {
        uint16_t count = 0;
        return _KepIORead(&file, KEP_IO_CURRENT, static_cast<uint16_t>(piece), buffer, &count) == 0;
      });
  _KepIOClose(&file);
}

void BM_PlainWrite(benchmark::State& state) {
  int fd = open(benchPath().c_str(), O_WRONLY | O_CLOEXEC);
  passes(
      state, [&] { lseek(fd, 0, SEEK_SET); },
      [&](char* buffer, size_t piece) { return write(fd, buffer, piece) == ssize_t(piece); });
  close(fd);
}

void BM_KepIOWrite(benchmark::State& state) {
  _Io_File file;
  __KepIOOpen(benchPath().c_str(), KEP_IO_WRITE, &file, 1);
  passes(
      state, [&] { _KepIOSeek(&file, 0, KEP_IO_SEEK_SET, nullptr); },
      [&](char* buffer, size_t piece) {
        uint32_t wrote = 0;
        return _KepIOWrite(&file, KEP_IO_SEEK_CUR, 0, static_cast<uint32_t>(piece), buffer,
                           &wrote) == 0;
      });
  _KepIOClose(&file);
}

// Five repetitions of each, interleaved at random (see main), reported as
// mean, median and spread, so that a busy machine shows as spread instead of
// as a difference between the plain calls and the layer's.
void pieces(benchmark::internal::Benchmark* b) {
  b->Arg(kLargestPiece)
      ->Arg(4 * 1024)
      ->Unit(benchmark::kMillisecond)
      ->MinTime(0.5)
      ->Repetitions(5)
      ->ReportAggregatesOnly(true);
}

BENCHMARK(BM_PlainRead)->Apply(pieces);
BENCHMARK(BM_KepIORead)->Apply(pieces);
BENCHMARK(BM_PlainWrite)->Apply(pieces);
BENCHMARK(BM_KepIOWrite)->Apply(pieces);

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> args(argv, argv + argc);
  std::string interleave = "--benchmark_enable_random_interleaving=true";
  args.insert(args.begin() + 1, &interleave[0]);  // later arguments may override it
  argc = static_cast<int>(args.size());
  argv = args.data();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (transferBuffer() == nullptr || !createBenchFile()) {
    std::fprintf(stderr, "cannot create %s\n", benchPath().c_str());
    unlink(benchPath().c_str());
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  unlink(benchPath().c_str());
  return 0;
}
