# The settings of this project's own targets. Nothing here is inherited by who uses the libraries, and nothing is set
# for whole directories, so that the project can be part of another one.

# What every target of ours is compiled and linked with: link it PRIVATE.
add_library(qv_settings INTERFACE)
target_compile_options(qv_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor
  # Error texts quote source files; they must read the same on every machine.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(qv_settings INTERFACE -Wduplicated-cond -Wlogical-op
    # Sources that are compiled together are no headers, as GCC takes them to be.
    $<$<BOOL:${CMAKE_UNITY_BUILD}>:-Wno-subobject-linkage>)
endif()
if(QV_WARNINGS_AS_ERRORS)
  target_compile_options(qv_settings INTERFACE -Werror)
endif()
target_include_directories(qv_settings INTERFACE ${PROJECT_SOURCE_DIR})

add_library(qv_sanitizers INTERFACE)
if(QV_SANITIZE)
  target_compile_options(qv_sanitizers INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(qv_sanitizers INTERFACE -fsanitize=address,undefined)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # What is undefined ends the program with SIGILL, for which the address sanitizer shows the calls and lines. Texts about
    # it would be a third of what the compiler writes, and every program would have to load them when it starts.
    target_compile_options(qv_sanitizers INTERFACE -fsanitize-undefined-trap-on-error)
  endif()
endif()
if(QV_SANITIZE_THREADS)
  target_compile_options(qv_sanitizers INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(qv_sanitizers INTERFACE -fsanitize=thread)
endif()
# The fuzzer follows what it reaches inside the libraries too; their symbols are resolved by the fuzzer's program.
if(QV_FUZZ)
  target_compile_options(qv_sanitizers INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Optimised builds are hardened: what goes wrong ends the program instead of being used.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection QV_HAS_CF_PROTECTION)
set(optimised "$<AND:$<NOT:$<CONFIG:Debug>>,$<NOT:$<BOOL:${QV_SANITIZE}>>>")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # What GCC 12 says of pointers to members and of texts once it has put everything in one place is not so; the builds
  # without optimisation, where warnings are errors, keep all of them.
  target_compile_options(qv_settings INTERFACE
    "$<${optimised}:-Wno-array-bounds;-Wno-restrict;-Wno-stringop-overflow;-Wno-stringop-overread>")
endif()
target_compile_options(qv_settings INTERFACE
  "$<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong;-fstack-clash-protection>"
  "$<$<AND:${optimised},$<BOOL:${QV_HAS_CF_PROTECTION}>>:-fcf-protection>")
target_link_options(qv_settings INTERFACE "$<${optimised}:LINKER:-z,relro,-z,now>")

# qv_group_sources(TARGET): has the sources of a target compiled some twelve at a time in a unity build, which takes half as
# long: most of what the compiler makes of a source is templates that others use too. Sources go into the groups in turn,
# since neighbours, of one namespace, may have the same names in their unnamed ones.
function(qv_group_sources target)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  list(LENGTH sources count)
  math(EXPR groups "(${count} + 11) / 12")
  set(index 0)
  foreach(source IN LISTS sources)
    math(EXPR group "${index} % ${groups}")
    math(EXPR index "${index} + 1")
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP group${group})
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()

# qv_set_defaults(TARGET [UNSANITIZED]): language and visibility of a target of ours, and the settings above, UNSANITIZED
# without sanitizers.
function(qv_set_defaults target)
  cmake_parse_arguments(DEFAULTS "UNSANITIZED" "" "" ${ARGN})
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 20
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:qv_settings>)
  if(NOT DEFAULTS_UNSANITIZED)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:qv_sanitizers>)
  endif()
  if(CMAKE_UNITY_BUILD)
    # At the end of the folder, when the target has all its sources.
    cmake_language(EVAL CODE "cmake_language(DEFER CALL qv_group_sources ${target})")
  endif()
endfunction()
