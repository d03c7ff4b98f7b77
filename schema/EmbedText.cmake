# cmake -DINPUT=<file> -DOUTPUT=<header> -DNAMESPACE=<namespace> -DNAME=<identifier> -P EmbedText.cmake
#
# Writes a header in which the file's bytes stand as a constexpr std::string_view. Bytes are written one by one
# and not as a string literal, whose length compilers limit.

foreach(argument INPUT OUTPUT NAMESPACE NAME)
  if(NOT ${argument})
    message(FATAL_ERROR "EmbedText.cmake needs -D${argument}=...")
  endif()
endforeach()

file(READ "${INPUT}" bytes HEX)
if(NOT bytes)
  message(FATAL_ERROR "'${INPUT}' is empty")
endif()
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
string(REPEAT "......," 16 line)
string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")

file(WRITE "${OUTPUT}" "// Made from ${INPUT}
#pragma once

#include <string_view>

namespace ${NAMESPACE} {
inline constexpr char ${NAME}Bytes[] = {
${bytes}
};
inline constexpr std::string_view ${NAME}{${NAME}Bytes, sizeof(${NAME}Bytes)};
} // namespace ${NAMESPACE}
")
