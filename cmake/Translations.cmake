find_program(MSGFMT_EXECUTABLE msgfmt REQUIRED)

# Compiles the catalogue LANGUAGE.po of the calling directory for every LANGUAGE named after DOMAIN,
# into the build tree as it is installed: share/locale/LANGUAGE/LC_MESSAGES/DOMAIN.mo.
function(vendril_add_translations domain)
  set(catalogues)
  foreach(language IN LISTS ARGN)
    set(source "${CMAKE_CURRENT_SOURCE_DIR}/${language}.po")
    set(messages "${language}/LC_MESSAGES")
    set(directory "${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_LOCALEDIR}/${messages}")
    add_custom_command(
      OUTPUT "${directory}/${domain}.mo"
      COMMAND "${CMAKE_COMMAND}" -E make_directory "${directory}"
      COMMAND "${MSGFMT_EXECUTABLE}" --check -o "${directory}/${domain}.mo" "${source}"
      DEPENDS "${source}"
      COMMENT "Compiling the ${language} texts"
      VERBATIM)
    install(FILES "${directory}/${domain}.mo"
            DESTINATION "${CMAKE_INSTALL_LOCALEDIR}/${messages}")
    list(APPEND catalogues "${directory}/${domain}.mo")
  endforeach()
  add_custom_target(${domain}_translations ALL DEPENDS ${catalogues})
endfunction()
