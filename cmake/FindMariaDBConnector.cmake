# Finds MariaDB's client library for C: MariaDBConnector_FOUND, MariaDBConnector_VERSION, target MariaDB::Connector.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(MariaDBConnector QUIET IMPORTED_TARGET libmariadb)
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(MariaDBConnector
  REQUIRED_VARS MariaDBConnector_LINK_LIBRARIES
  VERSION_VAR MariaDBConnector_VERSION)

if(MariaDBConnector_FOUND AND NOT TARGET MariaDB::Connector)
  add_library(MariaDB::Connector INTERFACE IMPORTED)
  target_link_libraries(MariaDB::Connector INTERFACE PkgConfig::MariaDBConnector)
endif()
