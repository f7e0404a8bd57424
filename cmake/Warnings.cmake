# Our own targets link qv_warnings; nothing that uses the libraries inherits it.
add_library(qv_warnings INTERFACE)
target_compile_options(qv_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(qv_warnings INTERFACE -Wduplicated-cond -Wlogical-op)
endif()
if(QV_WARNINGS_AS_ERRORS)
  target_compile_options(qv_warnings INTERFACE -Werror)
endif()
