# Writes the panel images into a C++ source: cmake -DOUTPUT=file.cpp "-DIMAGES=a.png;b.png" -P EmbedPanels.cmake

set(arrays "")
set(table "")
foreach(image IN LISTS IMAGES)
  get_filename_component(name "${image}" NAME)
  get_filename_component(identifier "${image}" NAME_WE)
  file(READ "${image}" hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" escaped "${hex}")
  string(APPEND arrays "constexpr char ${identifier}[] = \"${escaped}\";\n")
  string(APPEND table "    {\"${name}\", {${identifier}, sizeof ${identifier} - 1}},\n")
endforeach()

file(WRITE "${OUTPUT}" "#include \"tools/backend/Panels.h\"

namespace backend {
namespace {

${arrays}
constexpr Panel kPanels[] = {
${table}};

}  // namespace

std::span<const Panel> panels() { return kPanels; }

}  // namespace backend
")
