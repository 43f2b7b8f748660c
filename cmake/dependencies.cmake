# What more than one folder builds with; what one alone needs, it looks for itself.

find_path(UTFCPP_INCLUDE_DIR utf8.h PATH_SUFFIXES utf8cpp REQUIRED)

if(QELRCPT_TOOLS OR QELRCPT_FUZZ) # the symbols on the paper of a receipt printer in software
  find_path(ZINT_INCLUDE_DIR zint.h)
  find_library(ZINT_LIBRARY zint)
endif()

if(QELRCPT_TESTS OR QELRCPT_FUZZ) # judges of XML, JSON and HTML
  find_package(LibXml2 REQUIRED)
  find_package(nlohmann_json REQUIRED)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(GUMBO REQUIRED IMPORTED_TARGET gumbo)
endif()
