# Fails unless every dynamic symbol the library defines belongs to the public
# interface: oru..., _oru..., getopt and its variables, Java_tam_oru_...,
# each carrying the library's symbol version ORU_0.1 as its default version
# (name@@ORU_0.1), so that references bound to the C library's getopt and
# optind never resolve to the library's.
# Names in the library's internal style (oru_ plus lower case) must not leak.
# Also checks that the byte-order pairs and the tagged allocator names are one
# symbol under two names, not wrappers.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE listing RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()

string(REPLACE "\n" ";" lines "${listing}")
set(bad "")
set(nodes "")
set(unversioned "")
set(count 0)
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^([0-9a-fA-F]+) ([A-Za-z]) ([^ @]+)(@*)([^ ]*)$")
    continue()
  endif()
  set(address ${CMAKE_MATCH_1})
  set(kind ${CMAKE_MATCH_2})
  set(name ${CMAKE_MATCH_3})
  set(version "${CMAKE_MATCH_4}${CMAKE_MATCH_5}")
  if(kind STREQUAL "A")  # version nodes
    list(APPEND nodes ${name})
    continue()
  endif()
  if(NOT version STREQUAL "@@ORU_0.1")
    list(APPEND unversioned "${name}${version}")
  endif()
  math(EXPR count "${count} + 1")
  set(address_of_${name} ${address})
  if(name MATCHES "^oru_")
    list(APPEND bad ${name})
  elseif(NOT name MATCHES "^(oru|_oru|Java_tam_oru_)" AND
         NOT name MATCHES "^(getopt|optarg|optind|opterr|optopt)$")
    list(APPEND bad ${name})
  endif()
endforeach()

if(bad)
  list(JOIN bad "\n  " text)
  message(FATAL_ERROR "symbols outside the interface:\n  ${text}")
endif()
if(NOT nodes STREQUAL "ORU_0.1")
  message(FATAL_ERROR "version nodes '${nodes}' instead of ORU_0.1 alone")
endif()
if(unversioned)
  list(JOIN unversioned "\n  " text)
  message(FATAL_ERROR "symbols without the default version ORU_0.1:\n  ${text}")
endif()
foreach(name getopt optarg optind opterr optopt)
  if(NOT DEFINED address_of_${name})
    message(FATAL_ERROR "${name} is not exported")
  endif()
endforeach()
if(count LESS 10)
  message(FATAL_ERROR "only ${count} symbols: is the export list broken?")
endif()

foreach(pair
    oruBE2Host16:oruHost2BE16 oruBE2Host32:oruHost2BE32 oruBE2Host64:oruHost2BE64
    oruLE2Host16:oruHost2LE16 oruLE2Host32:oruHost2LE32 oruLE2Host64:oruHost2LE64
    oruMalloc:_oru_malloc_tagged oruCalloc:_oru_calloc_tagged oruFree:_oru_free_tagged)
  string(REPLACE ":" ";" names ${pair})
  list(GET names 0 first)
  list(GET names 1 second)
  if(NOT DEFINED address_of_${first} OR NOT DEFINED address_of_${second})
    message(FATAL_ERROR "${first} or ${second} is not exported")
  endif()
  if(NOT address_of_${first} STREQUAL address_of_${second})
    message(FATAL_ERROR "${second} is not an alias of ${first}")
  endif()
endforeach()
if(address_of_oruRealloc STREQUAL address_of__oru_realloc_tagged)
  message(FATAL_ERROR "_oru_realloc_tagged must differ from oruRealloc")
endif()
message(STATUS "${count} exported symbols, all in the interface")
