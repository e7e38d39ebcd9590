# Debian packages, with CPack: the shared library, what a developer adds to it, the command, and the
# service. From a built tree:
#   cpack --config build/release/CPackConfig.cmake -B DIRECTORY
# script/check-packages builds and checks them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                                WORLD_EXECUTE)
# Debian wants manual pages and changelogs compressed; other installations take them as they are.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/compress_documents.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/ldconfig_trigger.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "fieldline maintainers <maintainers@fieldline.example>")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Of each description the first line is the summary; without this it would be the project's for all.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libfieldline1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "device access for machine-room monitoring units
Polls the field devices of a machine room over serial lines: probes, power
meters, air conditioners, UPSs, battery monitors, cameras, card terminals, the
alarm board and the serial display.
.
This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libfieldline-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libfieldline1 (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "device access for machine-room monitoring units - development
Polls the field devices of a machine room over serial lines: probes, power
meters, air conditioners, UPSs, battery monitors, cameras, card terminals, the
alarm board and the serial display.
.
This package holds the headers, the static library, and what CMake and
pkg-config need to find them.")
if(TARGET fieldline_tool)
  list(APPEND CPACK_COMPONENTS_ALL tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME fieldline-tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION comm)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_TOOLS_DESCRIPTION "commissioning tool for machine-room monitoring units
The command fieldline polls the field devices of a machine room over serial
lines, shows what they say and why one does not answer, and simulates every
device that it can talk to.")
endif()
if(TARGET fieldlined)
  list(APPEND CPACK_COMPONENTS_ALL service)
  set(CPACK_DEBIAN_SERVICE_PACKAGE_NAME fieldlined)
  set(CPACK_DEBIAN_SERVICE_PACKAGE_SECTION comm)
  set(CPACK_DEBIAN_SERVICE_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_SERVICE_PACKAGE_DEPENDS "systemd | systemd-standalone-sysusers")
  set(CPACK_DEBIAN_SERVICE_PACKAGE_SUGGESTS fieldline-tools)
  set(service_scripts ${CMAKE_CURRENT_LIST_DIR}/debian/fieldlined)
  set(CPACK_DEBIAN_SERVICE_PACKAGE_CONTROL_EXTRA ${service_scripts}/postinst ${service_scripts}/prerm
                                                 ${service_scripts}/postrm)
  set(CPACK_DEBIAN_SERVICE_DESCRIPTION "service that watches a machine room
The service fieldlined polls the field devices of a machine room over serial
lines, keeps the history of their readings, and shows it on a page, as JSON and
to Prometheus.")
endif()

# EXCLUDE_FROM_ALL: these belong to the packages, not to `cmake --install`.
function(install_document file package component name)
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} RENAME ${name}
          EXCLUDE_FROM_ALL)
endfunction()
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} prefix)
  set(package ${CPACK_DEBIAN_${prefix}_PACKAGE_NAME})
  install_document(packaging/debian/copyright ${package} ${component} copyright)
  install_document(packaging/debian/changelog ${package} ${component} changelog.Debian)
endforeach()
# The programs contain code of these, whose licences ask that their text goes with it.
set(libraries_in_tools libcli11-dev nlohmann-json3-dev)
set(libraries_in_service ${libraries_in_tools} libcpp-httplib-dev libjs-dygraphs)
foreach(component tools service)
  string(TOUPPER ${component} prefix)
  set(package ${CPACK_DEBIAN_${prefix}_PACKAGE_NAME})
  if(package)
    foreach(library IN LISTS libraries_in_${component})
      install_document(/usr/share/doc/${library}/copyright ${package} ${component} copyright.${library})
    endforeach()
  endif()
endforeach()

include(CPack)
