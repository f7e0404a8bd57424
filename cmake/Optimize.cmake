# qv_optimize(target): for the shared libraries. A look-up on a server's socket takes some 30 us, and calls from library
# to library and between their parts were a good part of what the module added to that.
include(CheckIPOSupported)
check_ipo_supported(RESULT QV_IPO LANGUAGES CXX)

function(qv_optimize target)
  target_compile_options(${target} PRIVATE -fno-plt -fno-semantic-interposition)
  set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ${QV_IPO})
endfunction()
