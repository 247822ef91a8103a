# The description for software centres. What needs an address of the project is in it only where the publisher has
# filled that in data/site.json; the pictures of docs/ are then expected at the project's site.
file(READ data/site.json site)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS data/site.json)
string(JSON project_site GET "${site}" ProjectSiteURL)
string(JSON faq GET "${site}" ProjectFAQURL)
string(JSON donation GET "${site}" DonationURL 0)
foreach(address project_site faq donation)
  string(REPLACE "&" "&amp;" ${address} "${${address}}") # as XML writes it
endforeach()

set(ONDREL_METAINFO_ADDRESSES "")
function(add_address type address)
  if(address)
    string(APPEND ONDREL_METAINFO_ADDRESSES "\n  <url type=\"${type}\">${address}</url>")
    set(ONDREL_METAINFO_ADDRESSES "${ONDREL_METAINFO_ADDRESSES}" PARENT_SCOPE)
  endif()
endfunction()
add_address(homepage "${project_site}")
add_address(faq "${faq}")
add_address(donation "${donation}")

file(READ data/org.velmora.Ondrel.metainfo.xml.in metainfo)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS data/org.velmora.Ondrel.metainfo.xml.in)
if(project_site)
  string(REGEX REPLACE "/$" "" ONDREL_PICTURES "${project_site}")
else()
  string(REGEX REPLACE "\n *<screenshots>.*</screenshots>" "" metainfo "${metainfo}")
endif()
string(CONFIGURE "${metainfo}" metainfo @ONLY)
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.metainfo.xml.in CONTENT "${metainfo}" @ONLY)
translate_description(xml ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.metainfo.xml.in
  ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.metainfo.xml)
