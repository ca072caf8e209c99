pkg_check_modules(PUGIXML REQUIRED IMPORTED_TARGET pugixml)
pkg_check_modules(LIBXML2 REQUIRED IMPORTED_TARGET libxml-2.0)
kep_bench(writer_bench writer_bench.cpp LIBS PkgConfig::PUGIXML PkgConfig::LIBXML2)
