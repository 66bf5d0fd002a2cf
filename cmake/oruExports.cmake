# The library's export list, read from the public headers: every name
# declared with ORU_API in include/oru/*.h, functions and variables alike.
# The headers are the one place a name is made public; the ELF version script
# and the Windows module-definition file are both written from this list, and
# the export tests compare the built library against it, so no second list is
# kept by hand.
#
# The Java natives (Java_tam_oru_...) are declared by the headers javac
# writes, not by ours; the ELF version script matches them by pattern (on
# Windows JNIEXPORT exports them by itself).

# oru_read_export_names(<out-var> <data-out-var> <header>...): the ORU_API
# names, sorted, and those of them that name variables.
function(oru_read_export_names out_var data_out_var)
  set(names "")
  set(data_names "")
  foreach(header IN LISTS ARGN)
    file(READ ${header} text)
    # Drop comments, then preprocessor lines (the definition of ORU_API).
    while(TRUE)
      string(FIND "${text}" "/*" start)
      if(start EQUAL -1)
        break()
      endif()
      string(SUBSTRING "${text}" ${start} -1 rest)
      string(FIND "${rest}" "*/" length)
      if(length EQUAL -1)
        message(FATAL_ERROR "${header}: unterminated comment")
      endif()
      math(EXPR length "${length} + 2")
      string(SUBSTRING "${rest}" ${length} -1 rest)
      string(SUBSTRING "${text}" 0 ${start} head)
      set(text "${head} ${rest}")
    endwhile()
    string(REGEX REPLACE "//[^\n]*" "" text "${text}")
    string(REGEX REPLACE "(^|\n)[ \t]*#[^\n]*" "\\1" text "${text}")
    # A declaration runs from ORU_API to its parameter list or its ';'; the
    # declared name is the last identifier before that.
    # ';' separates CMake list items: it becomes '$', which C never uses.
    string(REPLACE ";" "$" text "${text}")
    string(REGEX MATCHALL "ORU_API[^$({]+[$({]" declarations "${text}")
    foreach(declaration IN LISTS declarations)
      set(is_data FALSE)
      if(declaration MATCHES "[$]$")
        set(is_data TRUE)
      endif()
      string(REGEX REPLACE ".$" "" declaration "${declaration}")
      string(REGEX MATCH "[A-Za-z_][A-Za-z0-9_]*[^A-Za-z0-9_]*$" name "${declaration}")
      string(REGEX REPLACE "[^A-Za-z0-9_]+$" "" name "${name}")
      if(name STREQUAL "" OR name STREQUAL "ORU_API")
        message(FATAL_ERROR "${header}: cannot read the name in '${declaration}'")
      endif()
      list(APPEND names ${name})
      if(is_data)
        list(APPEND data_names ${name})
      endif()
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES names)
  list(SORT names)
  set(${out_var} ${names} PARENT_SCOPE)
  set(${data_out_var} ${data_names} PARENT_SCOPE)
endfunction()

# oru_write_export_files(<dir>): writes <dir>/oru_exports.txt (one name a
# line), <dir>/oru.map (the ELF version script) and <dir>/oru.def (the
# Windows module-definition file), and sets ORU_EXPORTS_FILE, ORU_EXPORT_MAP
# and ORU_EXPORT_DEF in the caller's scope.  CMake runs again when a header
# changes.
function(oru_write_export_files dir)
  file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/oru/*.h)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${headers})
  oru_read_export_names(names data_names ${headers})
  list(LENGTH names count)
  if(count LESS 10)
    message(FATAL_ERROR "only ${count} exported names found in the headers")
  endif()

  list(JOIN names "\n" listing)
  file(CONFIGURE OUTPUT ${dir}/oru_exports.txt CONTENT "${listing}\n" @ONLY)

  # Every export carries the version node ORU_<major>.<minor>.  A reference
  # bound to one of these names at link time records the node, and the
  # dynamic loader then binds it only to this library; references bound
  # elsewhere (the C library's getopt and optind) never reach it, whatever
  # the load order.
  set(node "ORU_${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
  list(JOIN names ";\n    " map_names)
  file(CONFIGURE OUTPUT ${dir}/oru.map CONTENT
"/* Written by CMake from the ORU_API declarations of include/oru. */
${node} {
  global:
    ${map_names};
    Java_tam_oru_*;
  local:
    *;
};
" @ONLY)

  # Variables are marked DATA, so the import library has no code stub for
  # them (users reach them through __imp_<name>, as __declspec(dllimport)
  # declares them).
  set(def_lines "")
  foreach(name IN LISTS names)
    if(name IN_LIST data_names)
      list(APPEND def_lines "${name} DATA")
    else()
      list(APPEND def_lines "${name}")
    endif()
  endforeach()
  list(JOIN def_lines "\n  " def_names)
  file(CONFIGURE OUTPUT ${dir}/oru.def CONTENT
"; Written by CMake from the ORU_API declarations of include/oru.
LIBRARY oru.dll
EXPORTS
  ${def_names}
" @ONLY)

  set(ORU_EXPORTS_FILE ${dir}/oru_exports.txt PARENT_SCOPE)
  set(ORU_EXPORT_MAP ${dir}/oru.map PARENT_SCOPE)
  set(ORU_EXPORT_DEF ${dir}/oru.def PARENT_SCOPE)
  set(ORU_EXPORT_NODE ${node} PARENT_SCOPE)
endfunction()
