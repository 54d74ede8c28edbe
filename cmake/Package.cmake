# `make package`: one .deb with the three programs, the desktop entry and icons and the udev rule, which
# the maintainer scripts activate on install. dpkg-shlibdeps fills Depends with the Qt and KF5 runtime
# libraries; the Russian Qt translations (dialog buttons and the like) are a dependency of their own.
install(FILES ${PROJECT_SOURCE_DIR}/packaging/99-tavrel-tracker.rules DESTINATION lib/udev/rules.d)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavrel-cfg)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Tavrel")
set(CPACK_PACKAGE_CONTACT "Tavrel support <support@tavrel.ru>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Configurator for Tavrel GPS/GSM vehicle trackers")
set(CPACK_PACKAGE_DESCRIPTION
    "Reads and writes the configuration of a Tavrel tracker over USB or through the configuration server,\n"
    "shows and charts its live telemetry and updates its firmware. Includes the command-line tool\n"
    "tavrel-cli and the virtual tracker tavrel-devsim.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qttranslations5-l10n")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "udev")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
