# The catalogues of po/ where the program looks for them, share/locale beside its folder, built or installed; and what
# describes the program to the desktop, in all languages.
find_program(MSGFMT msgfmt REQUIRED)
file(STRINGS po/LINGUAS languages REGEX "^[^#]")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS po/LINGUAS)
set(catalogues "")
set(translations "")
foreach(language IN LISTS languages)
  set(translation ${CMAKE_CURRENT_SOURCE_DIR}/po/${language}.po)
  set(folder ${CMAKE_BINARY_DIR}/share/locale/${language}/LC_MESSAGES)
  file(MAKE_DIRECTORY ${folder})
  add_custom_command(OUTPUT ${folder}/ondrel.mo DEPENDS ${translation}
    COMMAND ${MSGFMT} --output-file=${folder}/ondrel.mo ${translation} VERBATIM)
  install(FILES ${folder}/ondrel.mo DESTINATION ${CMAKE_INSTALL_LOCALEDIR}/${language}/LC_MESSAGES)
  list(APPEND translations ${translation})
  list(APPEND catalogues ${folder}/ondrel.mo)
endforeach()

# translate_description(FORM TEMPLATE OUTPUT): FORM is desktop or xml.
function(translate_description form template output)
  add_custom_command(OUTPUT ${output} DEPENDS ${template} ${translations} po/LINGUAS
    COMMAND ${MSGFMT} --${form} --template=${template} -d ${CMAKE_CURRENT_SOURCE_DIR}/po --output-file=${output} VERBATIM)
endfunction()
