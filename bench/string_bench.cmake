pkg_check_modules(ICU_UC REQUIRED IMPORTED_TARGET icu-uc)
kep_bench(string_bench string_bench.cpp LIBS PkgConfig::ICU_UC)
