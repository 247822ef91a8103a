# What is installed where, the same arrangement inside the build folder, and the Debian packages.

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
install(FILES data/org.velmora.Ondrel.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
# A bus service needs the whole path of its program; the packages' prefix is another than that of this folder.
foreach(service org.velmora.Ondrel org.velmora.Ondrel.DefaultMailHelper)
  install(CODE "set(CMAKE_INSTALL_FULL_BINDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    set(CMAKE_INSTALL_FULL_LIBEXECDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBEXECDIR}\")
    configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/data/${service}.service.in\"
      \"${CMAKE_CURRENT_BINARY_DIR}/${service}.service\" @ONLY)")
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${service}.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
endforeach()
install(FILES data/org.velmora.Ondrel.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES data/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ondrel)
install(FILES data/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ondrel-demo COMPONENT demo)
install(DIRECTORY data/icons DESTINATION ${CMAKE_INSTALL_DATADIR})

# cpack -G DEB, in a build folder of the release preset: ondrel and ondrel-demo.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ondrel)
set(CPACK_PACKAGE_VENDOR "The Ondrel authors")
set(CPACK_PACKAGE_CONTACT "The Ondrel authors <ondrel@velmora.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}-${ONDREL_BUILD_NUMBER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Unspecified demo)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION mail)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME ondrel)
set(CPACK_COMPONENT_UNSPECIFIED_DESCRIPTION
  "It shows the service's own web application in native tabbed windows and adds what a page alone can't do.")
# Not libraries, so not found by themselves: the engine's sandbox and what draws text and icons.
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_DEPENDS
  "bubblewrap, xdg-dbus-proxy, glib-networking, ca-certificates, shared-mime-info, adwaita-icon-theme, librsvg2-common")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_RECOMMENDS "fonts-dejavu-core | fonts-cantarell, xdg-desktop-portal-gtk, poppler-data")
# Kinds of images, sound and film that previews know besides; and what tells of updates.
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SUGGESTS
  "libgtk-4-media-gstreamer, gstreamer1.0-plugins-good, webp-pixbuf-loader, heif-gdk-pixbuf, packagekit")
set(CPACK_DEBIAN_DEMO_PACKAGE_NAME ondrel-demo)
set(CPACK_COMPONENT_DEMO_DESCRIPTION
  "The demonstration mail service: a stand-in on this machine, for \"ondrel --demo\".")
set(CPACK_DEBIAN_DEMO_PACKAGE_DEPENDS "ondrel (= ${CPACK_PACKAGE_VERSION})")
include(CPack)
