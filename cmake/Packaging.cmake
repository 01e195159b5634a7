# The Debian package: `cpack -G DEB` in the release build's directory. The installed tree is laid
# out for /usr, whatever prefix the build was configured with.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vendril)
set(CPACK_PACKAGE_VENDOR Brelto)
set(CPACK_PACKAGE_CONTACT "${VENDRIL_MAINTAINER}")
set(CPACK_PACKAGE_VERSION "${VENDRIL_SHORT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${VENDRIL_PHRASE}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# The files that name the program's path read the prefix when they are installed, so the prefix has
# to be the final one, with the staging directory in DESTDIR.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${VENDRIL_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"The desktop starts this program when a link of a conferencing portal is
opened. It tells the portal which conferencing client is installed and what
that client can do, so that the portal can offer the right way to join.
.
It works without a window and starts again at each login. The command
vendrilctl tells whether links arrive, and what mends it when they do not.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded at run time, so dpkg-shlibdeps does not see it; the version is the build's.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libcurl4 (>= ${CURL_VERSION})")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "default-dbus-session-bus | dbus-session-bus")

# What only a package holds. The desktop database and the icon cache are renewed by the triggers
# that desktop-file-utils and hicolor-icon-theme have on the directories of this tree.
string(REGEX REPLACE "^(....)-(..)-(..)$" "\\1\\2\\3" release_day "${VENDRIL_RELEASE_DATE}")
execute_process(COMMAND date --utc --rfc-email "--date=${release_day}"
                OUTPUT_VARIABLE VENDRIL_RELEASE_DATE_RFC2822 OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
set(package_tree "${CMAKE_BINARY_DIR}/package")
set(package_doc "${package_tree}/usr/share/doc/vendril")
configure_file(data/debian/copyright.in "${package_doc}/copyright" @ONLY)
configure_file(data/debian/lintian-overrides
               "${package_tree}/usr/share/lintian/overrides/vendril" COPYONLY)
configure_file(data/debian/changelog.in "${CMAKE_BINARY_DIR}/changelog.Debian" @ONLY)
add_custom_command(OUTPUT "${package_doc}/changelog.Debian.gz"
  COMMAND "${GZIP}" -9 --no-name --stdout changelog.Debian > "${package_doc}/changelog.Debian.gz"
  WORKING_DIRECTORY "${CMAKE_BINARY_DIR}" DEPENDS "${CMAKE_BINARY_DIR}/changelog.Debian" VERBATIM)
add_custom_target(package_files ALL DEPENDS "${package_doc}/changelog.Debian.gz")
set(CPACK_INSTALLED_DIRECTORIES "${package_tree};/")
include(CPack)
