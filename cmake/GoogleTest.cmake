# Provides GTest::gtest and GTest::gtest_main.
#
# The system's GoogleTest serves the plain build for the system's own architecture. Any other build
# (32-bit, another processor, libc++, sanitizers) compiles Debian's source package with its own flags,
# so that no package of a second architecture is needed and the sanitizers see all of the code.
include(GoogleTest)

if(CMAKE_SIZEOF_VOID_P EQUAL 8 AND NOT CMAKE_CROSSCOMPILING AND NOT QXRECORDSET_SANITIZE
   AND NOT CMAKE_CXX_FLAGS MATCHES "-stdlib=libc\\+\\+")
  find_package(GTest QUIET)
endif()
if(NOT TARGET GTest::gtest)
  set(QXRECORDSET_GOOGLETEST_SOURCE /usr/src/googletest
      CACHE PATH "Source of GoogleTest, used where the system has no fitting library")
  if(NOT EXISTS ${QXRECORDSET_GOOGLETEST_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest is missing: install the package googletest "
                        "or set QXRECORDSET_GOOGLETEST_SOURCE (or QXRECORDSET_BUILD_TESTS=OFF)")
  endif()
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  set(CMAKE_POLICY_DEFAULT_CMP0077 NEW) # the two lines above count as the options' values
  set(CMAKE_WARN_DEPRECATED OFF)        # the package asks for an older CMake
  add_subdirectory(${QXRECORDSET_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest
                   EXCLUDE_FROM_ALL SYSTEM)
  unset(CMAKE_WARN_DEPRECATED)
  target_compile_options(gtest PRIVATE -O0 -g0) # the largest source of all, and no test waits for it
endif()
