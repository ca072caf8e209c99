pkg_check_modules(BENCH_EXPAT REQUIRED IMPORTED_TARGET expat)
pkg_check_modules(LIBXML2 REQUIRED IMPORTED_TARGET libxml-2.0)
pkg_check_modules(PUGIXML REQUIRED IMPORTED_TARGET pugixml)
# POCO installs no pkg-config file: its XML and Foundation libraries are found
# directly.
find_library(POCO_XML_LIB PocoXML REQUIRED)
find_library(POCO_FOUNDATION_LIB PocoFoundation REQUIRED)
kep_bench(parser_bench parser_bench.cpp LIBS PkgConfig::BENCH_EXPAT PkgConfig::LIBXML2
          PkgConfig::PUGIXML ${POCO_XML_LIB} ${POCO_FOUNDATION_LIB})
