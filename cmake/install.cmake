include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS fieldline_shared fieldline_static EXPORT fieldline INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET fieldline_tool)
  install(TARGETS fieldline_tool)
endif()

# Of the platform's headers, those that headers for applications include.
install(
  DIRECTORY fieldline
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING
  PATTERN *.h
  PATTERN platform/${FIELDLINE_PLATFORM} EXCLUDE
  REGEX /platform/\(clock|console|digital_inputs|pseudo_terminal|text\)\\.h$ EXCLUDE)

# The library depends on nothing, so the list of targets is the whole package configuration.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/fieldline)
install(EXPORT fieldline NAMESPACE fieldline:: FILE fieldlineConfig.cmake DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fieldlineConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/fieldlineConfigVersion.cmake DESTINATION ${package_dir})

# From where fieldline.pc stands to the prefix, so that an installed tree can be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
           OUTPUT_VARIABLE pc_to_prefix)
configure_file(cmake/fieldline.pc.in ${PROJECT_BINARY_DIR}/fieldline.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fieldline.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
