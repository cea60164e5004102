# Run by cpack when the packages are made.
execute_process(COMMAND ${CPACK_QXRECORDSET_PACKAGING}/finish.sh ${CPACK_PACKAGE_FILES}
                COMMAND_ERROR_IS_FATAL ANY)
