#include "devhost/driver/ModuleNote.h"

#include <elf.h>
#include <gmock/gmock.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "devhost/driver/DriverModule.h"
#include "tests/devhost/support/TestModules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;

std::string ErrorOf(const std::string& file) {
  try {
    ReadModuleNote(file, "a.so");
  } catch (const ModuleError& error) {
    return error.what();
  }
  return "";
}

std::string Module() {
  return testsupport::ScratchFolder::ReadFile(TestModule("well_behaved"));
}

template <class Part>
std::string Bytes(const Part& part) {
  return std::string(reinterpret_cast<const char*>(&part), sizeof part);
}

// One note. Name and text are filled up to a multiple of four bytes.
std::string Note(const std::string& owner, const std::string& text) {
  Elf32_Nhdr head = {};
  head.n_namesz = static_cast<Elf32_Word>(owner.size());
  head.n_descsz = static_cast<Elf32_Word>(text.size());
  const auto padded = [](std::string bytes) { return bytes.append((4 - bytes.size() % 4) % 4, '\0'); };
  return Bytes(head) + padded(owner) + padded(text);
}

const std::string kOurs("SnmpDriver\0", 11);

// A module for 32-bit ARM that is a header, one segment of notes and the notes.
std::string ArmModule(const std::string& notes) {
  Elf32_Ehdr header = {};
  std::memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = ELFCLASS32;
  header.e_ident[EI_DATA] = ELFDATA2LSB;
  header.e_type = ET_DYN;
  header.e_machine = EM_ARM;
  header.e_flags = EF_ARM_ABI_FLOAT_HARD;
  header.e_phoff = sizeof header;
  header.e_phentsize = sizeof(Elf32_Phdr);
  header.e_phnum = 1;
  Elf32_Phdr segment = {};
  segment.p_type = PT_NOTE;
  segment.p_offset = sizeof header + sizeof segment;
  segment.p_filesz = static_cast<Elf32_Word>(notes.size());
  segment.p_align = 4;
  return Bytes(header) + Bytes(segment) + notes;
}

TEST(AModulesNote, HasTheVersionOfItsProjectAndTheContract) {
  const ModuleNote note = ReadModuleNote(Module(), "a.so");
  EXPECT_EQ(note.version, PROJECT_VERSION);
  EXPECT_EQ(note.contract, SNMP_DRIVER_CONTRACT);
  EXPECT_EQ(note.enterpriseNumber, "");
  EXPECT_NE(note.processor, "");
}

TEST(AModulesNote, IsReadForOtherProcessorsToo) {
  const ModuleNote note = ReadModuleNote(ArmModule(Note(kOurs, "version=2.3\ncontract=9\nenterprise=77\n")), "a.so");
  EXPECT_EQ(note.version, "2.3");
  EXPECT_EQ(note.contract, "9");
  EXPECT_EQ(note.enterpriseNumber, "77");
  EXPECT_EQ(note.processor, "armhf");
}

TEST(AModulesNote, IsFoundBehindNotesOfOthers) {
  const std::string other = Note(std::string("GNU\0", 4), "version=1\n") + Note(std::string("A\0", 2), "xyz");
  EXPECT_EQ(ReadModuleNote(ArmModule(other + Note(kOurs, "version=2\n")), "a.so").version, "2");
  EXPECT_THAT(ErrorOf(ArmModule(other)), HasSubstr("\"a.so\" says nothing about itself: it has no note"));
}

TEST(AModulesNote, StatesWhatItHas) {
  const ModuleNote note = ReadModuleNote(ArmModule(Note(kOurs, "new=1\nversion=2")), "a.so");
  EXPECT_EQ(note.version, "2");
  EXPECT_EQ(note.contract, "");
}

TEST(AFileThatIsNotAModule, IsRefusedWithTheReason) {
  EXPECT_THAT(ErrorOf(""), HasSubstr("\"a.so\" is not a module: it is not an ELF file"));
  EXPECT_THAT(ErrorOf(std::string(1000, 'x')), HasSubstr("it is not an ELF file"));
  std::string file = ArmModule(Note(kOurs, "version=2\n"));
  file[EI_DATA] = ELFDATA2MSB;
  EXPECT_THAT(ErrorOf(file), HasSubstr("the other order of bytes"));
  file[EI_DATA] = ELFDATA2LSB;
  file[offsetof(Elf32_Ehdr, e_type)] = ET_REL;
  EXPECT_THAT(ErrorOf(file), HasSubstr("it is another kind of ELF file"));
}

// Sizes that point behind the end are cut there; the sanitizers see a read behind it.
TEST(AFileThatIsCutAnywhere, IsReadNoFurther) {
  const std::string whole = ArmModule(Note(kOurs, "version=2.3\ncontract=9\n"));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const std::string cut = whole.substr(0, size);
    if (ErrorOf(cut).empty()) {
      EXPECT_THAT("version=2.3", testing::StartsWith("version=" + ReadModuleNote(cut, "a.so").version)) << size;
    }
  }
  for (std::size_t place = 0; place < whole.size(); ++place) {
    std::string changed = whole;
    changed[place] = '\xff';
    ErrorOf(changed);
  }
}

}  // namespace
}  // namespace devhost
