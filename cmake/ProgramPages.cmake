# cmake -D PROGRAM=build/bin/qvadmin -D FOLDER=build/pages -P ProgramPages.cmake
#
# Has the program write its manual pages and the completions of shells into FOLDER, laid out as below a share/ folder.
cmake_minimum_required(VERSION 3.25)

function(write_output file)
  execute_process(COMMAND ${PROGRAM} ${ARGN} OUTPUT_FILE ${FOLDER}/${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${FOLDER})
foreach(folder man/man1 bash-completion/completions zsh/site-functions fish/vendor_completions.d)
  file(MAKE_DIRECTORY ${FOLDER}/${folder})
endforeach()

write_output(man/man1/qvadmin.1 manual)
execute_process(COMMAND ${PROGRAM} commands OUTPUT_VARIABLE commands COMMAND_ERROR_IS_FATAL ANY)
# Nouns are followed by a verb; what is not has its place in the program's own page.
string(REPLACE ";" "," commands "${commands}")
string(REPLACE "\n" ";" commands "${commands}")
list(FILTER commands INCLUDE REGEX "^[a-z]+ [a-z]")
list(TRANSFORM commands REPLACE " .*" "")
list(REMOVE_DUPLICATES commands)
foreach(noun ${commands})
  write_output(man/man1/qvadmin-${noun}.1 manual ${noun})
endforeach()

write_output(bash-completion/completions/qvadmin completion bash)
write_output(zsh/site-functions/_qvadmin completion zsh)
write_output(fish/vendor_completions.d/qvadmin.fish completion fish)
