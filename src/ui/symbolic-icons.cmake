# The symbols that the interface shows (tools/lint compares). They are compiled in, since themes of other desktops lack many,
# and GTK 4.8 looks for what a theme lacks among the program's own icons alone. Where a theme has one, that is shown.
set(symbolicIcons
  applications-engineering-symbolic audio-x-generic-symbolic changes-allow-symbolic changes-prevent-symbolic
  computer-symbolic dialog-error-symbolic dialog-information-symbolic dialog-warning-symbolic document-open-symbolic
  document-save-symbolic edit-clear-symbolic edit-copy-symbolic edit-find-symbolic emblem-documents-symbolic
  emblem-favorite-symbolic emblem-ok-symbolic folder-documents-symbolic folder-download-symbolic folder-open-symbolic
  go-down-symbolic go-next-symbolic go-previous-symbolic go-up-symbolic image-x-generic-symbolic
  mail-attachment-symbolic mail-message-new-symbolic media-playback-start-symbolic network-offline-symbolic
  object-select-symbolic open-menu-symbolic package-x-generic-symbolic
  preferences-desktop-keyboard-shortcuts-symbolic preferences-system-symbolic process-stop-symbolic
  software-update-available-symbolic tab-new-symbolic text-x-generic-symbolic video-x-generic-symbolic
  view-more-symbolic view-refresh-symbolic view-sort-descending-symbolic window-close-symbolic
  x-office-document-symbolic x-office-presentation-symbolic x-office-spreadsheet-symbolic zoom-fit-best-symbolic
  zoom-in-symbolic zoom-original-symbolic zoom-out-symbolic)
find_path(ADWAITA_ICONS index.theme PATH_SUFFIXES share/icons/Adwaita NO_CACHE REQUIRED)

# Writes a list of resources for glib-compile-resources to the file.
function(write_symbolic_icons file)
  set(entries "")
  foreach(name IN LISTS symbolicIcons)
    # The folder of the theme has another name from its version 44 on.
    file(GLOB found "${ADWAITA_ICONS}/scalable/*/${name}.svg" "${ADWAITA_ICONS}/symbolic/*/${name}.svg")
    if(NOT found)
      message(FATAL_ERROR "The package adwaita-icon-theme has no ${name}")
    endif()
    list(GET found 0 found)
    string(APPEND entries "<file alias=\"${name}.svg\">${found}</file>\n")
  endforeach()
  file(CONFIGURE OUTPUT "${file}" CONTENT "<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<gresources><gresource prefix=\"/org/velmora/Ondrel/icons/scalable/actions\">
${entries}</gresource></gresources>
" @ONLY)
endfunction()
