# The description for software centres. What needs an address of the project is in it only where the publisher has
# filled that in data/site.json; the pictures of docs/ are then expected at the project's site.
file(READ data/site.json site)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS data/site.json)
string(JSON project_site GET "${site}" ProjectSiteURL)
string(JSON faq GET "${site}" ProjectFAQURL)
string(JSON donation GET "${site}" DonationURL 0)

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

function(add_screenshot attributes file caption)
  string(REGEX REPLACE "/$" "" folder "${project_site}")
  set(ONDREL_METAINFO_ADDRESSES "${ONDREL_METAINFO_ADDRESSES}
    <screenshot${attributes}>
      <caption>${caption}</caption>
      <image>${folder}/${file}</image>
    </screenshot>" PARENT_SCOPE)
endfunction()
if(project_site)
  string(APPEND ONDREL_METAINFO_ADDRESSES "\n  <screenshots>")
  add_screenshot(" type=\"default\"" window.png "Two tabs and an open conversation")
  add_screenshot("" highlights.png "All highlights in one document")
  add_screenshot("" attachments.png "The attachments of all messages")
  string(APPEND ONDREL_METAINFO_ADDRESSES "\n  </screenshots>")
endif()
configure_file(data/org.velmora.Ondrel.metainfo.xml.in
  ${CMAKE_CURRENT_BINARY_DIR}/org.velmora.Ondrel.metainfo.xml @ONLY)
