# The reference documentation of the public headers: `cmake --build <dir>
# --target docs` writes <dir>/docs/html/index.html.  Only when Doxygen is
# found; the `reference_docs` test (label docs) runs it with warnings as
# errors, so an undocumented public function, type, macro or constant
# fails the tests.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "Doxygen not found: no docs target")
  return()
endif()
set(ORU_DOCS_OUTPUT ${PROJECT_BINARY_DIR}/docs)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${ORU_DOCS_OUTPUT}/Doxyfile @ONLY)
file(GLOB ORU_PUBLIC_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/oru/*.h)
add_custom_command(OUTPUT ${ORU_DOCS_OUTPUT}/html/index.html
  COMMAND ${DOXYGEN_EXECUTABLE} ${ORU_DOCS_OUTPUT}/Doxyfile
  DEPENDS ${ORU_DOCS_OUTPUT}/Doxyfile ${ORU_PUBLIC_HEADERS} ${PROJECT_SOURCE_DIR}/docs/mainpage.md
  WORKING_DIRECTORY ${ORU_DOCS_OUTPUT}
  COMMENT "Reference documentation (Doxygen)" VERBATIM)
add_custom_target(docs DEPENDS ${ORU_DOCS_OUTPUT}/html/index.html)
