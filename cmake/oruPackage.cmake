# Debian packages of the install components (cmake/oruInstall.cmake), built
# by `cpack` in a release tree (the `package` test runs it):
#
#   liboru0       Runtime      the shared library liboru.so.0.1.0 and its
#                              SONAME link liboru.so.0
#   liboru-dev    Development  headers, liboru.so, CMake package, oru.pc;
#                              needs exactly the same liboru0
#   oru           Tool         the oru tool and its manual page
#   liboru-java   Java         tam-oru.jar; the natives live in liboru0
#
# Every version comes from the project version.  The runtime package's name
# carries the SONAME's number (Debian's rule), so a new major version is a
# new package that installs next to the old one.
set(ORU_PACKAGE_MAINTAINER "oru developers <dev@oru.invalid>"
  CACHE STRING "The Maintainer field of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME oru)
set(CPACK_PACKAGE_VENDOR oru)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${ORU_PACKAGE_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/oruCPackOptions.cmake)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Runtime Development Tool)
if(TARGET oru_java)
  list(APPEND CPACK_COMPONENTS_ALL Java)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${ORU_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(ORU_DEB_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(ORU_DEB_RUNTIME liboru${PROJECT_VERSION_MAJOR})

# The runtime package's dependencies are what the library loads (libc6,
# libstdc++6, libgcc-s1, ...), found by dpkg-shlibdeps from the dpkg
# database, offline.  The tool's come from it too, with its own library
# (not yet known to dpkg) added by hand.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${ORU_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# The first line of each description is the package's summary.
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "portable runtime library for native applications
oru gives C, C++ and Java programs one exactly specified set of operations
over what differs between operating systems: result codes, threads, time,
files and paths, checksums and hashes, character sets and Unicode, locale
data, and IEEE 754 decimal floating point.
.
This package holds the shared library.")

# While the major version is 0 a minor version may change the interface and
# its symbol version node (ORU_0.1) with it, so programs built against this
# release need this minor version: the shlibs file says so for the packages
# that dpkg-shlibdeps looks at.  ldconfig runs after (un)installing.
math(EXPR ORU_NEXT_MINOR_NUMBER "${PROJECT_VERSION_MINOR} + 1")
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(ORU_SHLIBS_DEPENDS
    "${ORU_DEB_RUNTIME} (>= ${PROJECT_VERSION}), ${ORU_DEB_RUNTIME} (<< 0.${ORU_NEXT_MINOR_NUMBER}~)")
else()
  set(ORU_SHLIBS_DEPENDS "${ORU_DEB_RUNTIME} (>= ${PROJECT_VERSION})")
endif()
file(WRITE ${PROJECT_BINARY_DIR}/deb-runtime/shlibs
  "liboru ${PROJECT_VERSION_MAJOR} ${ORU_SHLIBS_DEPENDS}\n")
file(WRITE ${PROJECT_BINARY_DIR}/deb-runtime/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${PROJECT_BINARY_DIR}/deb-runtime/shlibs ${PROJECT_BINARY_DIR}/deb-runtime/triggers)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liboru-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${ORU_DEB_RUNTIME} (= ${ORU_DEB_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "development files of the oru runtime library
The C headers of oru (plain C99, usable from C++), the link for -loru,
the CMake package (find_package(oru) gives the target oru::oru) and the
pkg-config file oru.pc.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME oru)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${ORU_DEB_RUNTIME} (= ${ORU_DEB_VERSION})")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_COMPONENT_TOOL_DESCRIPTION "command-line tool of the oru runtime library
oru puts the library in a user's hands: checksums, result codes, paths and
file information, character sets and conversion, Unicode characters,
normalization and case mapping, message catalogs, locale names, a decimal
calculator, shared objects and backtraces.  See oru(1).")

set(CPACK_DEBIAN_JAVA_PACKAGE_NAME liboru-java)
set(CPACK_DEBIAN_JAVA_PACKAGE_SECTION java)
set(CPACK_DEBIAN_JAVA_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_JAVA_PACKAGE_DEPENDS "${ORU_DEB_RUNTIME} (= ${ORU_DEB_VERSION})")
set(CPACK_COMPONENT_JAVA_DESCRIPTION "Java bindings of the oru runtime library
tam-oru.jar: tam.oru.ORU, tam.oru.ORUException and the decimal128 class
tam.oru.ieee754.Decimal128.  The natives are in the shared library, which
the classes load by its name, oru.")

include(CPack)

# What cpack installs, built by one target: `cmake --build --preset package`.
add_custom_target(oru_package_inputs)
foreach(target oru oru_tool oru_java oru_manpage)
  if(TARGET ${target})
    add_dependencies(oru_package_inputs ${target})
  endif()
endforeach()
