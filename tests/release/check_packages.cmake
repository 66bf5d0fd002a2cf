# Builds the Debian packages of a release tree with cpack, checks their
# metadata and file lists, unpacks them into a scratch root (dpkg -x), and
# uses what was unpacked: a C program built through find_package(oru) and
# through pkg-config, the tool, and the jar.  Every version on the way (the
# packages', the SONAME, the symbol version node, oru --version, oru.pc, the
# jar's manifest) must come from the one project version.
#   cmake -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DJAVA_CHECK= -DVERSION=
#         -DPKG_CONFIG= -DC_COMPILER= -DREADELF= [-DJAVA=] -P check_packages.cmake
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(root ${WORK_DIR}/root)
string(REGEX MATCH "^([0-9]+)\\.([0-9]+)" _ ${VERSION})
set(major ${CMAKE_MATCH_1})
set(minor ${CMAKE_MATCH_2})
set(debversion ${VERSION}-1)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "failed: ${command}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

function(expect what actual wanted)
  if(NOT "${actual}" STREQUAL "${wanted}")
    message(FATAL_ERROR "${what}:\n  is     '${actual}'\n  wanted '${wanted}'")
  endif()
endfunction()

run(cpack --config ${BUILD_DIR}/CPackConfig.cmake -B ${WORK_DIR}/out)
file(GLOB debs ${WORK_DIR}/out/*.deb)

# Name, version, dependencies and the exact file list of each package.
set(runtime liboru${major})
set(files_${runtime} "./usr/lib/liboru.so.${major}" "./usr/lib/liboru.so.${VERSION}")
set(files_liboru-dev
  "./usr/include/oru/core.h" "./usr/include/oru/oru.h" "./usr/lib/cmake/oru/oruConfig.cmake"
  "./usr/lib/cmake/oru/oruConfigVersion.cmake" "./usr/lib/cmake/oru/oruTargets.cmake" "./usr/lib/liboru.so" "./usr/lib/pkgconfig/oru.pc")
set(files_oru "./usr/bin/oru" "./usr/share/man/man1/oru.1.gz")
set(files_liboru-java "./usr/share/java/tam-oru-${VERSION}.jar" "./usr/share/java/tam-oru.jar")
set(depends_liboru-dev "${runtime} (= ${debversion})")
set(depends_liboru-java "${runtime} (= ${debversion})")
set(names "")
foreach(deb ${debs})
  run(dpkg-deb --field ${deb} Package)
  string(STRIP "${last_output}" name)
  list(APPEND names ${name})
  run(dpkg-deb --field ${deb} Version)
  string(STRIP "${last_output}" v)
  expect("version of ${name}" "${v}" "${debversion}")
  run(dpkg-deb --field ${deb} Depends)
  string(STRIP "${last_output}" depends_${name})
  run(dpkg-deb --field ${deb} Maintainer Section Description)
  if(NOT last_output MATCHES "Maintainer: [^\n]+<[^>]+@" OR NOT last_output MATCHES "Section: [a-z]")
    message(FATAL_ERROR "${name}: maintainer or section missing:\n${last_output}")
  endif()
  # Regular files and links, the directories left out.
  run(dpkg-deb --contents ${deb})
  string(REGEX MATCHALL "[^\n]*\n" lines "${last_output}")
  set(listed "")
  foreach(line ${lines})
    if(line MATCHES " (\\./[^ \n]*[^/ \n])( -> [^\n]*)?\n$")
      list(APPEND listed ${CMAKE_MATCH_1})
    endif()
  endforeach()
  list(SORT listed)
  if(name STREQUAL "liboru-dev")
    # The headers are many: those listed must be there, and only headers.
    foreach(f ${files_liboru-dev})
      if(NOT f IN_LIST listed)
        message(FATAL_ERROR "${name} lacks ${f}: ${listed}")
      endif()
    endforeach()
    set(per_config ${listed})
    list(FILTER per_config INCLUDE REGEX "^\\./usr/lib/cmake/oru/oruTargets-[a-z]+\\.cmake$")
    list(LENGTH per_config count)
    expect("per-configuration CMake target files in ${name}" "${count}" "1")
    list(FILTER listed EXCLUDE REGEX "^\\./usr/include/oru/[a-z0-9]+\\.h$")
    list(REMOVE_ITEM listed ${per_config})
    list(REMOVE_ITEM listed ${files_liboru-dev})
    expect("unexpected files in ${name}" "${listed}" "")
  elseif(DEFINED files_${name})
    expect("files of ${name}" "${listed}" "${files_${name}}")
  else()
    message(FATAL_ERROR "unexpected package ${name} (${deb})")
  endif()
  run(dpkg-deb -x ${deb} ${root})
endforeach()
list(SORT names)
set(wanted_names ${runtime} liboru-dev oru)
if(JAVA)
  list(APPEND wanted_names liboru-java)
endif()
list(SORT wanted_names)
expect("packages" "${names}" "${wanted_names}")

expect("liboru-dev depends" "${depends_liboru-dev}" "${runtime} (= ${debversion})")
if(JAVA)
  expect("liboru-java depends" "${depends_liboru-java}" "${runtime} (= ${debversion})")
endif()
foreach(dep "libc6 " "libstdc\\+\\+6 " "libgcc-s1 ")
  if(NOT depends_${runtime} MATCHES "(^|, )${dep}")
    message(FATAL_ERROR "${runtime} does not depend on ${dep}: ${depends_${runtime}}")
  endif()
endforeach()
if(NOT depends_oru MATCHES "(^|, )${runtime} \\(= ${debversion}\\)" OR NOT depends_oru MATCHES "libc6 ")
  message(FATAL_ERROR "oru depends on: ${depends_oru}")
endif()
# What the library loads and what the package depends on agree: libdw
# (backtraces with file and line) is there exactly when it is linked.
run(${READELF} -d ${root}/usr/lib/liboru.so.${VERSION})
set(dynamic "${last_output}")
if(dynamic MATCHES "NEEDED[^\n]*libdw\\.so" AND NOT depends_${runtime} MATCHES "libdw1")
  message(FATAL_ERROR "liboru loads libdw but ${runtime} does not depend on libdw1")
endif()

# The SONAME and the symbol version node follow the version.
if(NOT dynamic MATCHES "SONAME[^\n]*\\[liboru\\.so\\.${major}\\]")
  message(FATAL_ERROR "SONAME is not liboru.so.${major}:\n${dynamic}")
endif()
run(${READELF} --dyn-syms -W ${root}/usr/lib/liboru.so.${VERSION})
if(NOT last_output MATCHES " oruGetVersion@@ORU_${major}\\.${minor}\n")
  message(FATAL_ERROR "oruGetVersion does not carry the version node ORU_${major}.${minor}")
endif()
# The runtime package tells dpkg-shlibdeps which versions a program built
# against it may run with.
file(GLOB runtime_deb ${WORK_DIR}/out/${runtime}_${debversion}_*.deb)
file(MAKE_DIRECTORY ${WORK_DIR}/control)
run(dpkg-deb -e ${runtime_deb} ${WORK_DIR}/control)
file(READ ${WORK_DIR}/control/shlibs shlibs)
if(NOT shlibs MATCHES "^liboru ${major} ${runtime} \\(>= ${VERSION}\\)")
  message(FATAL_ERROR "shlibs of ${runtime}: ${shlibs}")
endif()

# The tool runs from the unpacked tree and finds the library next to it.
run(${root}/usr/bin/oru --version)
if(NOT last_output MATCHES "^oru ${VERSION} \\(library ${VERSION}\\)\n")
  message(FATAL_ERROR "oru --version printed: ${last_output}")
endif()

# A C program through find_package(oru): the CMake files locate the
# unpacked tree relative to themselves.
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/cmake-build -G Ninja
    -DCMAKE_PREFIX_PATH=${root}/usr -DCMAKE_C_COMPILER=${C_COMPILER})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-build)
run(${WORK_DIR}/cmake-build/consumer)
expect("find_package consumer" "${last_output}" "consumer ok\n")

# The same through pkg-config: oru.pc names /usr, and the sysroot moves it
# into the scratch root.
set(ENV{PKG_CONFIG_LIBDIR} ${root}/usr/lib/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${root})
run(${PKG_CONFIG} --modversion oru)
expect("oru.pc version" "${last_output}" "${VERSION}\n")
file(STRINGS ${root}/usr/lib/pkgconfig/oru.pc prefix REGEX "^prefix=")
expect("oru.pc prefix" "${prefix}" "prefix=/usr")
run(sh -c "${C_COMPILER} ${CONSUMER_DIR}/consumer.c -o ${WORK_DIR}/pc-consumer \
$(${PKG_CONFIG} --cflags --libs oru)")
set(ENV{LD_LIBRARY_PATH} ${root}/usr/lib)
run(${WORK_DIR}/pc-consumer)
expect("pkg-config consumer" "${last_output}" "consumer ok\n")

# The jar: its manifest carries the version, and its classes work with the
# unpacked library.
if(JAVA)
  set(jar ${root}/usr/share/java/tam-oru.jar)
  file(MAKE_DIRECTORY ${WORK_DIR}/jar)
  run(${CMAKE_COMMAND} -E chdir ${WORK_DIR}/jar ${CMAKE_COMMAND} -E tar xf ${jar})
  file(READ ${WORK_DIR}/jar/META-INF/MANIFEST.MF manifest)
  if(NOT manifest MATCHES "\nImplementation-Version: ${VERSION}\r?\n")
    message(FATAL_ERROR "the jar's manifest:\n${manifest}")
  endif()
  run(${JAVA} -Djava.library.path=${root}/usr/lib -cp ${jar} ${JAVA_CHECK})
  expect("Java check" "${last_output}" "3.30 ${VERSION}\n")
endif()
message(STATUS "${names} ${debversion}: contents, dependencies, versions and use checked")
