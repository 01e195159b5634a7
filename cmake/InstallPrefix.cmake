# Sets VENDRIL_PREFIX to the prefix, made absolute, and refuses one whose paths cannot stand in a
# desktop entry. A launcher may quote or split what it finds in Exec, and not all agree how; a path
# of these characters alone means the same to every one of them, and to the bus and to systemd.
# Runs when the build is configured and again, as a script, when it is installed.
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE OUTPUT_VARIABLE VENDRIL_PREFIX)
string(REGEX REPLACE "/+$" "" VENDRIL_PREFIX "${VENDRIL_PREFIX}")
if(NOT VENDRIL_PREFIX MATCHES "^[A-Za-z0-9_./+:@,-]*$")
  message(FATAL_ERROR "The prefix '${VENDRIL_PREFIX}' cannot stand in a desktop entry: it may hold "
                      "no spaces, quotes or other special characters.")
endif()
