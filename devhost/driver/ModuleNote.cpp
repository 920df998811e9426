#include "devhost/driver/ModuleNote.h"

#include <elf.h>

#include <algorithm>
#include <cstdint>

#include "devhost/driver/DriverModule.h"
#include "devhost/driver/FileParts.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// In the file, a zero ends the name of the owner and counts as part of it.
constexpr char kOwnerBytes[] = "SnmpDriver";
constexpr std::string_view kOwner(kOwnerBytes, sizeof kOwnerBytes);

std::string NameOfProcessor(unsigned machine, unsigned flags) {
  switch (machine) {
    case EM_X86_64:
      return "amd64";
    case EM_AARCH64:
      return "arm64";
    case EM_386:
      return "i386";
    case EM_ARM:
      return (flags & EF_ARM_ABI_FLOAT_HARD) != 0 ? "armhf" : "armel";
    default:
      return "processor " + std::to_string(machine);
  }
}

// The text of our note among those that stand in `notes`, or "".
std::string_view TextOfOurs(std::string_view notes, std::uint64_t alignment) {
  const std::uint64_t unit = alignment == 8 ? 8 : 4;
  const auto padded = [unit](std::uint64_t size) { return (size + unit - 1) / unit * unit; };
  while (notes.size() >= sizeof(Elf32_Nhdr)) {
    const auto head = PartAt<Elf32_Nhdr>(notes, 0);  // the same for all processors
    const std::uint64_t text = padded(sizeof head + head.n_namesz);
    if (RangeAt(notes, sizeof head, head.n_namesz) == kOwner) {
      return RangeAt(notes, text, head.n_descsz);
    }
    notes = RangeAt(notes, text + padded(head.n_descsz), notes.size());
  }
  return "";
}

template <class Header, class Segment>
ModuleNote ReadNote(std::string_view file, const std::string& name) {
  const auto header = PartAt<Header>(file, 0);
  if (header.e_type != ET_DYN) {
    throw ModuleError(Quoted(name) + " is not a module: it is another kind of ELF file");
  }
  std::string_view text;
  for (std::uint64_t i = 0; i < header.e_phnum && text.empty(); ++i) {
    const auto segment = PartAt<Segment>(RangeAt(file, header.e_phoff + i * header.e_phentsize, sizeof(Segment)), 0);
    if (segment.p_type == PT_NOTE) {
      text = TextOfOurs(RangeAt(file, segment.p_offset, segment.p_filesz), segment.p_align);
    }
  }
  if (text.empty()) {
    throw ModuleError(Quoted(name) + " says nothing about itself: it has no note; snmp_driver() builds modules with one");
  }
  const auto value = [text](std::string_view key) {
    std::string_view rest = text;
    while (!rest.empty()) {
      const std::string_view line = rest.substr(0, rest.find('\n'));
      if (StartsWith(line, key)) {
        return std::string(line.substr(key.size()));
      }
      rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    }
    return std::string();
  };
  return {value("version="), value("contract="), value("enterprise="), NameOfProcessor(header.e_machine, header.e_flags)};
}

}  // namespace

ModuleNote ReadModuleNote(std::string_view file, const std::string& name) {
  if (file.size() < sizeof(Elf32_Ehdr) || !StartsWith(file, std::string_view(ELFMAG, SELFMAG))) {
    throw ModuleError(Quoted(name) + " is not a module: it is not an ELF file");
  }
  if (file[EI_DATA] != ELFDATA2LSB) {
    throw ModuleError(Quoted(name) + " is for a processor with the other order of bytes, which has no driver host");
  }
  return file[EI_CLASS] == ELFCLASS64 ? ReadNote<Elf64_Ehdr, Elf64_Phdr>(file, name)
                                      : ReadNote<Elf32_Ehdr, Elf32_Phdr>(file, name);
}

}  // namespace devhost
