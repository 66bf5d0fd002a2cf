# Line and branch coverage of the library's own code (the `coverage` preset).
#
# The preset compiles everything with gcc's --coverage; running the test
# suite leaves .gcda counters next to the objects, and the `coverage` target
# turns them into an HTML report and a text summary with gcovr:
#
#   cmake --workflow --preset coverage
#   # build/coverage/coverage/index.html: the report, file by file
#   # build/coverage/coverage/lines.txt, branches.txt: the text summaries
#
# The counters add up over runs; delete build/coverage to start afresh.
#
# Included at the top of tests/CMakeLists.txt: the test programs defined
# after it get the _exit of oruCoverageExit.c.
#
# Counted: src/ (sources and internal headers).  Not counted: the generated
# tables, the tool, the tests, the examples.  Branches the compiler adds for
# exceptions and branches it proves unreachable are left out, so the branch
# figure speaks about the code's own decisions.
option(ORU_COVERAGE "Add the `coverage` report target (needs a --coverage build)" OFF)
if(NOT ORU_COVERAGE)
  return()
endif()

# Children that tests fork and end with _exit write their counters too.
add_library(oru_coverage_exit OBJECT ${CMAKE_CURRENT_LIST_DIR}/oruCoverageExit.c)
set_target_properties(oru_coverage_exit PROPERTIES POSITION_INDEPENDENT_CODE ON)
link_libraries(
  "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:oru_coverage_exit>>")

find_program(ORU_GCOVR gcovr REQUIRED)
set(ORU_COVERAGE_DIR ${PROJECT_BINARY_DIR}/coverage)
add_custom_target(coverage
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${ORU_COVERAGE_DIR}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${ORU_COVERAGE_DIR}
  COMMAND ${ORU_GCOVR}
    --root ${PROJECT_SOURCE_DIR}
    --object-directory ${PROJECT_BINARY_DIR}
    --filter ${PROJECT_SOURCE_DIR}/src/
    --exclude ".*_tables\\.cpp$"
    --exclude ".*/oru_l10n_pool\\.cpp$"
    --exclude-throw-branches
    --exclude-unreachable-branches
    --gcov-ignore-parse-errors
    -j 2
    --html-details ${ORU_COVERAGE_DIR}/index.html
    --html-title "oru coverage"
    --json ${ORU_COVERAGE_DIR}/coverage.json
    --txt ${ORU_COVERAGE_DIR}/lines.txt
  # The branch table from the same counts, without running gcov again.
  COMMAND ${ORU_GCOVR} --root ${PROJECT_SOURCE_DIR}
    --add-tracefile ${ORU_COVERAGE_DIR}/coverage.json
    --branches --txt ${ORU_COVERAGE_DIR}/branches.txt --print-summary
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
  COMMENT "Coverage report in ${ORU_COVERAGE_DIR}"
  VERBATIM)
