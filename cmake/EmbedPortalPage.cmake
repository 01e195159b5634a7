# Makes a source of the practice portal's page, with the schemes as choices:
# ${CMAKE_BINARY_DIR}/generated/PageFiles.cpp.
set(page "${CMAKE_SOURCE_DIR}/portal/page")
set(icon "${CMAKE_SOURCE_DIR}/data/icons/vendril.svg")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
             "${page}/page.css" "${page}/page.js" "${icon}")

set(choices "")
set(checked " checked")
foreach(scheme IN LISTS VENDRIL_SCHEMES)
  list(APPEND choices
    "            <label class=\"option\"><input type=\"radio\" name=\"scheme\" value=\"${scheme}\"${checked}>\n              <span><b>${scheme}:</b></span></label>")
  set(checked "")
endforeach()
list(JOIN choices "\n" VENDRIL_SCHEME_CHOICES)

configure_file("${page}/index.html.in" "${CMAKE_BINARY_DIR}/generated/index.html" @ONLY)
file(READ "${CMAKE_BINARY_DIR}/generated/index.html" VENDRIL_PAGE_HTML)
file(READ "${page}/page.css" VENDRIL_PAGE_CSS)
file(READ "${page}/page.js" VENDRIL_PAGE_JS)
file(READ "${icon}" VENDRIL_PAGE_ICON)
configure_file("${CMAKE_SOURCE_DIR}/portal/PageFiles.cpp.in"
               "${CMAKE_BINARY_DIR}/generated/PageFiles.cpp" @ONLY)
