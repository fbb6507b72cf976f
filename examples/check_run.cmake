# cmake -D STATUS=<exit status> -D PATTERN=<regex> -P check_run.cmake -- <command> [argument...]
# Runs the command; fails unless it ends with that status and prints something that matches.

set(command)
set(own TRUE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE ${last})
  if(NOT own)
    list(APPEND command "${CMAKE_ARGV${i}}")
  elseif(CMAKE_ARGV${i} STREQUAL "--")
    set(own FALSE)
  endif()
endforeach()

execute_process(COMMAND ${command} RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
if(NOT status STREQUAL STATUS)
  message(FATAL_ERROR "exit status ${status} instead of ${STATUS}:\n${text}")
endif()
if(NOT text MATCHES "${PATTERN}")
  message(FATAL_ERROR "nothing matches ${PATTERN}:\n${text}")
endif()
