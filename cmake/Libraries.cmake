include(GNUInstallDirs)

include(CheckIPOSupported)
check_ipo_supported(RESULT QV_IPO LANGUAGES CXX)

# qv_set_shared_defaults(TARGET): the defaults of a target of ours that becomes a shared library or a module. A look-up on
# a server's socket takes some 30 us, and calls from library to library and between their parts were a good part of what
# the module added to that.
function(qv_set_shared_defaults target)
  qv_set_defaults(${target})
  target_compile_options(${target} PRIVATE -fno-plt -fno-semantic-interposition
    # The test of binary compatibility compares the types of the interface.
    $<$<CONFIG:Debug>:-g2>)
  set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ${QV_IPO})
endfunction()

# Where headers are installed: sources include them as they do here, "basefun/QVBaseFun.h".
set(QV_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/quorvel)
# Where drivers are installed, seen from the library that loads them; see dbaccess/DriverModule.h.
set(QV_DRIVER_FOLDER quorvel/${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}/drivers)

# Where the console's modules are, seen from its program; see management/ProgramModule.h.
file(RELATIVE_PATH QV_LIBRARIES_FROM_PROGRAMS /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set(QV_MODULE_FOLDER quorvel/${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}/console)

# qv_add_library(qvplatform [STATIC] NAME platform DESCRIPTION ... SOURCES ... HEADERS ... [REQUIRES qvdbaccess ...])
#
# One of the libraries, shared unless STATIC: target qvplatform, Quorvel::platform for users here and of an installed
# Quorvel, and qvplatform.pc. HEADERS are the public ones, which alone are installed; REQUIRES are the libraries of ours whose headers
# they include.
function(qv_add_library target)
  cmake_parse_arguments(LIB "STATIC" "NAME;DESCRIPTION" "SOURCES;HEADERS;REQUIRES" ${ARGN})
  if(LIB_STATIC)
    add_library(${target} STATIC ${LIB_SOURCES})
    qv_set_defaults(${target})
  else()
    add_library(${target} SHARED ${LIB_SOURCES})
    qv_set_shared_defaults(${target})
  endif()
  add_library(Quorvel::${LIB_NAME} ALIAS ${target})
  list(TRANSFORM LIB_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/)
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${LIB_HEADERS})
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_link_libraries(${target} PUBLIC ${LIB_REQUIRES})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${LIB_NAME}
    VERSION ${PROJECT_VERSION}
    # Before 1.0 every minor version may change the interface; see docs/compatibility.md.
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib
    INSTALL_RPATH $ORIGIN)
  if(NOT QV_INSTALL)
    return()
  endif()
  install(TARGETS ${target} EXPORT QuorvelTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION ${QV_INSTALL_INCLUDEDIR} COMPONENT development)

  set(PC_NAME ${target})
  set(PC_DESCRIPTION ${LIB_DESCRIPTION})
  list(JOIN LIB_REQUIRES " " PC_REQUIRES)
  # Relative, so that an installed Quorvel can be moved.
  file(RELATIVE_PATH PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${target}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${target}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

# qv_add_program(qvadmin SOURCES ...): a program of ours, in build/PRESET/bin.
function(qv_add_program target)
  cmake_parse_arguments(PROGRAM "" "" "SOURCES" ${ARGN})
  add_executable(${target} ${PROGRAM_SOURCES})
  qv_set_defaults(${target})
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endfunction()

# qv_add_program_module(qvhttp NAME http SOURCES ...): a part of qvadmin that only some commands need, with libraries that
# take long to load. It is a module, which management::LoadFromModule loads.
function(qv_add_program_module target)
  cmake_parse_arguments(MODULE "" "NAME" "SOURCES" ${ARGN})
  add_library(${target} MODULE ${MODULE_SOURCES})
  qv_set_shared_defaults(${target})
  set_target_properties(${target} PROPERTIES
    PREFIX "" OUTPUT_NAME ${MODULE_NAME}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin/${QV_LIBRARIES_FROM_PROGRAMS}/${QV_MODULE_FOLDER}
    INSTALL_RPATH $ORIGIN/../../..)
  if(QV_INSTALL)
    install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${QV_MODULE_FOLDER} COMPONENT tools)
  endif()
endfunction()
