# Adds each suite of a test program to what ctest runs. Takes from who includes it: program, the names of tests that run
# alone (joined by ":"), and the properties of all.
if(NOT EXISTS "${program}")
  add_test("${program}" "${program}") # fails, and says that it was not built
  return()
endif()
execute_process(COMMAND "${program}" --gtest_list_tests OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(^|\n)[^ \n]+\\." suites "${listing}")
foreach(suite IN LISTS suites)
  string(STRIP "${suite}" suite)
  string(REGEX REPLACE "\\.$" "" name "${suite}")
  add_test("${name}" "${program}" "--gtest_filter=${name}.*-${alone}")
  set_tests_properties("${name}" PROPERTIES ${properties})
endforeach()
string(REPLACE ":" ";" alone "${alone}")
foreach(test IN LISTS alone)
  add_test("${test}" "${program}" "--gtest_filter=${test}")
  set_tests_properties("${test}" PROPERTIES ${properties} RUN_SERIAL TRUE)
endforeach()
