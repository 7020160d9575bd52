# Turns text files into C++ constants at build time, so a page stays one
# readable file in the source tree.
#   cmake -DOUTPUT=out.cpp -DNAMESPACE=ns -DFILES="NAME=path;NAME=path" -P EmbedText.cmake
set(body "// Generated from the page sources at build time; edit those instead.\n\nnamespace ${NAMESPACE} {\n\n")
foreach(entry IN LISTS FILES)
  string(REPLACE "=" ";" pair "${entry}")
  list(GET pair 0 name)
  list(GET pair 1 path)
  file(READ "${path}" hex HEX)
  string(LENGTH "${hex}" length)
  math(EXPR size "${length} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  string(APPEND body "extern const char ${name}[];\nextern const unsigned long ${name}Size;\n")
  string(APPEND body "const char ${name}[] = {${bytes} 0};\nconst unsigned long ${name}Size = ${size};\n\n")
endforeach()
string(APPEND body "}  // namespace ${NAMESPACE}\n")
file(WRITE "${OUTPUT}.tmp" "${body}")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")
