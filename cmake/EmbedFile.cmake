# Turns a resource file into a C++ source whose function SYMBOL answers the file's bytes.
file(READ ${INPUT} CONTENT HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," BYTES "${CONTENT}")
file(WRITE ${OUTPUT}
  "#include <string_view>\n"
  "namespace stowhaven {\n"
  "static const unsigned char kBytes[] = {${BYTES} 0};\n"
  "std::string_view ${SYMBOL}() { return {reinterpret_cast<const char*>(kBytes), sizeof(kBytes) - 1}; }\n"
  "}\n")
