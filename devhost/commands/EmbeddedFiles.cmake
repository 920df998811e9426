# Writes OUTPUT, the source of the function FUNCTION(), from the files of FOLDER.
file(GLOB names RELATIVE "${FOLDER}" "${FOLDER}/*")
set(files "")
foreach(name IN LISTS names)
  file(READ "${FOLDER}/${name}" text)
  string(APPEND files "      {\"${name}\", R\"embedded-file(${text})embedded-file\"},\n")
endforeach()
file(WRITE "${OUTPUT}" "#include \"devhost/commands/EmbeddedFiles.h\"

namespace devhost {

const std::vector<EmbeddedFile>& ${FUNCTION}() {
  static const std::vector<EmbeddedFile> files = {
${files}  };
  return files;
}

}  // namespace devhost
")
