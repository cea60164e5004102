# cmake -DPROGRAM=... -DEXPECTED=... -P RunExample.cmake
# Fails unless PROGRAM (a list: arguments may follow) ends with status 0 and writes exactly the text of the file EXPECTED.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE sOutput RESULT_VARIABLE sResult)
if(NOT sResult STREQUAL "0")
  message(FATAL_ERROR "${PROGRAM} ended with ${sResult}")
endif()
file(READ ${EXPECTED} sExpected)
if(NOT sOutput STREQUAL sExpected)
  message(FATAL_ERROR "Expected:\n${sExpected}\nWritten:\n${sOutput}")
endif()
