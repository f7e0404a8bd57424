# cmake -DCOMPILER=... -DINCLUDES=... -DSNIPPET=... -DWORDS=... -P CheckSnippet.cmake
#
# A snippet that fails for another reason than its mistake would prove nothing: so it must compile without the mistake,
# and the message about the mistake must hold the expected words.
foreach(argument COMPILER INCLUDES SNIPPET WORDS)
  if(NOT ${argument})
    message(FATAL_ERROR "${argument} is not given")
  endif()
endforeach()

function(compile result output)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C ${COMPILER} -std=c++20 -fsyntax-only -I${INCLUDES} ${ARGN} ${SNIPPET}
    RESULT_VARIABLE code OUTPUT_VARIABLE text ERROR_VARIABLE text)
  set(${result} "${code}" PARENT_SCOPE)
  set(${output} "${text}" PARENT_SCOPE)
endfunction()

compile(code text)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "does not compile without the mistake:\n${text}")
endif()
compile(code text -DQV_MISTAKE)
if(NOT code EQUAL 1)
  message(FATAL_ERROR "is not refused with the mistake (${code}):\n${text}")
endif()
string(FIND "${text}" "${WORDS}" place)
if(place EQUAL -1)
  message(FATAL_ERROR "is refused without the words \"${WORDS}\":\n${text}")
endif()
