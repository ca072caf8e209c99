kep_bench(thread_bench thread_bench.cpp)
