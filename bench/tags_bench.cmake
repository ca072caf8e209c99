pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
kep_bench(tags_bench tags_bench.cpp LIBS PkgConfig::GLIB)
