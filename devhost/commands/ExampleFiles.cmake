# Writes OUTPUT, the source of ExampleFiles(), from the files of FOLDER.
file(GLOB names RELATIVE "${FOLDER}" "${FOLDER}/*")
set(files "")
foreach(name IN LISTS names)
  file(READ "${FOLDER}/${name}" text)
  string(APPEND files "      {\"${name}\", R\"example-file(${text})example-file\"},\n")
endforeach()
file(WRITE "${OUTPUT}" "#include \"devhost/commands/ExampleFiles.h\"

namespace devhost {

const std::vector<ExampleFile>& ExampleFiles() {
  static const std::vector<ExampleFile> files = {
${files}  };
  return files;
}

}  // namespace devhost
")
