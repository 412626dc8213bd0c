# Installation: the library, its headers (under include/korvex), the korvex
# program, a pkg-config file and a CMake package giving Korvex::Korvex.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KORVEX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Korvex)

target_include_directories(Korvex PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/korvex>)

install(TARGETS Korvex EXPORT KorvexTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/korvex FILES_MATCHING PATTERN "*.h")
if(TARGET korvex)
  install(TARGETS korvex RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  set_target_properties(korvex PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()

install(EXPORT KorvexTargets NAMESPACE Korvex:: DESTINATION ${KORVEX_CMAKE_DIR})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/KorvexConfig.cmake.in
  ${CMAKE_BINARY_DIR}/KorvexConfig.cmake INSTALL_DESTINATION ${KORVEX_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/KorvexConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/KorvexConfig.cmake ${CMAKE_BINARY_DIR}/KorvexConfigVersion.cmake
  DESTINATION ${KORVEX_CMAKE_DIR})

# The .pc file finds its prefix from its own place, so that it is right for
# whatever prefix `cmake --install --prefix` is given.
file(RELATIVE_PATH KORVEX_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" KORVEX_PC_TO_PREFIX "${KORVEX_PC_TO_PREFIX}")
configure_file(${CMAKE_SOURCE_DIR}/cmake/korvex.pc.in ${CMAKE_BINARY_DIR}/korvex.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/korvex.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
