# qelrcpt_warnings(target): the warnings that our own code is clean of, as errors in our own builds.
function(qelrcpt_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(QELRCPT_DEVELOPER)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
