include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The parts, which packaging/debian.cmake makes packages of: library, development, tools and service.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
install(
  TARGETS fieldline_shared EXPORT fieldline
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  RUNTIME COMPONENT library
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS fieldline_static EXPORT fieldline)
if(TARGET fieldline_tool)
  install(TARGETS fieldline_tool COMPONENT tools)
  install(FILES packaging/fieldline.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(
    FILES packaging/fieldline.bash-completion
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME fieldline
    COMPONENT tools)
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/fieldline-tools)
  install(FILES docs/commissioning.md docs/alarms.md docs/scenarios.md DESTINATION ${documents} COMPONENT tools)
  install(FILES packaging/60-fieldline.rules examples/site.json DESTINATION ${documents}/examples COMPONENT tools)
  install(DIRECTORY examples/scenarios DESTINATION ${documents}/examples COMPONENT tools)
endif()
if(TARGET fieldlined)
  install(TARGETS fieldlined COMPONENT service)
  install(FILES packaging/fieldlined.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT service)
  install(
    FILES packaging/fieldlined.bash-completion
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME fieldlined
    COMPONENT service)
  install(FILES packaging/fieldlined.service DESTINATION lib/systemd/system COMPONENT service)
  install(
    FILES packaging/fieldlined.sysusers
    DESTINATION lib/sysusers.d
    RENAME fieldlined.conf
    COMPONENT service)
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/fieldlined)
  install(FILES docs/service.md docs/api.md docs/mqtt.md docs/fleet.md docs/alarms.md DESTINATION ${documents} COMPONENT service)
  install(FILES examples/fieldlined.json DESTINATION ${documents}/examples COMPONENT service)
endif()

# Of the platform's headers, those that headers for applications include.
install(
  DIRECTORY fieldline
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING
  PATTERN *.h
  PATTERN platform/${FIELDLINE_PLATFORM} EXCLUDE
  REGEX /platform/\(clock|connection|console|device_path|digital_inputs|directory_lock|local_time|output_file|path_buffer|pseudo_terminal|service_manager|text|utf8\)\\.h$ EXCLUDE)

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

# Packages are made on Debian, for the machine that makes them.
find_program(FIELDLINE_DPKG dpkg)
mark_as_advanced(FIELDLINE_DPKG)
if(FIELDLINE_DPKG AND NOT CMAKE_CROSSCOMPILING)
  include(packaging/debian.cmake)
endif()
