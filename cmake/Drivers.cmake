# qv_add_driver(NAME sqlite PACKAGE SQLite3 TARGET SQLite::SQLite3 DEBIAN libsqlite3-dev [BUILT_IN] SOURCES ...)
#
# Adds an engine's driver: part of qvdbaccess if BUILT_IN, else a module that qvdbaccess loads when its scheme is first
# asked for. Without the engine's client library the driver is left out, with a line that says which package brings it,
# when configuring and when somebody asks for it.
function(qv_add_driver)
  cmake_parse_arguments(DRIVER "BUILT_IN" "NAME;PACKAGE;TARGET;DEBIAN" "SOURCES" ${ARGN})
  string(TOUPPER ${DRIVER_NAME} upper)
  find_package(${DRIVER_PACKAGE} QUIET)
  if(NOT ${DRIVER_PACKAGE}_FOUND)
    message(STATUS "driver ${DRIVER_NAME}: left out, its client library is missing (Debian package ${DRIVER_DEBIAN})")
    target_compile_definitions(qvdbaccess PRIVATE QV_WITHOUT_${upper}="${DRIVER_DEBIAN}")
    return()
  endif()
  # Some modules of CMake name the version otherwise.
  message(STATUS "driver ${DRIVER_NAME}: ${${DRIVER_PACKAGE}_VERSION}${${DRIVER_PACKAGE}_VERSION_STRING}")
  list(TRANSFORM DRIVER_SOURCES PREPEND drivers/${DRIVER_NAME}/)
  if(DRIVER_BUILT_IN)
    target_sources(qvdbaccess PRIVATE ${DRIVER_SOURCES})
    target_compile_definitions(qvdbaccess PRIVATE QV_WITH_${upper}=1)
    target_link_libraries(qvdbaccess PRIVATE ${DRIVER_TARGET})
    return()
  endif()
  set(module qvdriver_${DRIVER_NAME})
  add_library(${module} MODULE ${DRIVER_SOURCES} drivers/${DRIVER_NAME}/Module.cpp)
  qv_set_shared_defaults(${module})
  target_link_libraries(${module} PRIVATE qvdbaccess qvdbaccess_common ${DRIVER_TARGET})
  set_target_properties(${module} PROPERTIES
    PREFIX "" OUTPUT_NAME ${DRIVER_NAME}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib/${QV_DRIVER_FOLDER}
    INSTALL_RPATH $ORIGIN/../../..)
  add_dependencies(qvdrivers ${module})
  if(QV_INSTALL)
    install(TARGETS ${module} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${QV_DRIVER_FOLDER}
      COMPONENT driver_${DRIVER_NAME})
  endif()
endfunction()
