# Run by CPack in front of making the packages: completes what was installed for each of them.
function(compress file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)

  file(GLOB_RECURSE pages ${share}/man/*.[1-9])
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()

  file(WRITE ${share}/doc/${package}/changelog.Debian
    "qelrcpt (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
    "  * As CHANGELOG.md says.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${now}\n")
  compress(${share}/doc/${package}/changelog.Debian)

  file(GLOB upstream ${share}/doc/*/CHANGELOG.md)
  foreach(file IN LISTS upstream)
    file(RENAME ${file} ${share}/doc/${package}/changelog)
    compress(${share}/doc/${package}/changelog)
  endforeach()

  # These are no upload to Debian, which would close a report.
  file(WRITE ${share}/lintian/overrides/${package} "${package}: initial-upload-closes-no-bugs\n")

  if(EXISTS ${CPACK_QELRCPT_SOURCE}/LICENSE)
    file(COPY_FILE ${CPACK_QELRCPT_SOURCE}/LICENSE ${share}/doc/${package}/copyright)
  endif()
endforeach()
