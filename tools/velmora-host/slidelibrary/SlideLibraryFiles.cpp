#include "slidelibrary/SlideLibraryFiles.h"

#include "Fixtures.h"

#include <cairo.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace fs = std::filesystem;

namespace {

constexpr const char* libraryPath = "/Library/Application Support/Microsoft/Velmora/User/SlideLibrary";
constexpr const char* metadataName = "SlideLibrary_Metadata.json";

// The art a thumbnail draws below its title.
enum Art { bars, pie, trend, timeline, people, bullets, cover, funnel, quadrants, tree, quote, tiers, artCount };

// Dates run from June to November 2026 in the simulator's zone; several share
// a day, some sit on its first or last second, and one falls in the hour the
// clocks go back (25 October).
const std::vector<SampleSlide> samples = {
    {"Revenue Bridge", "Revenue grew 12 percent in Q3, driven by EMEA renewals.", {"Finance", "Q3", "Charts"},
     "2026-09-14T09:30:00", "Q3 Review.pptx", bars},
    {"Cost Breakdown", "Operating COSTS fell for the second quarter in a row.", {"finance", "Q3"},
     "2026-09-14T00:00:00", "Q3 Costs.pptx", pie},
    {"Q4 Outlook", "The OUTLOOK for Q4 stays cautious while hiring slows.", {"Finance", "Outlook"},
     "2026-09-14T23:59:59", "Q4 Outlook.pptx", trend},
    {"Product Roadmap 2027", "Three themes for 2027: SPEED, trust and reach.", {"Roadmap", "Product"},
     "2026-10-02T14:05:00", "Roadmap 2027.pptx", timeline},
    {"Roadmap Milestones", "Beta in March, general availability in JUNE.", {"roadmap"}, "2026-10-02T14:20:00",
     "Roadmap Milestones.pptx", timeline},
    {"Meet the Team", "Our TEAM of twelve works across three offices.", {"team", "Hiring"}, "2026-06-03T10:00:00",
     "Team Intro.pptx", people},
    {"Open Roles", "We are HIRING two designers and two backend engineers.", {"Hiring"}, "2026-06-17T16:45:00",
     "Open Roles.pptx", bullets},
    {"Team Offsite Agenda", "Day one is about STRATEGY, day two about workshops and a hike.", {"Team"},
     "2026-07-08T08:00:00", "Team Offsite.pptx", bullets},
    {"Team Offsite Logistics", "Buses leave at NINE from the main entrance.", {"team", "Logistics"},
     "2026-07-08T08:10:00", "Team Offsite.pptx", bullets},
    {"Market Share", "We hold 18 percent of the MARKET, up from 15.", {"Charts", "Market"}, "2026-08-21T11:11:00",
     "Market Share.pptx", pie},
    {"Customer Quotes", "\"It saves me an hour a day,\" says one CUSTOMER.", {}, "2026-08-05T13:00:00",
     "Customer Quotes.pptx", quote},
    {"Title Slide", "Velmora quarterly business review.", {}, "2026-06-01T09:00:00", "Title.pptx", cover},
    {"Thank You", "THANK YOU. Questions are welcome.", {}, "2026-11-02T17:30:00", "Closing.pptx", cover},
    {"Pricing Tiers", "Three tiers: Basic, PRO and Enterprise.", {"Sales", "pricing"}, "2026-10-25T02:30:00",
     "Pricing.pptx", tiers},
    {"Sales Pipeline", "The pipeline holds 40 deals worth 3.2 MILLION.", {"Sales", "Charts", "Q3"},
     "2026-09-30T18:00:00", "Pipeline.pptx", funnel},
    {"Marktüberblick", "ÜBERBLICK über den Markt in Deutschland, Österreich und der Schweiz.", {"Überblick", "Market"},
     "2026-10-12T10:00:00", "Marktüberblick.pptx", bars},
    {"Hiring Plan H1", "Ten new hires in the first HALF of 2027.", {"Hiring", "Roadmap"}, "2026-11-20T09:15:00",
     "Hiring Plan.pptx", trend},
    {"Budget Summary", "The BUDGET for 2027 stays flat at 4.1 million.", {"Finance", "finance"},
     "2026-11-23T00:00:00", "Budget.pptx", pie},
    {"Weekly Metrics", "Active users ROSE 4 percent week over week.", {"Charts", "Weekly"}, "2026-11-23T08:45:00",
     "Weekly Metrics.pptx", trend},
    {"Risk Register", "Top RISKS: supplier delays and currency swings.", {"Risks"}, "2026-11-22T23:59:59",
     "Risks.pptx", quadrants},
    {"Org Chart", "The new ORG chart takes effect in December.", {"team"}, "2026-11-16T12:00:00", "Org Chart.pptx",
     tree},
    {"SWOT Analysis", "STRENGTHS, weaknesses, opportunities and threats.", {"Strategy"}, "2026-07-29T15:00:00",
     "SWOT.pptx", quadrants, false},
    {"Timeline 2026", "From the SEED round to our first thousand customers.", {"History"}, "2026-06-10T00:00:00",
     "Timeline.pptx", timeline},
    {"Net Promoter Score", "NPS climbed to 54 after the autumn release.", {"Charts", "customers"},
     "2026-10-31T23:00:00", "NPS.pptx", bars},
};

using cloud::Colour;
using cloud::hue;

constexpr Colour accent{0xFE / 255.0, 0x6B / 255.0, 0x6B / 255.0};
constexpr Colour ink{0.16, 0.17, 0.21};


void paint(cairo_t* cr, Colour c) { cairo_set_source_rgb(cr, c.r, c.g, c.b); }

void box(cairo_t* cr, Colour c, double x, double y, double w, double h) {
    paint(cr, c);
    cairo_rectangle(cr, x, y, w, h);
    cairo_fill(cr);
}

// Text shrunk until it fits `width`; returns the size used.
double fittedText(cairo_t* cr, const std::string& text, double x, double y, double width, double size, bool bold) {
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_text_extents_t extents;
    for (;; size -= 1) {
        cairo_set_font_size(cr, size);
        cairo_text_extents(cr, text.c_str(), &extents);
        if (extents.x_advance <= width || size <= 6) break;
    }
    cairo_move_to(cr, x, y);
    cairo_show_text(cr, text.c_str());
    return size;
}

// The art fills the area 20..300 by 64..210; `seed` varies heights and angles.
void drawArt(cairo_t* cr, int art, unsigned seed, Colour main, Colour soft) {
    auto vary = [&](int i, int range) { return static_cast<double>((seed / (i + 1) + i * 37u) % static_cast<unsigned>(range)); };
    switch (art) {
        case bars:
            for (int i = 0; i < 5; ++i) {
                const double h = 40 + vary(i, 100);
                box(cr, i == 4 ? accent : main, 40 + i * 50, 205 - h, 32, h);
            }
            box(cr, ink, 30, 205, 260, 2);
            break;
        case pie: {
            const double cx = 115, cy = 137, r = 68;
            const double cuts[] = {0, 2.1 + vary(1, 10) / 10, 4.0 + vary(2, 10) / 10, 2 * M_PI};
            const Colour fills[] = {main, accent, soft};
            for (int i = 0; i < 3; ++i) {
                paint(cr, fills[i]);
                cairo_move_to(cr, cx, cy);
                cairo_arc(cr, cx, cy, r, cuts[i] - M_PI / 2, cuts[i + 1] - M_PI / 2);
                cairo_close_path(cr);
                cairo_fill(cr);
            }
            for (int i = 0; i < 3; ++i) {
                box(cr, fills[i], 210, 100 + i * 26, 14, 14);
                box(cr, soft, 230, 104 + i * 26, 55, 6);
            }
            break;
        }
        case trend: {
            box(cr, ink, 30, 205, 260, 2);
            box(cr, ink, 30, 70, 2, 137);
            paint(cr, main);
            cairo_set_line_width(cr, 4);
            double x = 40, y = 180;
            cairo_move_to(cr, x, y);
            for (int i = 0; i < 6; ++i) {
                x += 42;
                y = std::clamp(y - 30 + vary(i, 45), 80.0, 195.0);
                cairo_line_to(cr, x, y);
            }
            cairo_stroke(cr);
            paint(cr, accent);
            cairo_arc(cr, x, y, 8, 0, 2 * M_PI);
            cairo_fill(cr);
            break;
        }
        case timeline:
            box(cr, ink, 30, 136, 260, 3);
            for (int i = 0; i < 5; ++i) {
                paint(cr, i == static_cast<int>(vary(0, 5)) ? accent : main);
                cairo_arc(cr, 45 + i * 57, 137, 10, 0, 2 * M_PI);
                cairo_fill(cr);
                box(cr, soft, 28 + i * 57, i % 2 ? 160 : 100, 36, 7);
            }
            break;
        case people:
            for (int i = 0; i < 3; ++i) {
                const double cx = 80 + i * 80;
                paint(cr, i == 1 ? accent : main);
                cairo_arc(cr, cx, 110, 20, 0, 2 * M_PI);
                cairo_fill(cr);
                cairo_arc(cr, cx, 185, 36, M_PI, 2 * M_PI);
                cairo_fill(cr);
                box(cr, soft, cx - 25, 195, 50, 6);
            }
            break;
        case bullets:
            for (int i = 0; i < 5; ++i) {
                const double y = 76 + i * 27;
                paint(cr, i == 0 ? accent : main);
                cairo_arc(cr, 40, y + 5, 5, 0, 2 * M_PI);
                cairo_fill(cr);
                box(cr, soft, 56, y, 120 + vary(i, 110), 10);
            }
            break;
        case cover:
            box(cr, main, 20, 80, 280, 90);
            box(cr, accent, 20, 170, 280, 8);
            box(cr, soft, 60, 192, 200, 8);
            break;
        case funnel:
            for (int i = 0; i < 4; ++i) {
                const double top = 70 + i * 35, half = 130 - i * 28, next = half - 28;
                paint(cr, i == 3 ? accent : main);
                cairo_move_to(cr, 160 - half, top);
                cairo_line_to(cr, 160 + half, top);
                cairo_line_to(cr, 160 + next, top + 31);
                cairo_line_to(cr, 160 - next, top + 31);
                cairo_close_path(cr);
                cairo_fill(cr);
            }
            break;
        case quadrants:
            for (int i = 0; i < 4; ++i) {
                const double x = 30 + (i % 2) * 132, y = 68 + (i / 2) * 72;
                box(cr, i == static_cast<int>(vary(1, 4)) ? accent : i % 3 ? soft : main, x, y, 126, 66);
                box(cr, ink, x + 10, y + 10, 50, 6);
            }
            break;
        case tree:
            box(cr, accent, 130, 70, 60, 30);
            box(cr, ink, 159, 100, 2, 22);
            box(cr, ink, 60, 120, 200, 2);
            for (int i = 0; i < 3; ++i) {
                box(cr, ink, 59 + i * 100, 120, 2, 22);
                box(cr, main, 35 + i * 100, 142, 50, 28);
                box(cr, soft, 40 + i * 100, 182, 40, 16);
            }
            break;
        case quote:
            paint(cr, accent);
            cairo_select_font_face(cr, "DejaVu Serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
            cairo_set_font_size(cr, 90);
            cairo_move_to(cr, 26, 150);
            cairo_show_text(cr, "\xE2\x80\x9C");
            for (int i = 0; i < 3; ++i) box(cr, main, 90, 96 + i * 24, 190 - i * 40, 10);
            box(cr, soft, 180, 180, 100, 8);
            break;
        default:  // tiers
            for (int i = 0; i < 3; ++i) {
                const double lift = i == 1 ? 14 : 0;
                box(cr, i == 1 ? accent : main, 36 + i * 86, 70 - lift, 76, 22);
                box(cr, soft, 36 + i * 86, 92 - lift, 76, 110 + lift);
                for (int row = 0; row < 3; ++row) box(cr, ink, 46 + i * 86, 106 + row * 22, 50, 5);
            }
            break;
    }
}

cairo_status_t appendPNG(void* target, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

const SampleSlide* sampleNamed(const std::string& name) {
    for (const auto& slide : samples) {
        if (slide.name == name) return &slide;
    }
    return nullptr;
}

void writeBytes(const fs::path& path, const std::string& bytes) {
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) throw ScenarioError("cannot write " + path.string());
}

// Root ignores modes; the immutable flag stops root too.
std::optional<std::string> setImmutable(const fs::path& path, bool on) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return fmt::format("{}: {}", path.string(), std::strerror(errno));
    int flags = 0;
    bool done = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    if (done && ((flags & FS_IMMUTABLE_FL) != 0) != on) {
        flags = on ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
        done = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    }
    const int error = errno;
    ::close(fd);
    if (!done) return fmt::format("{}: {}", path.string(), std::strerror(error));
    return std::nullopt;
}

bool readOnly = false;

// Written before the first command, as the add-in would have left it.
[[maybe_unused]] const bool installed = [] {
    if (Host::instance().sandboxRoot().empty()) return false;
    try {
        writeSampleLibrary();
    } catch (const ScenarioError& error) {
        std::fprintf(stderr, "velmora-host: the sample slide library: %s\n", error.what());
    }
    return true;
}();

}  // namespace

fs::path slideLibraryFolder() {
    auto& host = Host::instance();
    return fs::path(host.sandboxRoot() + host.connection()->homeDirectory + libraryPath);
}

fs::path metadataFile() { return slideLibraryFolder() / metadataName; }

std::optional<fs::path> thumbnailFile(const std::string& fullSlideName) {
    if (fullSlideName.empty() || fullSlideName == "." || fullSlideName == ".." ||
        fullSlideName.find('/') != std::string::npos || fullSlideName.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return slideLibraryFolder() / "Thumbnail" / (fullSlideName + ".png");
}

const std::vector<SampleSlide>& sampleSlides() { return samples; }

std::string sampleMetadata() {
    auto records = nlohmann::ordered_json::array();
    for (const auto& slide : samples) {
        records.push_back({{"FullSlideName", slide.name},
                           {"TextContent", slide.text},
                           {"Tags", slide.tags},
                           {"DateSaved", slide.dateSaved},
                           {"SlidesFileName", slide.slidesFileName}});
    }
    return records.dump(2) + "\n";
}

std::string thumbnailPNG(const std::string& fullSlideName, int width, int height) {
    const SampleSlide* sample = sampleNamed(fullSlideName);
    const unsigned seed = static_cast<unsigned>(std::hash<std::string>{}(fullSlideName) & 0xFFFFFF);
    const int index = sample ? static_cast<int>(sample - samples.data()) : static_cast<int>(seed % 97);
    const int art = sample ? sample->art : static_cast<int>(seed % artCount);
    const Colour main = hue(200 + index * 47.0, 0.55, 0.78);
    const Colour soft = hue(200 + index * 47.0, 0.18, 0.88);

    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, width / 320.0, height / 240.0);
    box(cr, hue(200 + index * 47.0, 0.03, 1.0), 0, 0, 320, 240);
    box(cr, accent, 0, 0, 8, 240);
    paint(cr, ink);
    fittedText(cr, fullSlideName, 20, 38, 284, 20, true);
    box(cr, main, 20, 48, 60, 3);
    drawArt(cr, art, seed, main, soft);
    if (sample) {
        paint(cr, {0.45, 0.46, 0.5});
        fittedText(cr, sample->dateSaved.substr(0, 10), 20, 229, 120, 9, false);
    }
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    std::string png;
    const auto status = cairo_surface_write_to_png_stream(surface, appendPNG, &png);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) {
        throw ScenarioError("cannot encode a thumbnail: " + std::string(cairo_status_to_string(status)));
    }
    return png;
}

void writeSampleLibrary() {
    if (readOnly) throw ScenarioError("the slide library is read-only (library readonly off first)");
    const fs::path thumbnails = slideLibraryFolder() / "Thumbnail";
    std::error_code ec;
    fs::remove_all(thumbnails, ec);
    fs::create_directories(thumbnails, ec);
    writeBytes(metadataFile(), sampleMetadata());
    for (const auto& slide : samples) {
        if (slide.thumbnail) writeBytes(*thumbnailFile(slide.name), thumbnailPNG(slide.name));
    }
}

std::optional<std::string> setLibraryReadOnly(bool on) {
    // An immutable file refuses even a change of mode, so nothing is done twice.
    if (on == readOnly) return std::nullopt;
    const fs::path folder = slideLibraryFolder(), file = metadataFile();
    std::error_code ec;
    fs::create_directories(folder, ec);
    const bool hasFile = fs::exists(file, ec);
    std::optional<std::string> error;
    auto note = [&](std::optional<std::string> failure) {
        if (failure && !error) error = std::move(failure);
    };
    const bool root = ::geteuid() == 0;
    // The flags come off before the modes change and go on after.
    if (!on && root) {
        note(setImmutable(folder, false));
        if (hasFile) note(setImmutable(file, false));
    }
    const auto folderMode = on ? fs::perms(0555) : fs::perms(0755);
    const auto fileMode = on ? fs::perms(0444) : fs::perms(0644);
    if (hasFile) {
        fs::permissions(file, fileMode, ec);
        if (ec) note(file.string() + ": " + ec.message());
    }
    fs::permissions(folder, folderMode, ec);
    if (ec) note(folder.string() + ": " + ec.message());
    if (on && root) {
        if (hasFile) note(setImmutable(file, true));
        note(setImmutable(folder, true));
    }
    readOnly = on;
    return error;
}

bool libraryReadOnly() { return readOnly; }

}  // namespace velmora::host
