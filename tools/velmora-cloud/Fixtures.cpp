#include "Fixtures.h"

#include <cairo.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "IconFixtures.h"
#include "PhotoFixtures.h"
#include "support/Text.h"

namespace velmora::cloud {

namespace {

constexpr int sharedThumbA = 5, sharedThumbB = 11;
constexpr int largestNumber = 1'000'000;
// Thumbnails are drawn in one dark grey; downloads come in the colour asked for.
constexpr const char* thumbnailColour = "#2B3440";

const std::array<const char*, 12> titles = {"Agenda",  "Timeline", "Org Chart", "SWOT",    "Roadmap", "Pricing",
                                             "Überblick", "Quote",  "Process",   "Compare", "Funnel",  "Thank You"};
const std::array<const char*, 4> categories = {"Business", "Charts", "Timelines", ""};
const std::array<const char*, 3> packs = {"Essentials", "Pro", ""};

std::string located(const std::string& file, int turn, const std::string& cdnBase) {
    switch (turn % 3) {
        case 0: return file;
        case 1: return "/" + file;
        default: return cdnBase + file;
    }
}


// Segments a..g of each digit, a the top, clockwise, g the middle.
constexpr std::array<unsigned, 10> segmentMasks = {0x3f, 0x06, 0x5b, 0x4f, 0x66, 0x6d, 0x7d, 0x07, 0x7f, 0x6f};

void drawDigit(cairo_t* cr, int digit, double x, double y, double w, double h, double t) {
    const double half = h / 2;
    const std::array<std::array<double, 4>, 7> segments = {{
        {x, y, w, t},                         // a
        {x + w - t, y, t, half},              // b
        {x + w - t, y + half, t, half},       // c
        {x, y + h - t, w, t},                 // d
        {x, y + half, t, half},               // e
        {x, y, t, half},                      // f
        {x, y + half - t / 2, w, t},          // g
    }};
    for (std::size_t s = 0; s < segments.size(); ++s) {
        if (segmentMasks[static_cast<std::size_t>(digit)] & (1u << s)) {
            cairo_rectangle(cr, segments[s][0], segments[s][1], segments[s][2], segments[s][3]);
        }
    }
    cairo_fill(cr);
}

cairo_status_t appendPNG(void* target, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

std::optional<int> numberIn(const std::string& text, const std::string& prefix, const std::string& suffix) {
    if (text.size() <= prefix.size() + suffix.size() || text.compare(0, prefix.size(), prefix) != 0 ||
        text.compare(text.size() - suffix.size(), suffix.size(), suffix) != 0) {
        return std::nullopt;
    }
    const char* first = text.data() + prefix.size();
    const char* last = text.data() + text.size() - suffix.size();
    int number = 0;
    auto [end, error] = std::from_chars(first, last, number);
    if (error != std::errc{} || end != last || number < 1 || number > largestNumber) return std::nullopt;
    // One spelling per file: "tpl-0042", not "tpl-42" or "tpl-00042".
    if (fmt::format("{:04}", number) != std::string(first, last)) return std::nullopt;
    return number;
}

}  // namespace

TemplateFixture templateFixture(int number, const std::string& cdnBase) {
    TemplateFixture f;
    f.number = number;
    f.id = fmt::format("tpl-{:04}", number);
    f.title = fmt::format("{} {}", titles[static_cast<std::size_t>(number - 1) % titles.size()], number);
    if (number == sharedThumbA) {
        f.thumbFile = "thumbs/cover.png";
    } else if (number == sharedThumbB) {
        f.thumbFile = "thumbs/extra/cover.png";
    } else {
        f.thumbFile = "thumbs/" + f.id + ".png";
    }
    f.pptxFile = "slides/" + f.id + ".pptx";
    f.thumb = located(f.thumbFile, number - 1, cdnBase);
    f.pptx = located(f.pptxFile, number, cdnBase);
    f.cat = categories[static_cast<std::size_t>(number - 1) % categories.size()];
    f.pack = packs[static_cast<std::size_t>(number - 1) % packs.size()];
    return f;
}

std::vector<TemplateFixture> catalogue(std::size_t count, const std::string& cdnBase) {
    std::vector<TemplateFixture> all;
    all.reserve(count);
    for (std::size_t i = 1; i <= count; ++i) all.push_back(templateFixture(static_cast<int>(i), cdnBase));
    return all;
}

std::string manifestText(std::size_t count, const std::string& cdnBase) {
    auto slides = nlohmann::ordered_json::array();
    for (const auto& f : catalogue(count, cdnBase)) {
        slides.push_back({{"id", f.id}, {"title", f.title}, {"thumb", f.thumb},
                          {"pptx", f.pptx}, {"cat", f.cat}, {"pack", f.pack}});
    }
    return nlohmann::ordered_json{{"slides", std::move(slides)}}.dump();
}

std::mutex& drawingMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string thumbnailPNG(int number) {
    constexpr int width = 320, height = 180;
    std::lock_guard lock(drawingMutex());
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(surface);
    const Colour accent = hue(number * 47.0, 0.65, 0.85);
    const Colour paper = hue(number * 47.0 + 180, 0.06, 0.98);

    cairo_set_source_rgb(cr, paper.r, paper.g, paper.b);
    cairo_paint(cr);
    cairo_set_source_rgb(cr, 0.17, 0.19, 0.24);  // title bar
    cairo_rectangle(cr, 0, 0, width, 30);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0.85, 0.87, 0.9);  // a title's worth of text, as a bar
    cairo_rectangle(cr, 14, 11, 60 + (number * 37) % 120, 8);
    cairo_fill(cr);

    cairo_set_source_rgb(cr, accent.r, accent.g, accent.b);
    const double cx = 90 + (number * 29) % 60, cy = 105;
    switch (number % 3) {
        case 0: cairo_rectangle(cr, cx - 55, cy - 40, 110, 80); break;
        case 1: cairo_arc(cr, cx, cy, 45, 0, 2 * M_PI); break;
        default:
            cairo_move_to(cr, cx, cy - 48);
            cairo_line_to(cr, cx + 52, cy + 42);
            cairo_line_to(cr, cx - 52, cy + 42);
            cairo_close_path(cr);
            break;
    }
    cairo_fill(cr);

    cairo_set_source_rgb(cr, 0.17, 0.19, 0.24);
    const std::string digits = std::to_string(number);
    constexpr double digitWidth = 22, digitHeight = 40, gap = 8, stroke = 5;
    double x = width - 16 - digits.size() * (digitWidth + gap) + gap;
    for (char d : digits) {
        drawDigit(cr, d - '0', x, height - 16 - digitHeight, digitWidth, digitHeight, stroke);
        x += digitWidth + gap;
    }

    std::string png;
    cairo_surface_flush(surface);
    const auto status = cairo_surface_write_to_png_stream(surface, appendPNG, &png);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) throw std::runtime_error("cannot encode a thumbnail: " +
                                                                 std::string(cairo_status_to_string(status)));
    return png;
}

std::string presentationBytes(const TemplateFixture& fixture) {
    // The slide's picture travels inside the file, as a real deck carries its slide.
    std::string bytes = fmt::format("VELMORA TEMPLATE FIXTURE\nid: {}\ntitle: {}\nnumber: {}\npicture: {}\n", fixture.id,
                                    fixture.title, fixture.number, support::base64Encoded(thumbnailPNG(fixture.number)));
    // Long enough that half of it still names the template.
    while (bytes.size() < 1024) bytes += fmt::format("{}:{}\n", fixture.id, bytes.size());
    return bytes;
}

std::optional<std::string> fixtureBytes(const std::string& relativePath) {
    if (relativePath == "thumbs/cover.png") return thumbnailPNG(sharedThumbA);
    if (relativePath == "thumbs/extra/cover.png") return thumbnailPNG(sharedThumbB);
    if (auto n = numberIn(relativePath, "thumbs/tpl-", ".png"); n && *n != sharedThumbA && *n != sharedThumbB) {
        return thumbnailPNG(*n);
    }
    if (auto n = numberIn(relativePath, "slides/tpl-", ".pptx")) return presentationBytes(templateFixture(*n, ""));
    if (const auto* icon = findIconFile(relativePath)) return iconSVG(*icon, thumbnailColour);
    const std::string photos = "photos/", small = "-small.png", png = ".png";
    if (relativePath.rfind(photos, 0) == 0) {
        const std::string name = relativePath.substr(photos.size());
        const bool isSmall = name.size() > small.size() && name.compare(name.size() - small.size(), small.size(), small) == 0;
        const std::size_t suffix = isSmall ? small.size() : png.size();
        if (name.size() > suffix && name.compare(name.size() - png.size(), png.size(), png) == 0) {
            if (const auto* photo = findPhoto(name.substr(0, name.size() - suffix))) return photoPNG(*photo, isSmall);
        }
    }
    if (relativePath.rfind("people/", 0) == 0) {
        if (const auto* person = findPhotographer(relativePath.substr(7))) return personPage(*person);
    }
    return std::nullopt;
}

void writeFixtures(const std::string& folder, std::size_t count, const std::string& cdnBase) {
    namespace fs = std::filesystem;
    auto write = [&](const std::string& relative, const std::string& bytes) {
        const fs::path path = fs::path(folder) / relative;
        std::error_code ec;
        fs::create_directories(path.parent_path(), ec);
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
    };
    write("manifest.json", manifestText(count, cdnBase));
    for (const auto& f : catalogue(count, cdnBase)) {
        write(f.thumbFile, thumbnailPNG(f.number));
        write(f.pptxFile, presentationBytes(f));
    }
}

Colour hue(double degrees, double saturation, double value) {
    const double c = value * saturation;
    const double h = std::fmod(degrees, 360.0) / 60.0;
    const double x = c * (1 - std::fabs(std::fmod(h, 2.0) - 1));
    Colour out{0, 0, 0};
    switch (static_cast<int>(h)) {
        case 0: out = {c, x, 0}; break;
        case 1: out = {x, c, 0}; break;
        case 2: out = {0, c, x}; break;
        case 3: out = {0, x, c}; break;
        case 4: out = {x, 0, c}; break;
        default: out = {c, 0, x}; break;
    }
    const double m = value - c;
    return {out.r + m, out.g + m, out.b + m};
}

}  // namespace velmora::cloud
