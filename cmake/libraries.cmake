# qelrcpt_library(target soversion): hides what is not exported and gives the shared object its
# SONAME and its version script, <target>.map beside the CMakeLists.txt.
function(qelrcpt_library target soversion)
  qelrcpt_warnings(${target})
  set(map "${CMAKE_CURRENT_SOURCE_DIR}/${target}.map")
  set_target_properties(${target} PROPERTIES
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    SOVERSION ${soversion}
    VERSION ${soversion}.0.0
    LINK_DEPENDS "${map}")
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_link_options(${target} PRIVATE "LINKER:--version-script=${map}" LINKER:--as-needed)
  if(NOT QELRCPT_SANITIZE)
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()
