# Run by CPack behind making the packages: the linker's cache is brought up to date by a trigger, as
# Debian wants it, and not by the scripts that CPack writes.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(folder ${CPACK_TEMPORARY_DIRECTORY}/repacked)
  file(REMOVE_RECURSE ${folder})
  execute_process(COMMAND dpkg-deb -R ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
  if(NOT EXISTS ${folder}/DEBIAN/postinst)
    continue()
  endif()
  file(STRINGS ${folder}/DEBIAN/postinst ldconfig REGEX ldconfig)
  if(NOT ldconfig)
    continue() # one of our own
  endif()
  file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
  file(WRITE ${folder}/DEBIAN/triggers "activate-noawait ldconfig\n")
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
