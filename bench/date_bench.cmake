kep_bench(date_bench date_bench.cpp)
