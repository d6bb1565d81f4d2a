# Writes the AppStream file. If QUILLBOX_HOMEPAGE is empty, the file has no link and no screenshot.
set(QUILLBOX_HOMEPAGE "" CACHE STRING "Address of the project's pages; the screenshot is at ADDRESS/docs/window.png")
set(links "")
if(QUILLBOX_HOMEPAGE)
  set(links "  <url type=\"homepage\">${QUILLBOX_HOMEPAGE}</url>
  <screenshots>
    <screenshot type=\"default\">
      <caption>Marking what to back up</caption>
      <image>${QUILLBOX_HOMEPAGE}/docs/window.png</image>
    </screenshot>
  </screenshots>
")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/desktop/org.quillbox.Quillbox.metainfo.xml.in
               ${CMAKE_CURRENT_BINARY_DIR}/org.quillbox.Quillbox.metainfo.xml @ONLY)
