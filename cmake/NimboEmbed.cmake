# nimbo_embed(target file symbol) - compiles a text file into a target.
#
# The target gains "embedded/<symbol>.hpp" with
#   namespace Embedded { inline constexpr std::string_view <symbol>; }
function(nimbo_embed target file symbol)
  get_filename_component(source ${file} ABSOLUTE)
  set(directory ${CMAKE_CURRENT_BINARY_DIR}/${target}_embedded)
  set(header ${directory}/embedded/${symbol}.hpp)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
  file(READ ${source} text)
  file(CONFIGURE OUTPUT ${header} @ONLY CONTENT
"// Made from ${file}.
#pragma once

#include <string_view>

namespace Embedded {

inline constexpr std::string_view ${symbol} = R\"nimbo_text(@text@)nimbo_text\";

}  // namespace Embedded
")
  target_include_directories(${target} PRIVATE ${directory})
endfunction()
