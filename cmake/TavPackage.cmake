# SPDX-License-Identifier: Apache-2.0
# One Debian package of everything that is installed; ./dev package builds it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tav)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_CONTACT "the tav maintainers")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
# The C and C++ run time, SQLite, libgpiod and libsystemd, in the versions built against. ModemManager, which the modem's
# service asks over D-Bus, is wanted on few machines only.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS modemmanager)
# Chart.js is served from its own package.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS libjs-chart.js)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
