# embed_files(FUNCTION FOLDER HEADER [PACKED]): the files of the folder and of folders in it become part of the development
# host, with PACKED as gzip, too. HEADER declares the function that returns them.
set(embedded_files_script "${CMAKE_CURRENT_LIST_DIR}/WriteEmbeddedFiles.cmake")
function(embed_files function folder header)
  cmake_parse_arguments(PARSE_ARGV 3 arg "PACKED" "" "")
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${function}.cpp")
  file(GLOB_RECURSE files CONFIGURE_DEPENDS "${folder}/*")
  add_custom_command(OUTPUT "${source}" DEPENDS "${embedded_files_script}" ${files} VERBATIM
    COMMAND ${CMAKE_COMMAND} "-DFOLDER=${folder}" "-DOUTPUT=${source}" "-DFUNCTION=${function}" "-DHEADER=${header}"
            "-DPACKED=${arg_PACKED}" -P "${embedded_files_script}")
  add_custom_target(source_of_${function} DEPENDS "${source}")
  add_dependencies(devhost_library source_of_${function})
  target_sources(devhost_library PRIVATE "${source}")
  set_source_files_properties("${source}" TARGET_DIRECTORY devhost_library PROPERTIES GENERATED ON)
endfunction()
