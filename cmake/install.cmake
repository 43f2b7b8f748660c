# What is installed beside the targets, and where the targets look for their libraries.

# Outside the system's own folders, programs and libraries find the libraries beside them.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  file(RELATIVE_PATH bin_to_lib "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${bin_to_lib}")
endif()

if(BUILD_SHARED_LIBS)
  set(QELRCPT_IS_SHARED TRUE)
else()
  set(QELRCPT_IS_SHARED FALSE)
endif()

install(FILES share/receipt.css share/qelrcpt-api.json
  DESTINATION ${CMAKE_INSTALL_DATADIR}/qelrcpt COMPONENT qelrcpt_development)
install(FILES man/libqelrcpt.3
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT qelrcpt_development)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libqelrcpt-dev COMPONENT qelrcpt_development)
install(DIRECTORY docs examples
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libqelrcpt-dev COMPONENT qelrcpt_development
  PATTERN node_modules EXCLUDE PATTERN dist EXCLUDE PATTERN .gitignore EXCLUDE)
foreach(described bindings/python bindings/javascript playground) # the documents refer to them
  install(FILES ${described}/README.md
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libqelrcpt-dev/${described}
    COMPONENT qelrcpt_development)
endforeach()
if(QELRCPT_TOOLS)
  # zsh looks for what packages bring apart from what was installed by hand.
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(vendor_functions vendor-completions)
  else()
    set(vendor_functions site-functions)
  endif()
  install(FILES man/qelrcpt.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT qelrcpt_command)
  install(FILES man/qelrcpt-record.5
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT qelrcpt_command)
  install(FILES share/playground.html
    DESTINATION ${CMAKE_INSTALL_DATADIR}/qelrcpt COMPONENT qelrcpt_command)
  install(DIRECTORY examples/records
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/qelrcpt/examples COMPONENT qelrcpt_command)
  install(FILES completion/qelrcpt
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT qelrcpt_command)
  install(FILES completion/_qelrcpt
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${vendor_functions} COMPONENT qelrcpt_command)
  install(FILES completion/qelrcpt.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT qelrcpt_command)
endif()
