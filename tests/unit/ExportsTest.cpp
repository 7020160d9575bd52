#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

// The names of the defined symbols in the library's dynamic symbol table.
std::set<std::string> definedDynamicSymbols(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<char> image((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (image.size() < sizeof(Elf64_Ehdr)) return {};
    Elf64_Ehdr header;
    std::memcpy(&header, image.data(), sizeof header);
    std::vector<Elf64_Shdr> sections(header.e_shnum);
    std::memcpy(sections.data(), image.data() + header.e_shoff, header.e_shnum * sizeof(Elf64_Shdr));
    std::set<std::string> names;
    for (const auto& section : sections) {
        if (section.sh_type != SHT_DYNSYM) continue;
        const char* strings = image.data() + sections[section.sh_link].sh_offset;
        for (std::size_t at = section.sh_offset; at + sizeof(Elf64_Sym) <= section.sh_offset + section.sh_size;
             at += sizeof(Elf64_Sym)) {
            Elf64_Sym symbol;
            std::memcpy(&symbol, image.data() + at, sizeof symbol);
            if (symbol.st_shndx == SHN_UNDEF || symbol.st_name == 0) continue;
            names.insert(strings + symbol.st_name);
        }
    }
    return names;
}

TEST(Exports, TheLibraryExportsExactlyTheNineteenEntryPoints) {
    const std::set<std::string> expected = {
        "initializeEventMonitor",   "updateShortcutEnabledState", "activateVelmoraTab",
        "triggerAssistant",         "triggerMissedAssistant",     "openShortcutsTaskpane",
        "openAssistantTaskpane",    "openIconTaskpane",           "openImageTaskpane",
        "openColorBarTaskpane",     "openSlideLibraryTaskpane",   "openTemplateLibraryTaskpane",
        "refreshSlideLibraryTaskpane", "triggerColorThemeRefresh", "initializeTablesOverlay",
        "initializeLinesOverlay",   "initializeTaggingOverlay",   "initializeLoginOverlay",
        "initializeFreeTrialOverlay",
    };
    EXPECT_EQ(definedDynamicSymbols(VELMORA_LIBRARY_PATH), expected);
}

TEST(Exports, TheLibraryRunsInAProcessWithoutAHost) {
    // No velmoraLinuxHost here: the library falls back to its own services,
    // and a macro call fails as with the host not running.
    void* library = dlopen(VELMORA_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto update = reinterpret_cast<void (*)()>(dlsym(library, "updateShortcutEnabledState"));
    using Flag = std::uint8_t;
    auto tables = reinterpret_cast<void (*)(const char*, const char*, Flag, Flag, Flag, Flag, Flag)>(
        dlsym(library, "initializeTablesOverlay"));
    ASSERT_TRUE(update && tables);
    update();
    tables("2", "2", 1, 0xFF, 1, 0, 1);
}

}  // namespace
