# qv_add_driver(NAME sqlite PACKAGE SQLite3 TARGET SQLite::SQLite3 DEBIAN libsqlite3-dev SOURCES ...)
#
# Adds an engine's driver to qvdbaccess. Without the engine's client library the driver is left out, with a line that
# says which package brings it, when configuring and when somebody asks for it.
function(qv_add_driver)
  cmake_parse_arguments(DRIVER "" "NAME;PACKAGE;TARGET;DEBIAN" "SOURCES" ${ARGN})
  string(TOUPPER ${DRIVER_NAME} upper)
  find_package(${DRIVER_PACKAGE} QUIET)
  if(NOT ${DRIVER_PACKAGE}_FOUND)
    message(STATUS "driver ${DRIVER_NAME}: left out, its client library is missing (Debian package ${DRIVER_DEBIAN})")
    target_compile_definitions(qvdbaccess PRIVATE QV_WITHOUT_${upper}="${DRIVER_DEBIAN}")
    return()
  endif()
  # Some modules of CMake name the version otherwise.
  message(STATUS "driver ${DRIVER_NAME}: ${${DRIVER_PACKAGE}_VERSION}${${DRIVER_PACKAGE}_VERSION_STRING}")
  target_sources(qvdbaccess PRIVATE ${DRIVER_SOURCES})
  target_compile_definitions(qvdbaccess PRIVATE QV_WITH_${upper}=1)
  target_link_libraries(qvdbaccess PRIVATE ${DRIVER_TARGET})
endfunction()
