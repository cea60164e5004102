# Read by cpack when it begins.

# The program by which cpack finds out what a package depends on. Ours knows 32-bit programs that
# were built on a 64-bit system.
set(SHLIBDEPS_EXECUTABLE ${CPACK_QXRECORDSET_PACKAGING}/shlibdeps.sh)
set(ENV{CROSS} "${CPACK_QXRECORDSET_CROSS}")

# Each package has a summary of its own; cpack would put the project's in front of it.
unset(CPACK_PACKAGE_DESCRIPTION_SUMMARY)
