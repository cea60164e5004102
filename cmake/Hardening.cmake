# Defences compiled into what we ship: the libraries and the tool.
#
# Instrumented builds (sanitizers, coverage) leave them out: _FORTIFY_SOURCE replaces functions the
# sanitizers want to watch, and it needs an optimising build in the first place.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection=full QXRECORDSET_HAS_CF_PROTECTION) # x86 from i686 on

function(qxrecordset_harden target)
  if(QXRECORDSET_SANITIZE OR NOT CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    return()
  endif()

  set(sOptimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  target_compile_options(${target} PRIVATE -fstack-protector-strong
                                           $<${sOptimised}:-U_FORTIFY_SOURCE>
                                           $<${sOptimised}:-D_FORTIFY_SOURCE=2>)
  if(QXRECORDSET_HAS_CF_PROTECTION)
    target_compile_options(${target} PRIVATE -fcf-protection=full)
  endif()

  get_target_property(sType ${target} TYPE)
  if(NOT sType STREQUAL "STATIC_LIBRARY")
    target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now,-z,noexecstack)
  endif()
  if(sType STREQUAL "EXECUTABLE")
    target_compile_options(${target} PRIVATE -fPIE)
    target_link_options(${target} PRIVATE -pie)
  endif()
endfunction()
