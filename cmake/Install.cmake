# The package that find_package(Quorvel CONFIG) finds, and the documents. Libraries and programs install themselves.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvel)
configure_package_config_file(cmake/QuorvelConfig.cmake.in ${PROJECT_BINARY_DIR}/cmake/QuorvelConfig.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/QuorvelConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(EXPORT QuorvelTargets NAMESPACE Quorvel:: DESTINATION ${package_folder} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/cmake/QuorvelConfig.cmake ${PROJECT_BINARY_DIR}/cmake/QuorvelConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)

install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
  FILES_MATCHING PATTERN *.cpp PATTERN *.csv PATTERN *.md PATTERN *.png PATTERN *.svg)
