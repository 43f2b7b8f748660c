# Debian packages, split as Debian splits them; scripts/package builds and tries them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "qelrcpt maintainers <maintainers@users.noreply.qelrcpt.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL
  qelstdlib_runtime qelstdlib_development qelrcpt_runtime qelrcpt_development qelrcpt_command)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# What Debian wants in every package, before and after it is made.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian_files.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian_triggers.cmake)
set(CPACK_QELRCPT_SOURCE ${PROJECT_SOURCE_DIR})

# qelrcpt_package(component name section depends summary text)
function(qelrcpt_package component name section depends summary text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
endfunction()

set(same "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
qelrcpt_package(qelstdlib_runtime libqelstdlib2 libs "tzdata"
  "text, containers and time for the receipt library"
  "The shared libraries on which libqelrcpt is built: text, buffers, lists,
dictionaries and time, and trees of JSON and XML.")
qelrcpt_package(qelstdlib_development libqelstdlib-dev libdevel "libqelstdlib2 ${same}"
  "text, containers and time for the receipt library (development files)"
  "Headers, static libraries, pkg-config files and the CMake package qelstdlib.")
qelrcpt_package(qelrcpt_runtime libqelrcpt1 libs "libqelstdlib2 ${same}"
  "receipts of card transactions (shared library)"
  "Renders the record of a card transaction as the customer's and the merchant's
receipt: plain text of any width, HTML, XML, JSON and two layouts of the
Moneris processor, in five languages.")
qelrcpt_package(qelrcpt_development libqelrcpt-dev libdevel
  "libqelrcpt1 ${same}, libqelstdlib-dev ${same}"
  "receipts of card transactions (development files)"
  "Headers for C and C++, the static library, the pkg-config file, the CMake
package qelrcpt, the style sheet for HTML receipts, documents and examples.")
qelrcpt_package(qelrcpt_command qelrcpt utils "libqelrcpt1 ${same}, libqelstdlib2 ${same}"
  "receipts of card transactions (command)"
  "Renders the record of a card transaction, read from a file, as receipts. Brings
a page to try records in a browser, without a network.")

if(QELRCPT_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL qelrcpt_python)
  qelrcpt_package(qelrcpt_python python3-qelrcpt python
    "libqelrcpt1 ${same}, libqelstdlib2 ${same}, python3 (>= 3.9)"
    "receipts of card transactions (Python)"
    "Renders the record of a card transaction as receipts from Python, checks
records and makes the bytes for receipt printers.")
  set(CPACK_DEBIAN_QELRCPT_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/bindings/python/debian/postinst
    ${PROJECT_SOURCE_DIR}/bindings/python/debian/prerm)
endif()

include(CPack)
