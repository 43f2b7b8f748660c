# What is installed beside the targets, and where the targets look for their libraries.

# Programs and libraries find the libraries beside them, where they are installed as where they are
# built, in lib: nothing is changed when they are installed. For what is to be changed CMake leaves room
# at the end, a colon at least, and an empty element is the folder that a program is started in.
file(RELATIVE_PATH bin_to_lib "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${bin_to_lib}" "$ORIGIN/../lib")
list(REMOVE_DUPLICATES CMAKE_INSTALL_RPATH)
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON) # where other libraries are that the system does not know

# To call at the end. The system's own folders need none of that, and packages must not have it.
function(qelrcpt_clear_system_rpath)
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    install(CODE [[
      foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
        set(file "$ENV{DESTDIR}${file}")
        if(file MATCHES "/bin/qelrcpt$|\\.so(\\.[0-9]+)*$" AND EXISTS "${file}") # no lone link
          file(RPATH_REMOVE FILE "${file}")
        endif()
      endforeach()
      ]] ALL_COMPONENTS)
  endif()
endfunction()

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
