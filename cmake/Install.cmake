# What is installed where, and the same arrangement inside the build folder. debian/ makes packages of it.

# The program looks for its data in ../share/ondrel of its own folder, built or installed.
configure_file(data/site.json ${CMAKE_BINARY_DIR}/share/ondrel/site.json COPYONLY)

# The web-process extension is installed where it is built. The names of all components but the demonstration's stay
# the default one: together they are the program.
if(TARGET ondrel)
  install(TARGETS ondrel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET ondrel-demo-service)
  install(TARGETS ondrel-demo-service RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT demo)
endif()
if(TARGET ondrel-default-mail-helper)
  install(TARGETS ondrel-default-mail-helper RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR})
endif()
install(FILES data/site.json DESTINATION ${CMAKE_INSTALL_DATADIR}/ondrel)
include(cmake/Translations.cmake)
translate_description(desktop ${CMAKE_CURRENT_SOURCE_DIR}/data/org.velmora.Ondrel.desktop
  ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.desktop)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
# A bus service needs the whole path of its program; the packages' prefix is another than that of this folder.
foreach(service org.velmora.Ondrel org.velmora.Ondrel.DefaultMailHelper)
  install(CODE "set(CMAKE_INSTALL_FULL_BINDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    set(CMAKE_INSTALL_FULL_LIBEXECDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBEXECDIR}\")
    configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/data/${service}.service.in\"
      \"${CMAKE_CURRENT_BINARY_DIR}/${service}.service\" @ONLY)")
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${service}.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
endforeach()
include(cmake/Metainfo.cmake)
add_custom_target(ondrel_translations ALL DEPENDS ${catalogues} ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.desktop
  ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.metainfo.xml)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES data/man/ondrel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES data/man/ondrel-demo-service.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT demo)
install(DIRECTORY data/icons DESTINATION ${CMAKE_INSTALL_DATADIR})
