# Installs the library, its headers, a CMake package (find_package(oru)
# gives the target oru::oru) and a pkg-config file.  Every file belongs to
# one component, the unit of a binary package (cmake/oruPackage.cmake):
# Runtime (the shared library), Development (headers, the unversioned
# link, the CMake and pkg-config files), Tool (the oru tool and its manual
# page) and Java (the jar).
include(CMakePackageConfigHelpers)

set(ORU_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/oru)

install(TARGETS oru EXPORT oruTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/oru DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development
  FILES_MATCHING PATTERN "*.h")
install(EXPORT oruTargets NAMESPACE oru:: DESTINATION ${ORU_INSTALL_CMAKEDIR}
  COMPONENT Development)

configure_package_config_file(cmake/oruConfig.cmake.in
  ${PROJECT_BINARY_DIR}/oruConfig.cmake
  INSTALL_DESTINATION ${ORU_INSTALL_CMAKEDIR})
# While the major version is 0 every minor version may break the interface,
# so find_package(oru 0.1) accepts 0.1.x only.  From 1.0 on this becomes
# SameMajorVersion, with the SONAME following the major version.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/oruConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/oruConfig.cmake ${PROJECT_BINARY_DIR}/oruConfigVersion.cmake
  DESTINATION ${ORU_INSTALL_CMAKEDIR} COMPONENT Development)

# The pkg-config file names the prefix the tree is installed to, which is
# known only at install time (cmake --install --prefix may choose another):
# the file is configured here with the prefix left open and finished by the
# install step.
set(ORU_PC_PREFIX "@ORU_PC_PREFIX@")
configure_file(cmake/oru.pc.in ${PROJECT_BINARY_DIR}/oru.pc.in @ONLY)
install(CODE "
  set(ORU_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  configure_file(\"${PROJECT_BINARY_DIR}/oru.pc.in\" \"${PROJECT_BINARY_DIR}/oru.pc\" @ONLY)
" COMPONENT Development)
install(FILES ${PROJECT_BINARY_DIR}/oru.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT Development)

# The command-line tool goes to bin/ and finds the library relative to
# itself, so the installed tree can be moved.
if(TARGET oru_tool)
  file(RELATIVE_PATH ORU_BIN_TO_LIB
    /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(oru_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${ORU_BIN_TO_LIB}")
  install(TARGETS oru_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tool)
endif()

# The Java bindings' jar goes to share/java, next to the system's jars.
if(TARGET oru_java)
  include(UseJava)
  install_jar(oru_java DESTINATION ${CMAKE_INSTALL_DATADIR}/java COMPONENT Java)
endif()

include(cmake/oruPackage.cmake)
include(cmake/oruDocs.cmake)
