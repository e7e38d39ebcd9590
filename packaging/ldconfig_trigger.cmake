# Run by cpack over the finished packages. It gives a package with a shared library scripts that call ldconfig, which is
# for packages of old; the trigger in packaging/debian/triggers does it, and runs nothing of ours at the installation.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES /libfieldline1_)
    continue()
  endif()
  set(unpacked ${CPACK_TEMPORARY_DIRECTORY}/unpacked)
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${unpacked} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${unpacked}/DEBIAN/postinst ${unpacked}/DEBIAN/postrm)
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${unpacked} ${package} OUTPUT_QUIET
                  COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${unpacked})
endforeach()
