# The one source of the names under which the desktop and the network know the application. The
# information file, the desktop entry, the bus service, the metainfo and the manual are filled from
# here.
set(VENDRIL_NAME "Vendril")
set(VENDRIL_BUNDLE_IDENTIFIER "com.brelto.Vendril")
string(TOLOWER "${VENDRIL_BUNDLE_IDENTIFIER}" VENDRIL_DESKTOP_ID)
set(VENDRIL_SHORT_VERSION "${PROJECT_VERSION}")
set(VENDRIL_BUILD_NUMBER 1)
set(VENDRIL_BUNDLE_VERSION "${PROJECT_VERSION}.${VENDRIL_BUILD_NUMBER}")
set(VENDRIL_SCHEMES vendril mervale)

set(VENDRIL_SUMMARY "Tells meeting portals which conferencing client is installed")
set(VENDRIL_PHRASE "answer meeting links for the conferencing client")
set(VENDRIL_MAINTAINER "Brelto Vendril Team <vendril@brelto.com>")
set(VENDRIL_RELEASE_DATE "2026-11-21")
set(VENDRIL_PACKAGE_RELEASE 1)
set(VENDRIL_PACKAGE_VERSION "${VENDRIL_SHORT_VERSION}-${VENDRIL_PACKAGE_RELEASE}")
