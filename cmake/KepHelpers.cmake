# Shared build rules: every target of the project gets the same language level,
# warnings and sanitizer flags from kep_target_defaults(); the library's install
# rules live in kep_install_library(); test suites come from kep_test_suite().

include(CMakePackageConfigHelpers)

function(kep_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
  if(KEP_SANITIZE)
    string(REPLACE ";" "," _kep_san "${KEP_SANITIZE}")
    target_compile_options(${target} PRIVATE -fsanitize=${_kep_san} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${_kep_san})
  endif()
endfunction()

# kep_test_suite(NAME <name> SOURCES <files...> [LABELS <labels...>] [INIT])
# One GoogleTest executable per subsystem folder; each test case becomes a CTest
# test. INIT links the main that brings the library up with Kep::init first.
function(kep_test_suite)
  cmake_parse_arguments(ARG "INIT" "NAME" "SOURCES;LABELS" ${ARGN})
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  kep_target_defaults(${ARG_NAME})
  target_link_libraries(${ARG_NAME} PRIVATE Kep11::Kep11 kep_test_support GTest::gmock)
  if(ARG_INIT)
    target_link_libraries(${ARG_NAME} PRIVATE kep_test_main_init)
  else()
    target_link_libraries(${ARG_NAME} PRIVATE GTest::gtest_main)
  endif()
  gtest_discover_tests(${ARG_NAME}
    PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 300
    DISCOVERY_TIMEOUT 60)
endfunction()

function(kep_install_library target)
  install(TARGETS ${target} EXPORT Kep11Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/kep/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kep
    FILES_MATCHING PATTERN "*.h" PATTERN "*.def")
  install(EXPORT Kep11Targets NAMESPACE Kep11:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Kep11)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/Kep11Config.cmake.in
    ${PROJECT_BINARY_DIR}/Kep11Config.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Kep11)
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/Kep11ConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/Kep11Config.cmake ${PROJECT_BINARY_DIR}/Kep11ConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Kep11)
  # kep11.pc finds the prefix from its own place (pkg-config's ${pcfiledir}), so
  # that `cmake --install --prefix DIR` and relocated trees give right paths.
  if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(KEP_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
    set(KEP_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
    set(KEP_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
  else()
    file(RELATIVE_PATH _kep_up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" _kep_up "${_kep_up}")
    set(KEP_PC_PREFIX "\${pcfiledir}/${_kep_up}")
    set(KEP_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(KEP_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/kep11.pc.in ${PROJECT_BINARY_DIR}/kep11.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/kep11.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
