# What `cmake --install` puts where: libraries, headers, and the two descriptions by which others
# find them, a CMake package and a pkg-config file. The folders install their own public headers.
include(CMakePackageConfigHelpers)

set(sPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/QXRecordSet)

install(
  TARGETS qxrecordset qxrecordset_static
  EXPORT QXRecordSetTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES ${sGeneratedInclude}/qxrecordset_export.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxrecordset COMPONENT development)
install(EXPORT QXRecordSetTargets NAMESPACE QXRecordSet:: DESTINATION ${sPackageDir}
        COMPONENT development)

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/QXRecordSetConfig.cmake.in
  ${PROJECT_BINARY_DIR}/generated/QXRecordSetConfig.cmake INSTALL_DESTINATION ${sPackageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/generated/QXRecordSetConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/generated/QXRecordSetConfig.cmake
              ${PROJECT_BINARY_DIR}/generated/QXRecordSetConfigVersion.cmake
        DESTINATION ${sPackageDir} COMPONENT development)

# The pkg-config file finds its prefix from where it lies, so that an installed tree can be moved;
# only folders given as absolute paths are written down as they are.
cmake_path(IS_ABSOLUTE CMAKE_INSTALL_LIBDIR bAbsoluteLibDir)
if(bAbsoluteLibDir)
  set(sPcPrefix ${CMAKE_INSTALL_PREFIX})
else()
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
             BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig
             OUTPUT_VARIABLE sUpwards)
  set(sPcPrefix "\${pcfiledir}/${sUpwards}")
endif()
set(sPcLibDir "\${prefix}")
cmake_path(APPEND sPcLibDir ${CMAKE_INSTALL_LIBDIR})
set(sPcIncludeDir "\${prefix}")
cmake_path(APPEND sPcIncludeDir ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(${PROJECT_SOURCE_DIR}/cmake/qxrecordset.pc.in
               ${PROJECT_BINARY_DIR}/generated/qxrecordset.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/qxrecordset.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# gdb loads the pretty printers by itself: below its folder for such scripts it looks for the path of
# the library. A package is installed elsewhere than it is used.
if(QXRECORDSET_PACKAGES)
  set(sUsedFrom ${CMAKE_INSTALL_FULL_LIBDIR})
else()
  set(sUsedFrom "/\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}")
endif()
install(FILES ${PROJECT_SOURCE_DIR}/tools/gdb/printers.py
        DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${sUsedFrom}
        RENAME libQXRecordSet.so.${PROJECT_VERSION}-gdb.py COMPONENT runtime)
