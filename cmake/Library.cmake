# The library targets and the one function through which the source folders fill them.
#
# Both libraries are compiled from the same sources. The shared one exports exactly what carries
# QXRECORDSET_EXPORT; the static one is built with QXRECORDSET_STATIC_DEFINE, so that its symbols do
# not leave whatever it is linked into, and as position independent code, so that this may be a
# shared object too.
include(GenerateExportHeader)

add_library(qxrecordset SHARED)
add_library(qxrecordset_static STATIC)
add_library(QXRecordSet::QXRecordSet ALIAS qxrecordset)
add_library(QXRecordSet::QXRecordSetStatic ALIAS qxrecordset_static)

set_target_properties(qxrecordset PROPERTIES EXPORT_NAME QXRecordSet)
set_target_properties(qxrecordset_static PROPERTIES EXPORT_NAME QXRecordSetStatic)
set_target_properties(qxrecordset PROPERTIES VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR})
if(NOT QXRECORDSET_INSTALL)
  # Inside a parent project each library is built only when something links to it.
  set_target_properties(qxrecordset qxrecordset_static PROPERTIES EXCLUDE_FROM_ALL ON)
elseif(QXRECORDSET_SANITIZE)
  # The sources are the same: what sanitizers find in one library they find in the other.
  set_target_properties(qxrecordset PROPERTIES EXCLUDE_FROM_ALL ON)
endif()

set(sGeneratedInclude ${PROJECT_BINARY_DIR}/generated/include)
generate_export_header(qxrecordset EXPORT_FILE_NAME ${sGeneratedInclude}/qxrecordset_export.h)

foreach(sTarget IN ITEMS qxrecordset qxrecordset_static)
  target_compile_features(${sTarget} PUBLIC cxx_std_17)
  set_target_properties(
    ${sTarget}
    PROPERTIES OUTPUT_NAME QXRecordSet
               LINKER_LANGUAGE CXX
               CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               POSITION_INDEPENDENT_CODE ON)
  target_sources(${sTarget} PRIVATE ${sGeneratedInclude}/qxrecordset_export.h)
  # Where #include "json/JSONValue.h" looks, in this tree and in an installed one.
  target_include_directories(
    ${sTarget}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${sGeneratedInclude}>
           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qxrecordset>)
  qxrecordset_set_warnings(${sTarget})
  qxrecordset_harden(${sTarget})
endforeach()
target_compile_definitions(qxrecordset_static PUBLIC QXRECORDSET_STATIC_DEFINE)
# GCC makes static objects of templates unique in the process, and the loader never unloads what defines
# such a symbol: a plug-in that our archive is linked into could not be unloaded.
# clang-tidy does not know the option; it sees the sources in the shared library.
target_compile_options(qxrecordset_static
                       PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
set_target_properties(qxrecordset_static PROPERTIES EXPORT_COMPILE_COMMANDS OFF)

# The version script keeps instantiated standard templates out of the exported list; the linker
# refuses a library with unresolved symbols.
#
# Calls inside the library go straight to their target (and may be inlined), CPortable apart: that
# class is the host's to replace, so its functions are weak and stay open to interposition. Data stays
# open too (--dynamic-list-data): a program may hold its own copy of an exported constant.
set(sVersionScript ${PROJECT_SOURCE_DIR}/cmake/qxrecordset.map)
set(sReplaceableList ${PROJECT_SOURCE_DIR}/cmake/replaceable.list)
target_compile_options(qxrecordset PRIVATE -fno-semantic-interposition)
target_link_options(
  qxrecordset
  PRIVATE
  LINKER:--version-script=${sVersionScript}
  LINKER:-Bsymbolic-functions
  LINKER:--dynamic-list-data
  LINKER:--dynamic-list=${sReplaceableList})
if(NOT QXRECORDSET_SANITIZE) # a sanitizer's runtime is bound when the program is linked, not before
  target_link_options(qxrecordset PRIVATE LINKER:--no-undefined)
endif()
set_property(TARGET qxrecordset APPEND PROPERTY LINK_DEPENDS ${sVersionScript} ${sReplaceableList})

# Called by the CMakeLists.txt of a source folder: every .cpp file of the folder is compiled into
# both libraries, and the headers named after PUBLIC_HEADERS are installed under the folder's name.
function(qxrecordset_add_folder)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "" "PUBLIC_HEADERS")
  file(GLOB vSources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  target_sources(qxrecordset PRIVATE ${vSources})
  target_sources(qxrecordset_static PRIVATE ${vSources})
  if(QXRECORDSET_INSTALL)
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME sFolder)
    install(FILES ${arg_PUBLIC_HEADERS}
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxrecordset/${sFolder} COMPONENT development)
  endif()
endfunction()
