# Renders the manual page with every groff warning on; any output on
# standard error (a warning, an unknown macro, a line that cannot be set)
# fails.
#   cmake -DGROFF=groff -DMANPAGE=oru.1 -P check_manpage.cmake
execute_process(COMMAND ${GROFF} -man -Tutf8 -ww -z ${MANPAGE}
  RESULT_VARIABLE status ERROR_VARIABLE err)
if(NOT status EQUAL 0 OR NOT err STREQUAL "")
  message(FATAL_ERROR "groff (status ${status}) on ${MANPAGE}:\n${err}")
endif()
