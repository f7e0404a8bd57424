if(QV_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

if(QV_SANITIZE_THREADS)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

# The fuzzer follows what it reaches inside the libraries too; their symbols are resolved by the fuzzer's program.
if(QV_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
