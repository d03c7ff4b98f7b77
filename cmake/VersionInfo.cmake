# add_version_info(<target> COMPANY <text> PRODUCT <text>
#                  [VERSION <text>] [FILE_VERSION <text>] [DESCRIPTION <text>] [COPYRIGHT <text>])
#
# Embeds a version block into an executable or shared library, from which platform/version_info.h reads it back.
# VERSION is the product's version, and the file's too unless FILE_VERSION differs. A text that is not given is
# absent from the block. platform/version_note.h tells the form.

# Appends the bytes of one text and the zero that ends it.
function(_sq_note_text result text)
  string(HEX "${text}" hex)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  set(${result} "${${result}}    \".byte ${bytes}0x00\\n\"\n" PARENT_SCOPE)
endfunction()

function(add_version_info target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "COMPANY;PRODUCT;VERSION;FILE_VERSION;DESCRIPTION;COPYRIGHT" "")
  if(NOT DEFINED arg_COMPANY OR NOT DEFINED arg_PRODUCT OR DEFINED arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "add_version_info(${target} ...) needs COMPANY and PRODUCT and knows no "
                        "\"${arg_UNPARSED_ARGUMENTS}\"")
  endif()
  get_target_property(type ${target} TYPE)
  if(NOT type MATCHES "^(EXECUTABLE|SHARED_LIBRARY|MODULE_LIBRARY)$")
    message(FATAL_ERROR "add_version_info: ${target} is no executable or shared library, so the linker may drop "
                        "the block")
  endif()
  if(NOT DEFINED arg_FILE_VERSION AND DEFINED arg_VERSION)
    set(arg_FILE_VERSION "${arg_VERSION}")
  endif()

  set(content "")
  _sq_note_text(content "040904b0")
  foreach(pair "CompanyName=COMPANY" "ProductName=PRODUCT" "ProductVersion=VERSION"
               "FileDescription=DESCRIPTION" "FileVersion=FILE_VERSION" "LegalCopyright=COPYRIGHT")
    string(REGEX MATCH "^(.*)=(.*)$" pair "${pair}")
    if(DEFINED arg_${CMAKE_MATCH_2})
      set(argument "${CMAKE_MATCH_2}")
      _sq_note_text(content "${CMAKE_MATCH_1}")
      _sq_note_text(content "${arg_${argument}}")
    endif()
  endforeach()

  # Linkers keep note sections even where they collect unused ones.
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_version_info.cpp")
  file(CONFIGURE OUTPUT "${source}" @ONLY CONTENT [[
// Made by add_version_info().
asm(".pushsection .note.sqstorage.version,\"a\",@note\n"
    ".balign 4\n"
    ".long 2f-1f, 4f-3f, 1\n"
    "1: .asciz \"sqStorage\"\n"
    "2: .balign 4\n"
    "3:\n"
@content@    "4: .balign 4\n"
    ".popsection\n");
]])
  set_source_files_properties("${source}" PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
  target_sources(${target} PRIVATE "${source}")
endfunction()
