# What an installation holds besides the libraries, the engines and the tool, which install themselves.
include(CMakePackageConfigHelpers)

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_BINARY_DIR}/include/ormeldb/qdc.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ormeldb)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}) # to which the headers refer

# The exported targets need nothing but each other, so that they are the whole package.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ormeldb)
install(EXPORT ormeldb NAMESPACE ormeldb:: FILE ormeldbConfig.cmake DESTINATION ${package_dir})
write_basic_package_version_file(ormeldbConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ormeldbConfigVersion.cmake DESTINATION ${package_dir})

configure_file(cmake/ormeldb.pc.in ormeldb.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ormeldb.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
