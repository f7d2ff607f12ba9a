# Runs PROGRAM (with ARGS, if given) and fails unless it exits 0 and prints exactly the text in EXPECTED.
execute_process(COMMAND ${PROGRAM} ${ARGS} OUTPUT_VARIABLE output RESULT_VARIABLE result)
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} exited with ${result}")
endif()
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "output differs from ${EXPECTED}:\n${output}")
endif()
