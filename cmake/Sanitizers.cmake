# Instruments everything built in this tree, GoogleTest included, with the sanitizers named in
# QXRECORDSET_SANITIZE. The first finding ends the program, so that no test can pass over one. What is
# fuzzed also tells the fuzzer which ways it took.
if(QXRECORDSET_BUILD_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(NOT QXRECORDSET_SANITIZE)
  return()
endif()

add_compile_options(-fsanitize=${QXRECORDSET_SANITIZE} -fno-sanitize-recover=all
                    -fno-omit-frame-pointer)
add_link_options(-fsanitize=${QXRECORDSET_SANITIZE})
if(QXRECORDSET_SANITIZE MATCHES "undefined")
  add_compile_options(-fsanitize=float-cast-overflow)
endif()
