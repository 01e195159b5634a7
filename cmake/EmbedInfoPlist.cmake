# Fills in the information file and makes a header that holds it:
# ${CMAKE_BINARY_DIR}/generated/{Info.plist,InfoPlist.h}.
set(VENDRIL_URL_TYPES "")
foreach(scheme IN LISTS VENDRIL_SCHEMES)
  string(APPEND VENDRIL_URL_TYPES
    "\t\t<dict>\n"
    "\t\t\t<key>CFBundleURLSchemes</key>\n"
    "\t\t\t<array>\n"
    "\t\t\t\t<string>${scheme}</string>\n"
    "\t\t\t</array>\n"
    "\t\t</dict>\n")
endforeach()
configure_file("${CMAKE_SOURCE_DIR}/data/Info.plist.in" "${CMAKE_BINARY_DIR}/generated/Info.plist"
               @ONLY)
file(READ "${CMAKE_BINARY_DIR}/generated/Info.plist" VENDRIL_INFO_PLIST)
configure_file("${CMAKE_SOURCE_DIR}/platform/freedesktop/InfoPlist.h.in"
               "${CMAKE_BINARY_DIR}/generated/InfoPlist.h" @ONLY)
