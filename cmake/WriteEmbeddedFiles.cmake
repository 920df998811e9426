# Writes OUTPUT, the source of the function FUNCTION(), from the files of FOLDER and of folders in it. HEADER declares the
# function. With PACKED, each file is there as gzip, too.
file(GLOB_RECURSE names RELATIVE "${FOLDER}" "${FOLDER}/*")

# packed(FILE VARIABLE): the file as gzip, as an expression of C++. Its time is zero, so that the bytes are always the same.
function(packed file variable)
  file(ARCHIVE_CREATE OUTPUT "${OUTPUT}.gz" PATHS "${file}" FORMAT raw COMPRESSION GZip COMPRESSION_LEVEL 9)
  file(READ "${OUTPUT}.gz" bytes HEX)
  file(REMOVE "${OUTPUT}.gz")
  string(SUBSTRING "${bytes}" 0 8 start)
  string(SUBSTRING "${bytes}" 16 -1 rest)
  set(bytes "${start}00000000${rest}")
  string(LENGTH "${bytes}" digits)
  math(EXPR length "${digits} / 2")
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
  set(${variable} "std::string(\"${bytes}\", ${length})" PARENT_SCOPE)
endfunction()

set(files "")
foreach(name IN LISTS names)
  file(READ "${FOLDER}/${name}" text)
  set(second "std::string()")
  if(PACKED)
    packed("${FOLDER}/${name}" second)
  endif()
  string(APPEND files "      {\"${name}\", R\"embedded-file(${text})embedded-file\", ${second}},\n")
endforeach()
file(WRITE "${OUTPUT}" "#include \"${HEADER}\"

namespace devhost {

const std::vector<EmbeddedFile>& ${FUNCTION}() {
  static const std::vector<EmbeddedFile> files = {
${files}  };
  return files;
}

}  // namespace devhost
")
