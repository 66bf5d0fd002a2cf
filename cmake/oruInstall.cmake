# Installs the library, its headers, a CMake package (find_package(oru)
# gives the target oru::oru) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ORU_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/oru)

install(TARGETS oru EXPORT oruTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/oru DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(EXPORT oruTargets NAMESPACE oru:: DESTINATION ${ORU_INSTALL_CMAKEDIR})

configure_package_config_file(cmake/oruConfig.cmake.in
  ${PROJECT_BINARY_DIR}/oruConfig.cmake
  INSTALL_DESTINATION ${ORU_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/oruConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/oruConfig.cmake ${PROJECT_BINARY_DIR}/oruConfigVersion.cmake
  DESTINATION ${ORU_INSTALL_CMAKEDIR})

# pkg-config paths are written relative to ${prefix} so the installed tree
# can be moved.
file(RELATIVE_PATH ORU_PC_TO_PREFIX
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/oru.pc.in ${PROJECT_BINARY_DIR}/oru.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/oru.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The command-line tool goes to bin/ and finds the library relative to
# itself, so the installed tree can be moved.
if(TARGET oru_tool)
  file(RELATIVE_PATH ORU_BIN_TO_LIB
    /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(oru_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${ORU_BIN_TO_LIB}")
  install(TARGETS oru_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
