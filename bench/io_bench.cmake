kep_bench(io_bench io_bench.cpp)
