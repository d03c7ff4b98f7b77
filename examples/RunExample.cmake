# Runs an example against a store of its own, in a temporary directory, and looks at what it says and how it ends.
#
#   cmake -D PROGRAM=... -D SQSTORAGE=... -D "HOST=Company/Product" -D EXPECTED=... -P RunExample.cmake
execute_process(COMMAND mktemp -d OUTPUT_VARIABLE place OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(MAKE_DIRECTORY "${place}/lock")
set(ENV{SQSTORAGE_REGISTRY_DIR} "${place}/registry")
set(ENV{SQSTORAGE_STATE_DIR} "${place}/state")
set(ENV{FIREBIRD_LOCK} "${place}/lock")
# The database engine keeps what it allocated, and synchronises in ways that no sanitizer sees.
file(WRITE "${place}/leaks" "leak:libfbclient\n")
file(WRITE "${place}/races" "race:libEngine12\nrace:libfbclient\n")
set(ENV{LSAN_OPTIONS} "print_suppressions=0:suppressions=${place}/leaks")
set(ENV{TSAN_OPTIONS} "detect_deadlocks=0:suppressions=${place}/races")

set(problem "")
execute_process(
  COMMAND "${SQSTORAGE}" create --database "${place}/store.fdb" --dictionary "${place}/dictionary.csv" --host "${HOST}"
  TIMEOUT 120 ERROR_VARIABLE errors OUTPUT_QUIET RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  set(problem "no store was made: ${errors}")
else()
  # One that hangs is ended here, and does not outlive the test.
  execute_process(COMMAND "${PROGRAM}" TIMEOUT 120
    OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE status)
  if(NOT status EQUAL 0 OR NOT output STREQUAL EXPECTED)
    set(problem "${PROGRAM} ended with ${status} and said \"${output}\": ${errors}")
  endif()
endif()
file(REMOVE_RECURSE "${place}")
if(problem)
  message(FATAL_ERROR "${problem}")
endif()
