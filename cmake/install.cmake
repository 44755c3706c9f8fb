# Installation: the programs, the static library, every header under
# include/velmora/<subsystem>/, a CMake package (find_package(velmora), target
# velmora::velmora) and a pkg-config file (velmora.pc).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The project's version is the one the library reports by name; the name in the
# source stays the single place that text is written, and a mismatch stops here.
file(STRINGS ${PROJECT_SOURCE_DIR}/src/core/libvelmora_settings.cpp VELMORA_NAME_LINE
  REGEX "\"libVelmora [0-9.]+\"")
string(REPLACE "." "\\." VELMORA_VERSION_PATTERN "${PROJECT_VERSION}")
if(NOT VELMORA_NAME_LINE MATCHES "\"libVelmora ${VELMORA_VERSION_PATTERN}\"")
  message(FATAL_ERROR "project version ${PROJECT_VERSION} differs from libVelmora_name_full(): "
    "${VELMORA_NAME_LINE}")
endif()

# Installed, the headers sit in include/velmora/<subsystem>/: include/ serves
# <velmora/velmora.h>, include/velmora the library's own "core/process.h".
target_include_directories(velmora PUBLIC
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/velmora>)

install(TARGETS sylvar sylvar-fit RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS velmora EXPORT velmoraTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

# Every header under src/, found anew when one is added, each in its subsystem's folder.
file(GLOB_RECURSE VELMORA_HEADERS CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/src
  ${PROJECT_SOURCE_DIR}/src/*.h)
foreach(header ${VELMORA_HEADERS})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/src/${header}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velmora/${folder})
endforeach()

set(VELMORA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/velmora)
install(EXPORT velmoraTargets NAMESPACE velmora:: DESTINATION ${VELMORA_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/velmoraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/velmoraConfig.cmake INSTALL_DESTINATION ${VELMORA_CMAKE_DIR})
# 0.x: a new minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velmoraConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velmoraConfig.cmake ${PROJECT_BINARY_DIR}/velmoraConfigVersion.cmake
  DESTINATION ${VELMORA_CMAKE_DIR})

# pkg-config finds the prefix from the file's own place, so the prefix chosen
# at install time (cmake --install --prefix) needs nothing written at build time.
file(RELATIVE_PATH VELMORA_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" VELMORA_PC_TO_PREFIX "${VELMORA_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/velmora.pc.in ${PROJECT_BINARY_DIR}/velmora.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmora.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Install into a temporary prefix and build examples/consumer against it. Not
# under the sanitizers: the installed package does not carry their link flags.
if(VELMORA_TESTS AND NOT VELMORA_SANITIZE)
  add_test(NAME install_and_consume
    COMMAND bash ${PROJECT_SOURCE_DIR}/tests/install/check_install.sh
      ${PROJECT_BINARY_DIR} ${CMAKE_COMMAND} "${CMAKE_GENERATOR}" ${CMAKE_CXX_COMPILER})
  set_tests_properties(install_and_consume PROPERTIES TIMEOUT 300)
endif()
