# The warnings every target of this project is compiled with. They stay with our own targets:
# users of the library never inherit them.
function(qxrecordset_set_warnings target)
  target_compile_options(
    ${target}
    PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
            $<$<BOOL:${QXRECORDSET_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()
