# Joins pieces of JavaScript into one page script that does nothing where it has run before.
#
#   cmake -D OUTPUT=<file> -D GUARD=<property of window> -D "PIECES=<file>;..." -P joinScript.cmake
set(text "(() => {\n'use strict';\nif (window.${GUARD}) {\n  return;\n}\nwindow.${GUARD} = true;\n")
foreach(piece IN LISTS PIECES)
  file(READ ${piece} content)
  string(APPEND text "\n${content}")
endforeach()
file(WRITE ${OUTPUT} "${text}})();\n")
