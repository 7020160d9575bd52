// Loading the library runs none of its code, and exiting destroys none of
// its objects: process-wide state is constant-initialised or made at first
// use and never destroyed (threads and queued blocks may outlive main).
// Read from the built library's symbol tables.

#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace {

struct Symbol {
    std::string name;
    bool defined = false;
};

// The symbols of every table of `type` (SHT_SYMTAB or SHT_DYNSYM).
std::vector<Symbol> symbols(const std::string& path, std::uint32_t type) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    std::vector<Symbol> result;
    if (!in) return result;
    std::vector<char> image(static_cast<std::size_t>(in.tellg()));
    in.seekg(0);
    if (!in.read(image.data(), static_cast<std::streamsize>(image.size())) || image.size() < sizeof(Elf64_Ehdr)) {
        return result;
    }
    Elf64_Ehdr header;
    std::memcpy(&header, image.data(), sizeof header);
    if (header.e_shoff + header.e_shnum * sizeof(Elf64_Shdr) > image.size()) return result;
    std::vector<Elf64_Shdr> sections(header.e_shnum);
    std::memcpy(sections.data(), image.data() + header.e_shoff, header.e_shnum * sizeof(Elf64_Shdr));
    for (const auto& section : sections) {
        if (section.sh_type != type || section.sh_link >= sections.size()) continue;
        const char* strings = image.data() + sections[section.sh_link].sh_offset;
        for (std::size_t at = section.sh_offset; at + sizeof(Elf64_Sym) <= section.sh_offset + section.sh_size;
             at += sizeof(Elf64_Sym)) {
            Elf64_Sym symbol;
            std::memcpy(&symbol, image.data() + at, sizeof symbol);
            if (symbol.st_name == 0) continue;
            result.push_back({strings + symbol.st_name, symbol.st_shndx != SHN_UNDEF});
        }
    }
    return result;
}

TEST(StaticState, TheLibraryHasNoDynamicInitialisersAndRegistersNoExitTimeDestructors) {
    const auto table = symbols(VELMORA_LIBRARY_PATH, SHT_SYMTAB);
    if (table.empty()) GTEST_SKIP() << "the library has no symbol table (stripped)";

    // A file's dynamic initialisation is one "_GLOBAL__sub_I_<file>"
    // function; the sanitizers' own constructors carry a priority number
    // ("_GLOBAL__sub_I_00099_0_<file>") and are not the library's state.
    const std::regex sanitizerConstructor("_GLOBAL__sub_I_[0-9]{5}_.*");
    std::vector<std::string> initialisers;
    for (const auto& symbol : table) {
        if (symbol.name.starts_with("_GLOBAL__sub_I_") && !std::regex_match(symbol.name, sanitizerConstructor)) {
            initialisers.push_back(symbol.name);
        }
    }
    EXPECT_EQ(initialisers, std::vector<std::string>{});

    // A static whose destructor runs at exit is registered with __cxa_atexit;
    // with none, the library does not even import it. (Thread-locals use
    // __cxa_thread_atexit: each belongs to its own thread, which is allowed.)
    bool importsAtexit = false;
    for (const auto& symbol : symbols(VELMORA_LIBRARY_PATH, SHT_DYNSYM)) {
        if (!symbol.defined && (symbol.name == "__cxa_atexit" || symbol.name == "atexit")) importsAtexit = true;
    }
    EXPECT_FALSE(importsAtexit) << "a static of the library registers a destructor at exit; see\n"
                                   "  objdump -d --no-show-raw-insn -C LIBRARY | grep -B30 'call.*__cxa_atexit'";
}

}  // namespace
