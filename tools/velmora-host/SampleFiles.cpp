// The installation's data files, of the simulator's own making, placed in
// its sandbox as the add-in's installer would place them: a sample
// Shortcuts.xml, a small PNG button image for each row icon the assistant
// and the sample catalogue name, and the table builder's SVG icons.
// "Default.png" is left out on purpose, so an unknown missed command shows
// the fallback symbol.
//
// Commands: `catalogue sample|none|TEXT`, `iconfile NAME sample|broken|none`;
// show: `show samples [icons]`.

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace {

const std::string installFolder = "/Library/Application Support/Microsoft/Velmora/PowerPoint";
const std::string cataloguePath = installFolder + "/Shortcuts.xml";
const std::string iconFolder = installFolder + "/Icons/";
const std::string tablesFolder = installFolder + "/Tables/";

// The table builder's four icons, as SVG: a grid of 3 by 3 cells with the
// rows, the columns, the title row or the title column drawn in red.
std::string tableIconSvg(const std::string& marked) {
    std::string cells;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const bool red = (marked == "TitleRow" && row == 0) || (marked == "TitleColumn" && column == 0);
            cells += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"9\" height=\"9\" rx=\"1\" fill=\"{}\"/>",
                                 3 + column * 10, 3 + row * 10, red ? "#FE6B6B" : "#C9CDD3");
        }
    }
    if (marked == "Rows") cells += "<path d=\"M2 8h31M2 18h31M2 28h31\" stroke=\"#FE6B6B\" stroke-width=\"2\"/>";
    if (marked == "Columns") cells += "<path d=\"M8 2v31M18 2v31M28 2v31\" stroke=\"#FE6B6B\" stroke-width=\"2\"/>";
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 35 35\" width=\"35\" height=\"35\">" + cells + "</svg>\n";
}

// --- PNG, written by hand: stored (uncompressed) deflate blocks need no zlib.

std::uint32_t crc32(const std::string& bytes) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t n = 0; n < 256; ++n) {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    std::uint32_t c = 0xFFFFFFFFu;
    for (unsigned char byte : bytes) c = table[(c ^ byte) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

void putBigEndian(std::string& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((value >> shift) & 0xFF);
}

void putChunk(std::string& png, const char* type, const std::string& data) {
    putBigEndian(png, static_cast<std::uint32_t>(data.size()));
    std::string body = std::string(type, 4) + data;
    png += body;
    putBigEndian(png, crc32(body));
}

std::string zlibStored(const std::string& raw) {
    std::string out = "\x78\x01";
    std::size_t at = 0;
    do {
        std::size_t length = std::min<std::size_t>(65535, raw.size() - at);
        bool last = at + length == raw.size();
        out += static_cast<char>(last ? 1 : 0);
        out += static_cast<char>(length & 0xFF);
        out += static_cast<char>(length >> 8);
        out += static_cast<char>(~length & 0xFF);
        out += static_cast<char>((~length >> 8) & 0xFF);
        out.append(raw, at, length);
        at += length;
    } while (at < raw.size());
    std::uint32_t a = 1, b = 0;
    for (unsigned char byte : raw) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    putBigEndian(out, (b << 16) | a);
    return out;
}

struct Rgb {
    std::uint8_t r, g, b;
};

// A 32 x 32 button image: a rounded square in `fill` with a light inner
// ring, transparent corners.
std::string buttonPng(Rgb fill) {
    constexpr int size = 32;
    std::string raw;
    for (int y = 0; y < size; ++y) {
        raw += '\0';  // no filter
        for (int x = 0; x < size; ++x) {
            int dx = std::min(x, size - 1 - x), dy = std::min(y, size - 1 - y);
            bool corner = dx + dy < 3;
            bool ring = !corner && (std::min(dx, dy) == 4 || std::min(dx, dy) == 5);
            Rgb c = ring ? Rgb{255, 255, 255} : fill;
            raw += static_cast<char>(c.r);
            raw += static_cast<char>(c.g);
            raw += static_cast<char>(c.b);
            raw += static_cast<char>(corner ? 0 : 255);
        }
    }
    std::string header;
    putBigEndian(header, size);
    putBigEndian(header, size);
    header += std::string("\x08\x06\x00\x00\x00", 5);  // 8 bits, RGBA
    std::string png = "\x89PNG\r\n\x1a\n";
    putChunk(png, "IHDR", header);
    putChunk(png, "IDAT", zlibStored(raw));
    putChunk(png, "IEND", "");
    return png;
}

// --- the sample data ----------------------------------------------------------

const std::map<std::string, Rgb>& sampleIcons() {
    static const Rgb align{0x44, 0x72, 0xC4}, arrange{0xED, 0x7D, 0x31}, text{0x70, 0xAD, 0x47},
        insert{0x5B, 0x9B, 0xD5}, slides{0xA5, 0x5E, 0xA8};
    static const std::map<std::string, Rgb> icons = {
        {"AlignLeft.png", align},         {"AlignRight.png", align},
        {"AlignCenter.png", align},       {"AlignTop.png", align},
        {"AlignMiddle.png", align},       {"AlignBottom.png", align},
        {"DistributeHorizontal.png", align}, {"DistributeVertical.png", align},
        {"BringToFront.png", arrange},    {"BringForward.png", arrange},
        {"SendToBack.png", arrange},      {"SendBackward.png", arrange},
        {"Group.png", arrange},           {"Ungroup.png", arrange},
        {"SwapIcon.png", arrange},        {"ToggleHarvey.png", arrange},
        {"SameWidth.png", arrange},       {"SameHeight.png", arrange},
        {"FontIncrease.png", text},       {"FontDecrease.png", text},
        {"WordWrap.png", text},           {"Autofit.png", text},
        {"DisableAutofit.png", text},     {"IncreaseMargin.png", text},
        {"DecreaseMargin.png", text},     {"ListLineSpacing.png", text},
        {"Textbox.png", insert},          {"Sticky.png", insert},
        {"NewSlide.png", slides},         {"Send.png", slides},
        {"Shortcuts.png", slides},        {"VelmoraTable.png", insert},
    };
    return icons;
}

// Categories come back later in the file ("Align" after "Arrange"), and one
// name carries an entity, as a hand-kept catalogue would.
const char* const sampleCatalogue = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- Velmora shortcut catalogue: a sample made for the host simulator. -->
<shortcuts>
  <object>
    <category>Align</category>
    <name>Align Left</name>
    <shortcut>Ctrl, Cmd, ←</shortcut>
    <img>AlignLeft.png</img>
  </object>
  <object>
    <category>Align</category>
    <name>Align Center</name>
    <shortcut>Ctrl, Cmd, C</shortcut>
    <img>AlignCenter.png</img>
  </object>
  <object>
    <category>Align</category>
    <name>Align Top</name>
    <shortcut>Ctrl, Cmd, ↑</shortcut>
    <img>AlignTop.png</img>
  </object>
  <object>
    <category>Arrange</category>
    <name>Bring to Front</name>
    <shortcut>Cmd, Opt, Shift, F</shortcut>
    <img>BringToFront.png</img>
  </object>
  <object>
    <category>Arrange</category>
    <name>Swap Objects</name>
    <shortcut>Ctrl, 3</shortcut>
    <img>SwapIcon.png</img>
  </object>
  <object>
    <category>Arrange</category>
    <name>Copy &amp; Paste Position</name>
    <shortcut>Ctrl, 1 / 2</shortcut>
    <img>SwapIcon.png</img>
  </object>
  <object>
    <category>Align</category>
    <name>Distribute Horizontal</name>
    <shortcut>Ctrl, Cmd, H</shortcut>
    <img>DistributeHorizontal.png</img>
  </object>
  <object>
    <category>Text</category>
    <name>Disable Word Wrap</name>
    <shortcut>Shift, Cmd, 7</shortcut>
    <img>WordWrap.png</img>
  </object>
  <object>
    <category>Text</category>
    <name>Increase Font</name>
    <shortcut>Cmd, Shift, .</shortcut>
    <img>FontIncrease.png</img>
  </object>
  <object>
    <category>Panes</category>
    <name>Velmora Shortcuts</name>
    <shortcut>Ctrl, Cmd, I</shortcut>
    <img>Shortcuts.png</img>
  </object>
  <object>
    <category>Panes</category>
    <name>Close Tool Window</name>
    <shortcut>Esc</shortcut>
    <img>Unknown.png</img>
  </object>
</shortcuts>
)";

std::filesystem::path sandboxed(const std::string& path) { return Host::instance().sandboxRoot() + path; }

void writeFile(const std::string& path, const std::string& bytes) {
    auto target = sandboxed(path);
    std::error_code ec;
    std::filesystem::create_directories(target.parent_path(), ec);
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw ScenarioError("cannot write " + target.string());
}

void removeFile(const std::string& path) {
    std::error_code ec;
    std::filesystem::remove(sandboxed(path), ec);
}

// Plain filled boxes as the macro project reports them, for the tour's selections.
std::string boxesJSON(std::initializer_list<std::array<int, 4>> boxes) {
    std::string json = "[";
    int id = 0;
    for (const auto& [top, left, width, height] : boxes) {
        ++id;
        json += fmt::format(
            "{}{{\"ID\":{},\"Name\":\"Box {}\",\"Top\":{},\"Left\":{},\"Width\":{},\"Height\":{},\"ShpType\":\"1\","
            "\"HasFill\":true,\"FillColor\":255,\"HasTextFrame\":true,\"HasText\":false,\"AutoSize\":false,"
            "\"WordWrap\":true,\"MarginTop\":3.6,\"MarginLeft\":7.2,\"ZOrder\":{},\"HasLineBreaks\":false}}",
            id == 1 ? "" : ",", id, id, top, left, width, height, id);
    }
    return json + "]";
}

void installSampleFiles() {
    if (Host::instance().sandboxRoot().empty()) return;  // no sandbox: nothing to install into
    writeFile(cataloguePath, sampleCatalogue);
    for (const auto& [name, colour] : sampleIcons()) writeFile(iconFolder + name, buttonPng(colour));
    for (const char* name : {"Rows", "Columns", "TitleRow", "TitleColumn"}) {
        writeFile(tablesFolder + name + ".svg", tableIconSvg(name));
    }
    // Three boxes in a row, unevenly spaced and of different heights; and the first two alone.
    writeFile("/Shapes/three-boxes.json", boxesJSON({{10, 0, 50, 40}, {30, 80, 50, 60}, {50, 200, 50, 20}}));
    writeFile("/Shapes/two-boxes.json", boxesJSON({{10, 0, 50, 40}, {30, 80, 50, 60}}));
}

// Installed before the first command, as the add-in's installer would have.
[[maybe_unused]] const bool installed = (installSampleFiles(), true);

[[maybe_unused]] const bool registered[] = {
    registerCommand({"catalogue", "catalogue sample|none|TEXT", 1, 1,
                     [](const Arguments& a) {
                         if (a[0] == "sample") {
                             writeFile(cataloguePath, sampleCatalogue);
                         } else if (a[0] == "none") {
                             removeFile(cataloguePath);
                         } else {
                             writeFile(cataloguePath, a[0]);
                         }
                     }}),
    registerCommand({"iconfile", "iconfile NAME sample|broken|none", 2, 2,
                     [](const Arguments& a) {
                         if (a[0].empty() || a[0].find('/') != std::string::npos) {
                             throw ScenarioError("an icon is named by its file name alone");
                         }
                         if (a[1] == "sample") {
                             writeFile(iconFolder + a[0], buttonPng({0x88, 0x88, 0x88}));
                         } else if (a[1] == "broken") {
                             writeFile(iconFolder + a[0], "not an image");
                         } else if (a[1] == "none") {
                             removeFile(iconFolder + a[0]);
                         } else {
                             throw ScenarioError("iconfile takes sample, broken or none");
                         }
                     }}),
    registerShow({"samples", "show samples [icons]", 0, 1,
                  [](const Arguments& a) {
                      if (!a.empty() && a[0] != "icons") throw ScenarioError("show samples takes icons or nothing");
                      auto& host = Host::instance();
                      std::error_code ec;
                      auto size = std::filesystem::file_size(sandboxed(cataloguePath), ec);
                      host.emit(ec ? "samples: Shortcuts.xml absent"
                                   : fmt::format("samples: Shortcuts.xml {} bytes", size));
                      std::vector<std::string> names;
                      for (const auto& entry : std::filesystem::directory_iterator(sandboxed(iconFolder), ec)) {
                          names.push_back(entry.path().filename().string());
                      }
                      std::sort(names.begin(), names.end());
                      host.emit(fmt::format("samples: {} icons in {}", names.size(), iconFolder));
                      if (!a.empty()) {
                          for (const auto& name : names) host.emit("samples: icon " + name);
                      }
                  }}),
};

}  // namespace

}  // namespace velmora::host
