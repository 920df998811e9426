#include "devhost/driver/ModuleTables.h"

#include <elf.h>
#include <link.h>

#include "devhost/driver/DriverModule.h"
#include "devhost/driver/FileParts.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr unsigned kOwnClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

using Section = ElfW(Shdr);

std::string NameAt(std::string_view names, std::uint64_t offset) {
  const std::string_view rest = RangeAt(names, offset, names.size());
  return std::string(rest.substr(0, rest.find('\0')));
}

class TableReader {
 public:
  explicit TableReader(std::string_view file) : m_file(file), m_header(PartAt<ElfW(Ehdr)>(file, 0)) {}

  bool HasSymbols() const { return m_hasSymbols; }

  ModuleTables Read() {
    for (unsigned i = 0; i != m_header.e_shnum; ++i) {
      const Section section = SectionAt(i);
      if (section.sh_type == SHT_DYNSYM) {
        m_hasSymbols = true;
        ReadSymbols(section);
      } else if (section.sh_type == SHT_DYNAMIC) {
        ReadLibraries(section);
      }
    }
    return m_tables;
  }

 private:
  Section SectionAt(std::uint64_t number) const {
    return PartAt<Section>(m_file, m_header.e_shoff + number * m_header.e_shentsize);
  }
  std::string_view ContentOf(const Section& section) const { return RangeAt(m_file, section.sh_offset, section.sh_size); }

  void ReadSymbols(const Section& section) {
    const std::string_view names = ContentOf(SectionAt(section.sh_link));
    const std::string_view symbols = ContentOf(section);
    for (std::size_t at = 0; at + sizeof(ElfW(Sym)) <= symbols.size(); at += sizeof(ElfW(Sym))) {
      const auto symbol = PartAt<ElfW(Sym)>(symbols, at);
      const std::string name = NameAt(names, symbol.st_name);
      const unsigned binding = symbol.st_info >> 4U;
      if (name.empty() || binding == STB_LOCAL || symbol.st_shndx == SHN_ABS) {
        continue;
      }
      if (symbol.st_shndx != SHN_UNDEF) {
        m_tables.offered.push_back(name);
      } else if (binding == STB_GLOBAL) {
        m_tables.taken.push_back(name);
      }
    }
  }

  void ReadLibraries(const Section& section) {
    const std::string_view names = ContentOf(SectionAt(section.sh_link));
    const std::string_view entries = ContentOf(section);
    for (std::size_t at = 0; at + sizeof(ElfW(Dyn)) <= entries.size(); at += sizeof(ElfW(Dyn))) {
      const auto entry = PartAt<ElfW(Dyn)>(entries, at);
      if (entry.d_tag == DT_NULL) {
        return;
      }
      if (entry.d_tag == DT_NEEDED) {
        m_tables.libraries.push_back(NameAt(names, entry.d_un.d_val));
      }
    }
  }

  const std::string_view m_file;
  const ElfW(Ehdr) m_header;
  bool m_hasSymbols = false;
  ModuleTables m_tables;
};

}  // namespace

ModuleTables ReadModuleTables(std::string_view file, const std::string& name) {
  if (file.size() < sizeof(ElfW(Ehdr)) || !StartsWith(file, std::string_view(ELFMAG, SELFMAG))) {
    throw ModuleError(Quoted(name) + " is not a module: it is not an ELF file");
  }
  if (static_cast<unsigned char>(file[EI_CLASS]) != kOwnClass) {
    throw ModuleError(Quoted(name) + " is for another processor than this host");
  }
  TableReader reader(file);
  ModuleTables tables = reader.Read();
  if (!reader.HasSymbols()) {
    throw ModuleError(Quoted(name) + " is not a module: it has no table of symbols");
  }
  return tables;
}

}  // namespace devhost
