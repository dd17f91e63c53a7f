# Installation and the Debian package: the binary, the schema a database is created from, the
# systemd unit template with its launcher, and an example configuration of one instance.
include(GNUInstallDirs)

install(TARGETS vek RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES sql/schema.sql DESTINATION ${CMAKE_INSTALL_DATADIR}/vek)
install(PROGRAMS packaging/vek-instance DESTINATION lib/vek)
install(FILES packaging/vek@.service DESTINATION lib/systemd/system)
install(FILES packaging/plant1.conf DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

# The package's version is the service's own, read from the source that prints it.
file(STRINGS src/process/start_up.cpp vek_version_line REGEX "kVersion = \"[^\"]+\"")
string(REGEX REPLACE ".*kVersion = \"([^\"]+)\".*" "\\1" vek_version "${vek_version_line}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vek)
set(CPACK_PACKAGE_VERSION ${vek_version})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_CONTACT "vek developers <vek@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "condition-monitoring calculations for rotating machines over PostgreSQL")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
# The runtime libraries the binary links, found by dpkg-shlibdeps: libpqxx, libpq, FFTW and
# the C++ runtime, never their -dev packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "passwd")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "postgresql")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/packaging/postinst ${CMAKE_CURRENT_SOURCE_DIR}/packaging/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
