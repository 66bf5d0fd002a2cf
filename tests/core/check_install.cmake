# The README's consumer recipes: installs the built library into a scratch
# prefix, then builds and runs a C program against it twice, through
# find_package(oru) and through pkg-config, with the commands the README
# shows.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "failed: ${command}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=${SANITIZE}")
endif()

# find_package
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER}
    "-DCMAKE_C_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
run(${WORK_DIR}/cmake-build/consumer)
if(NOT last_output STREQUAL "consumer ok\n")
  message(FATAL_ERROR "find_package consumer printed: ${last_output}")
endif()
# While the major version is 0, another minor version is incompatible.
execute_process(COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build-0.2
    -G Ninja -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER} -DORU_WANTED=0.2
  RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
if(status EQUAL 0)
  message(FATAL_ERROR "find_package(oru 0.2) accepted version 0.1")
endif()

# pkg-config
if(NOT PKG_CONFIG)
  message(STATUS "pkg-config not found: that half is skipped")
  return()
endif()
file(GLOB pc_file ${prefix}/lib*/pkgconfig/oru.pc ${prefix}/lib/*/pkgconfig/oru.pc)
if(NOT pc_file)
  message(FATAL_ERROR "oru.pc was not installed")
endif()
list(GET pc_file 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
run(${PKG_CONFIG} --variable=includedir oru)
if(NOT last_output STREQUAL "${prefix}/include\n")
  message(FATAL_ERROR "pkg-config gives the include directory as ${last_output}")
endif()
# The README's command, run by the shell as written there.
set(ENV{CFLAGS} "${flags}")
run(sh -c "${C_COMPILER} $CFLAGS ${CONSUMER_DIR}/consumer.c -o ${WORK_DIR}/pc-consumer \
$(${PKG_CONFIG} --cflags --libs oru) -Wl,-rpath,$(${PKG_CONFIG} --variable=libdir oru)")
run(${WORK_DIR}/pc-consumer)
if(NOT last_output STREQUAL "consumer ok\n")
  message(FATAL_ERROR "pkg-config consumer printed: ${last_output}")
endif()
message(STATUS "installed package works through find_package and pkg-config")
