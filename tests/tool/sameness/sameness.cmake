# Runs the sameness script (commands.txt) with one or two builds of the oru
# tool and compares what they print.
#
#   cmake -DTOOL=<oru> [-DEMULATOR=<runner|args>] -DWORK_DIR=<scratch>
#         [-DREFERENCE_TOOL=<oru of another platform>] -P sameness.cmake
#
# Each command's transcript holds the command, its standard output, its
# standard error, its exit status and, for @OUT, the bytes it wrote in
# hexadecimal; carriage returns before line feeds are dropped.  A command
# that ends with another exit status than the script expects fails the run.
# With REFERENCE_TOOL the same script runs with that tool (natively) and the
# two transcripts must be equal byte for byte.
cmake_minimum_required(VERSION 3.25)

set(script_dir ${CMAKE_CURRENT_LIST_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

# Writes the transcript of the script run with `tool` (through `runner`,
# possibly empty) to `out`; the failures are appended to the variable
# named by `failures_var`.
function(transcript tool runner out failures_var)
  file(STRINGS ${script_dir}/commands.txt lines ENCODING UTF-8)
  set(text "")
  set(failures "")
  set(scratch ${WORK_DIR}/out.bin)
  foreach(line IN LISTS lines)
    if(line MATCHES "^[ \t]*(#|$)")
      continue()
    endif()
    if(NOT line MATCHES "^([0-9]+) (.*)$")
      message(FATAL_ERROR "commands.txt: not '<status> <arguments>': ${line}")
    endif()
    set(expected ${CMAKE_MATCH_1})
    set(shown ${CMAKE_MATCH_2})
    separate_arguments(args UNIX_COMMAND "${shown}")
    set(has_out FALSE)
    if("@OUT" IN_LIST args)
      set(has_out TRUE)
      file(REMOVE ${scratch})
      list(TRANSFORM args REPLACE "^@OUT$" "${scratch}")
    endif()
    # Files rather than pipes: a helper the program leaves running (such as
    # Wine's server) would hold a pipe open after the program has ended.
    execute_process(COMMAND ${runner} ${tool} ${args}
      WORKING_DIRECTORY ${script_dir}
      RESULT_VARIABLE status OUTPUT_FILE ${WORK_DIR}/stdout.txt ERROR_FILE ${WORK_DIR}/stderr.txt)
    file(READ ${WORK_DIR}/stdout.txt stdout)
    file(READ ${WORK_DIR}/stderr.txt stderr)
    string(REPLACE "\r\n" "\n" stdout "${stdout}")
    string(REPLACE "\r\n" "\n" stderr "${stderr}")
    string(APPEND text "$ oru ${shown}\n${stdout}")
    if(NOT stderr STREQUAL "")
      string(APPEND text "[stderr]\n${stderr}")
    endif()
    string(APPEND text "[exit ${status}]\n")
    if(has_out AND EXISTS ${scratch})
      file(READ ${scratch} hex HEX)
      string(REGEX REPLACE "([0-9a-f]{64})" "\\1\n" hex "${hex}")
      string(APPEND text "[output]\n${hex}\n")
    endif()
    if(NOT status STREQUAL expected)
      string(APPEND failures "  oru ${shown}: exit status ${status}, expected ${expected}\n")
    endif()
  endforeach()
  file(WRITE ${out} "${text}")
  set(${failures_var} "${${failures_var}}${failures}" PARENT_SCOPE)
endfunction()

# A cross build compares with a native build; without one there is nothing
# to compare with.
if(REFERENCE_TOOL AND NOT EXISTS "${REFERENCE_TOOL}")
  message("SKIPPED: the reference tool ${REFERENCE_TOOL} is not built")
  return()
endif()
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")

set(failures "")
transcript("${TOOL}" "${EMULATOR}" ${WORK_DIR}/transcript.txt failures)
if(REFERENCE_TOOL)
  transcript("${REFERENCE_TOOL}" "" ${WORK_DIR}/reference.txt failures)
endif()
if(NOT failures STREQUAL "")
  message(FATAL_ERROR "unexpected exit statuses:\n${failures}")
endif()

if(REFERENCE_TOOL)
  file(READ ${WORK_DIR}/transcript.txt ours)
  file(READ ${WORK_DIR}/reference.txt theirs)
  if(NOT ours STREQUAL theirs)
    find_program(diff_program diff)
    if(diff_program)
      execute_process(COMMAND ${diff_program} -u reference.txt transcript.txt
        WORKING_DIRECTORY ${WORK_DIR} OUTPUT_VARIABLE shown)
    else()
      set(shown "(compare ${WORK_DIR}/reference.txt and transcript.txt)")
    endif()
    message(FATAL_ERROR "the transcripts differ (- reference, + this build):\n${shown}")
  endif()
  message(STATUS "same transcript as ${REFERENCE_TOOL}")
endif()
