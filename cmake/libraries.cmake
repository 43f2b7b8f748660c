# qelrcpt_library(target soversion package header...): hides what is not exported and gives a shared
# library its SONAME and its version script, <target>.map beside the CMakeLists.txt. Installs the
# library and its headers as a part of the CMake package, which others link as package::target.
function(qelrcpt_library target soversion package)
  qelrcpt_warnings(${target})
  add_library(${package}::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    SOVERSION ${soversion}
    VERSION ${soversion}.0.0
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_compile_options(${target} PRIVATE ${QELRCPT_LIBRARY_OPTIONS})
  if(BUILD_SHARED_LIBS)
    # Calls between exported operations of one library are direct: nobody replaces one of them.
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    set(map "${CMAKE_CURRENT_SOURCE_DIR}/${target}.map")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}" LINKER:--as-needed)
    if(NOT QELRCPT_SANITIZE)
      target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
  endif()

  target_include_directories(${target} PUBLIC
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/${package}>)
  install(FILES ${ARGN}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${package} COMPONENT ${package}_development)
  install(TARGETS ${target} EXPORT ${package}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT ${package}_runtime NAMELINK_COMPONENT ${package}_development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${package}_development)
  qelrcpt_pkgconfig(${target} ${package})
  qelrcpt_manual_pages(${target} ${package} ${ARGN})
  if(BUILD_SHARED_LIBS AND PROJECT_IS_TOP_LEVEL)
    qelrcpt_static_library(${target} ${package})
  endif()
endfunction()

# The static library beside the shared one, of the same objects, for who links it by its name or
# with pkg-config --static.
function(qelrcpt_static_library target package)
  add_library(${target}_static STATIC $<TARGET_OBJECTS:${target}>)
  set_target_properties(${target}_static PROPERTIES OUTPUT_NAME ${target} LINKER_LANGUAGE CXX)
  install(TARGETS ${target}_static
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${package}_development)
endfunction()

# Installs a manual page for each function of the headers, made of its declaration and comment.
function(qelrcpt_manual_pages target package)
  find_program(AWK awk)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target}.man3)
  file(MAKE_DIRECTORY ${folder})
  foreach(header IN LISTS ARGN)
    get_filename_component(header ${header} ABSOLUTE)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
    if(AWK AND header MATCHES "\\.h$")
      execute_process(COMMAND ${AWK} -v folder=${folder} -v see=libqelrcpt
        -f ${PROJECT_SOURCE_DIR}/cmake/manual_pages.awk ${header} COMMAND_ERROR_IS_FATAL ANY)
    endif()
  endforeach()
  install(DIRECTORY ${folder}/
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT ${package}_development)
endfunction()

# Installs <target>.pc, made from cmake/<target>.pc.in.
function(qelrcpt_pkgconfig target package)
  file(RELATIVE_PATH to_prefix
    "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
  string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${target}.pc.in ${target}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${target}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${package}_development)
endfunction()

# qelrcpt_cmake_package(package version): installs what find_package(package) reads, made from
# cmake/<package>-config.cmake.in.
function(qelrcpt_cmake_package package version)
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
  configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/${package}-config.cmake.in ${package}-config.cmake
    INSTALL_DESTINATION ${folder} NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file(${package}-config-version.cmake
    VERSION ${version} COMPATIBILITY SameMajorVersion)
  install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/${package}-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${package}-config-version.cmake
    DESTINATION ${folder} COMPONENT ${package}_development)
  install(EXPORT ${package} NAMESPACE ${package}:: FILE ${package}-targets.cmake
    DESTINATION ${folder} COMPONENT ${package}_development)
endfunction()
