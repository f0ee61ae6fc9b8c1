# Compiles every file of the SDK's resource bundle into the library.
# embed_resources(<folder> <output.cpp>): the output defines vantorium::ui::bundleResource.
function(embed_resources folder output)
  file(GLOB_RECURSE files CONFIGURE_DEPENDS RELATIVE ${folder} ${folder}/*.json ${folder}/*.svg ${folder}/*.png)
  set(arrays "")
  set(entries "")
  set(index 0)
  foreach(file IN LISTS files)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${folder}/${file})
    file(READ ${folder}/${file} hex HEX)
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
    string(APPEND arrays "constexpr unsigned char file${index}[] = {${bytes}};\n")
    string(APPEND entries "    {\"${file}\", {reinterpret_cast<const char*>(file${index}), sizeof file${index}}},\n")
    math(EXPR index "${index} + 1")
  endforeach()
  file(CONFIGURE OUTPUT ${output} CONTENT
"// Made from the files of the resource bundle.
#include \"platform/ui/interface_file.hpp\"
namespace vantorium::ui {
namespace {
@arrays@}  // namespace
std::string_view bundleResource(std::string_view name) {
  static const std::map<std::string_view, std::string_view> files{
@entries@  };
  const auto found = files.find(name);
  return found == files.end() ? std::string_view{} : found->second;
}
}  // namespace vantorium::ui
" @ONLY)
endfunction()
