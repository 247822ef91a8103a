# Joins pieces of JavaScript into one page script: a function of its own in strict mode. With a guard it does nothing
# where it has run before. With parameters it isn't called: that is left to the program, which has the values.
#
#   cmake -D OUTPUT=<file> -D GUARD=<property of window> -D "PARAMETERS=<name>;..." -D "PIECES=<file>;..."
#         -P joinScript.cmake
list(JOIN PARAMETERS ", " names)
set(text "((${names}) => {\n'use strict';\n")
if(GUARD)
  string(APPEND text "if (window.${GUARD}) {\n  return;\n}\nwindow.${GUARD} = true;\n")
endif()
foreach(piece IN LISTS PIECES)
  file(READ ${piece} content)
  string(APPEND text "\n${content}")
endforeach()
string(APPEND text "})")
if(NOT PARAMETERS)
  string(APPEND text "();\n")
endif()
file(WRITE ${OUTPUT} "${text}")
