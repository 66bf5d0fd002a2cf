# A short tour of the `oru` tool on real input (this source tree), run by
# `cmake --build --preset run` (the quick start's demo).
#   cmake -DORU=<tool> -DSOURCE_DIR=<tree> -DWORK_DIR=<scratch> [-DEXAMPLE=<example>] -P demo.cmake
file(MAKE_DIRECTORY ${WORK_DIR})
file(RELATIVE_PATH sums ${SOURCE_DIR} ${WORK_DIR}/headers.md5)

# Runs `oru ARGS...` and expects the exit status `expected`.
function(run_step expected)
  string(JOIN " " shown ${ARGN})
  message("\n$ oru ${shown}")
  execute_process(COMMAND ${ORU} ${ARGN} WORKING_DIRECTORY ${SOURCE_DIR} RESULT_VARIABLE status)
  if(NOT status EQUAL expected)
    message(FATAL_ERROR "oru ${shown}: exit status ${status}, expected ${expected}")
  endif()
  if(NOT expected EQUAL 0)
    message("(exit status ${status})")
  endif()
endfunction()

function(step)
  run_step(0 ${ARGN})
endfunction()

step(--version)
step(info)
step(time)
step(hash README.md CMakeLists.txt)
step(hash -a crc32 README.md CMakeLists.txt)
step(hash -a crc64 README.md)
step(hash -o ${sums} include/oru/core.h include/oru/hash.h include/oru/time.h)
step(hash -c ${sums})
run_step(1 hash README.md no-such-file)
step(error 0x80070057 0x96230003 0x9623001C)
step(error --errno=ENOENT -e EACCES -e ENOTDIR)
step(error -w 2 -w 5 --win32=2403)
step(random --seed 42 --count 3)

if(EXAMPLE)
  message("\n$ oru_example   (the example program: the library from C)")
  execute_process(COMMAND ${EXAMPLE} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "the example failed: ${status}")
  endif()
endif()
