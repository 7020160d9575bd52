#include "PhotoFixtures.h"

#include <cairo.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "Fixtures.h"
#include "support/Text.h"

namespace velmora::cloud {

namespace {

struct Theme {
    const char* name;
    std::vector<std::string> tags;
    const char* description;
};

const std::array<Theme, 8> themes = {{
    {"mountain", {"mountain", "snow", "peak", "landscape", "nature"}, "mountain ridge with snow on its peaks"},
    {"sea", {"sea", "ocean", "water", "boat", "landscape", "nature"}, "sailing boat on a calm sea"},
    {"forest", {"forest", "trees", "green", "nature"}, "pine forest below rolling hills"},
    {"city", {"city", "skyline", "buildings", "urban"}, "city skyline at dusk with lit windows"},
    {"desert", {"desert", "sand", "dunes", "sun", "landscape", "nature"}, "sand dunes and a cactus under a low sun"},
    {"night", {"night", "stars", "moon", "sky"}, "starry night sky with a crescent moon"},
    {"flowers", {"flowers", "garden", "spring", "nature"}, "meadow of flowers in spring"},
    {"abstract", {"abstract", "shapes", "colour", "color", "pattern"}, "overlapping circles and squares in colour"},
}};
constexpr std::array<const char*, 6> moods = {"quiet", "bright", "misty", "early", "wide", "late"};
constexpr int photosPerTheme = 6;

// A fixed sequence per photo, so every run draws the same pixels.
class Dice {
public:
    explicit Dice(int seed) : state_(static_cast<std::uint32_t>(seed) * 2654435761u + 12345u) {}
    double next() {
        state_ = state_ * 1664525u + 1013904223u;
        return (state_ >> 8) / 16777216.0;
    }
    double between(double low, double high) { return low + (high - low) * next(); }

private:
    std::uint32_t state_;
};

struct Rgb {
    double r, g, b;
};

Rgb fromHue(double degrees, double saturation, double value) {
    const double c = value * saturation;
    const double h = std::fmod(std::fmod(degrees, 360.0) + 360.0, 360.0) / 60.0;
    const double x = c * (1 - std::fabs(std::fmod(h, 2.0) - 1));
    const std::array<Rgb, 6> sextants = {{{c, x, 0}, {x, c, 0}, {0, c, x}, {0, x, c}, {x, 0, c}, {c, 0, x}}};
    const Rgb out = sextants[static_cast<std::size_t>(std::min(5.0, h))];
    const double m = value - c;
    return {out.r + m, out.g + m, out.b + m};
}

void colour(cairo_t* cr, Rgb c, double alpha = 1) { cairo_set_source_rgba(cr, c.r, c.g, c.b, alpha); }

void gradient(cairo_t* cr, Rgb top, Rgb bottom, double y0, double y1) {
    cairo_pattern_t* pattern = cairo_pattern_create_linear(0, y0, 0, y1);
    cairo_pattern_add_color_stop_rgb(pattern, 0, top.r, top.g, top.b);
    cairo_pattern_add_color_stop_rgb(pattern, 1, bottom.r, bottom.g, bottom.b);
    cairo_set_source(cr, pattern);
    cairo_rectangle(cr, 0, y0, photoWidth, y1 - y0);
    cairo_fill(cr);
    cairo_pattern_destroy(pattern);
}

void disc(cairo_t* cr, double x, double y, double r) {
    cairo_new_sub_path(cr);
    cairo_arc(cr, x, y, r, 0, 2 * M_PI);
}

// A range of peaks whose foot is at `base`; its outline stays on the path.
void ridge(cairo_t* cr, Dice& dice, double base, double height) {
    cairo_move_to(cr, 0, photoHeight);
    cairo_line_to(cr, 0, base - dice.between(0, height / 3));
    for (double x = 0; x < photoWidth;) {
        x += dice.between(70, 150);
        cairo_line_to(cr, x, base - dice.between(height / 2, height));
        x += dice.between(60, 130);
        cairo_line_to(cr, x, base - dice.between(0, height / 4));
    }
    cairo_line_to(cr, photoWidth, photoHeight);
    cairo_close_path(cr);
}

void drawMountain(cairo_t* cr, Dice& dice) {
    gradient(cr, {0.42, 0.62, 0.88}, {0.86, 0.91, 0.97}, 0, photoHeight);
    colour(cr, {1, 0.95, 0.75});
    disc(cr, dice.between(150, 800), dice.between(90, 160), 42);
    cairo_fill(cr);
    const std::array<Rgb, 3> ranges = {{{0.56, 0.6, 0.7}, {0.38, 0.45, 0.52}, {0.22, 0.3, 0.27}}};
    for (int k = 0; k < 3; ++k) {
        const double base = 360 + k * 95;
        ridge(cr, dice, base, 240 - k * 60);
        colour(cr, ranges[static_cast<std::size_t>(k)]);
        if (k == 0) {
            // Snow above a line on the farthest range.
            cairo_fill_preserve(cr);
            cairo_save(cr);
            cairo_clip(cr);
            colour(cr, {0.97, 0.97, 1});
            cairo_rectangle(cr, 0, 0, photoWidth, base - 150);
            cairo_fill(cr);
            cairo_restore(cr);
        } else {
            cairo_fill(cr);
        }
    }
}

void drawSea(cairo_t* cr, Dice& dice) {
    const double horizon = dice.between(330, 400);
    gradient(cr, {0.55, 0.72, 0.92}, {0.98, 0.8, 0.6}, 0, horizon);
    colour(cr, {1, 0.9, 0.6});
    disc(cr, dice.between(200, 760), horizon, 55);
    cairo_fill(cr);
    gradient(cr, {0.12, 0.36, 0.56}, {0.04, 0.17, 0.33}, horizon, photoHeight);
    for (int i = 0; i < 18; ++i) {
        colour(cr, {0.6, 0.78, 0.9}, 0.5);
        cairo_rectangle(cr, dice.between(-40, 920), dice.between(horizon + 10, photoHeight - 10),
                        dice.between(40, 140), 3);
        cairo_fill(cr);
    }
    const double x = dice.between(150, 700), y = horizon + dice.between(60, 140);
    colour(cr, {0.35, 0.2, 0.12});
    cairo_move_to(cr, x, y);
    cairo_line_to(cr, x + 140, y);
    cairo_line_to(cr, x + 115, y + 28);
    cairo_line_to(cr, x + 25, y + 28);
    cairo_close_path(cr);
    cairo_fill(cr);
    colour(cr, {0.98, 0.97, 0.93});
    cairo_move_to(cr, x + 70, y - 150);
    cairo_line_to(cr, x + 70, y - 6);
    cairo_line_to(cr, x + 10, y - 6);
    cairo_close_path(cr);
    cairo_fill(cr);
}

void drawForest(cairo_t* cr, Dice& dice) {
    gradient(cr, {0.6, 0.8, 0.95}, {0.92, 0.96, 0.98}, 0, photoHeight);
    for (int hill = 0; hill < 2; ++hill) {
        cairo_save(cr);
        cairo_translate(cr, dice.between(200, 760), 470 + hill * 60);
        cairo_scale(cr, 1, 0.35);
        colour(cr, {0.42 - hill * 0.1, 0.62 - hill * 0.1, 0.32});
        disc(cr, 0, 0, 520);
        cairo_fill(cr);
        cairo_restore(cr);
    }
    for (int row = 0; row < 3; ++row) {
        const double base = 420 + row * 85;
        const int count = 9 + static_cast<int>(dice.between(0, 6));
        for (int i = 0; i < count; ++i) {
            const double x = dice.between(-20, 980), height = dice.between(90, 170) * (0.8 + row * 0.15);
            colour(cr, {0.36, 0.24, 0.14});
            cairo_rectangle(cr, x - 5, base - 20, 10, 28);
            cairo_fill(cr);
            colour(cr, {0.08, dice.between(0.3, 0.45), 0.15});
            cairo_move_to(cr, x, base - 20 - height);
            cairo_line_to(cr, x + height / 3.2, base - 14);
            cairo_line_to(cr, x - height / 3.2, base - 14);
            cairo_close_path(cr);
            cairo_fill(cr);
        }
    }
}

void drawCity(cairo_t* cr, Dice& dice) {
    gradient(cr, {0.25, 0.15, 0.42}, {0.96, 0.56, 0.36}, 0, photoHeight);
    for (double x = dice.between(-40, 0); x < photoWidth;) {
        const double width = dice.between(50, 115), height = dice.between(150, 430);
        const double shade = dice.between(0.1, 0.2);
        colour(cr, {shade, shade, shade + 0.05});
        cairo_rectangle(cr, x, photoHeight - height, width - 4, height);
        cairo_fill(cr);
        colour(cr, {1, 0.86, 0.45});
        for (double wy = photoHeight - height + 12; wy < photoHeight - 16; wy += 20) {
            for (double wx = x + 8; wx < x + width - 16; wx += 16) {
                if (dice.next() < 0.35) cairo_rectangle(cr, wx, wy, 7, 10);
            }
        }
        cairo_fill(cr);
        x += width;
    }
}

void drawDesert(cairo_t* cr, Dice& dice) {
    gradient(cr, {0.98, 0.86, 0.62}, {0.95, 0.6, 0.36}, 0, photoHeight);
    colour(cr, {1, 0.96, 0.82});
    disc(cr, dice.between(150, 800), dice.between(120, 220), 70);
    cairo_fill(cr);
    const std::array<Rgb, 3> sands = {{{0.93, 0.76, 0.46}, {0.87, 0.66, 0.37}, {0.8, 0.57, 0.3}}};
    for (int k = 0; k < 3; ++k) {
        const double y = 380 + k * 80;
        cairo_move_to(cr, 0, y + dice.between(-30, 30));
        cairo_curve_to(cr, 300, y - dice.between(40, 110), 620, y + dice.between(0, 80), photoWidth,
                       y - dice.between(0, 60));
        cairo_line_to(cr, photoWidth, photoHeight);
        cairo_line_to(cr, 0, photoHeight);
        cairo_close_path(cr);
        colour(cr, sands[static_cast<std::size_t>(k)]);
        cairo_fill(cr);
    }
    const double x = dice.between(120, 820), foot = 600;
    colour(cr, {0.24, 0.5, 0.26});
    cairo_rectangle(cr, x - 14, foot - 170, 28, 170);
    cairo_rectangle(cr, x - 54, foot - 120, 20, 60);
    cairo_rectangle(cr, x - 54, foot - 70, 54, 18);
    cairo_rectangle(cr, x + 34, foot - 145, 20, 60);
    cairo_rectangle(cr, x, foot - 95, 54, 18);
    cairo_fill(cr);
}

void drawNight(cairo_t* cr, Dice& dice) {
    gradient(cr, {0.02, 0.03, 0.1}, {0.1, 0.13, 0.32}, 0, photoHeight);
    for (int i = 0; i < 160; ++i) {
        cairo_set_source_rgba(cr, 1, 1, 0.95, dice.between(0.4, 1));
        disc(cr, dice.between(0, photoWidth), dice.between(0, 520), dice.between(0.8, 2.4));
        cairo_fill(cr);
    }
    // A crescent: the moon with a second disc cut out of it.
    const double mx = dice.between(180, 780), my = dice.between(110, 220);
    cairo_push_group(cr);
    colour(cr, {0.98, 0.96, 0.84});
    disc(cr, mx, my, 52);
    cairo_fill(cr);
    cairo_set_operator(cr, CAIRO_OPERATOR_CLEAR);
    disc(cr, mx + 24, my - 12, 48);
    cairo_fill(cr);
    cairo_pop_group_to_source(cr);
    cairo_paint(cr);
    colour(cr, {0.01, 0.02, 0.05});
    ridge(cr, dice, 600, 90);
    cairo_fill(cr);
}

void drawFlowers(cairo_t* cr, Dice& dice) {
    gradient(cr, {0.5, 0.74, 0.38}, {0.18, 0.42, 0.18}, 0, photoHeight);
    const double hue = dice.between(0, 360);
    for (int i = 0; i < 28; ++i) {
        const double x = dice.between(20, 940), y = dice.between(60, 600), r = dice.between(10, 26);
        colour(cr, {0.12, 0.32, 0.1});
        cairo_rectangle(cr, x - 1.5, y, 3, 60);
        cairo_fill(cr);
        colour(cr, fromHue(hue + dice.between(-50, 50), 0.7, 0.95));
        for (int petal = 0; petal < 6; ++petal) {
            const double angle = petal * M_PI / 3;
            disc(cr, x + r * std::cos(angle), y + r * std::sin(angle), r * 0.7);
        }
        cairo_fill(cr);
        colour(cr, {0.98, 0.85, 0.2});
        disc(cr, x, y, r * 0.5);
        cairo_fill(cr);
    }
}

void drawAbstract(cairo_t* cr, Dice& dice) {
    const double hue = dice.between(0, 360);
    colour(cr, fromHue(hue, 0.25, 0.95));
    cairo_paint(cr);
    for (int i = 0; i < 14; ++i) {
        colour(cr, fromHue(hue + dice.between(60, 300), 0.65, 0.9), 0.6);
        const double x = dice.between(0, photoWidth), y = dice.between(0, photoHeight), size = dice.between(60, 220);
        if (i % 2) {
            cairo_save(cr);
            cairo_translate(cr, x, y);
            cairo_rotate(cr, dice.between(0, M_PI));
            cairo_rectangle(cr, -size / 2, -size / 2, size, size);
            cairo_restore(cr);
        } else {
            disc(cr, x, y, size / 2);
        }
        cairo_fill(cr);
    }
}

cairo_status_t appendBytes(void* target, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

std::vector<PhotoFixture> makePhotos() {
    std::vector<PhotoFixture> photos;
    const int count = static_cast<int>(themes.size()) * photosPerTheme;
    for (int n = 1; n <= count; ++n) {
        const auto& theme = themes[static_cast<std::size_t>(n - 1) % themes.size()];
        const int variant = (n - 1) / static_cast<int>(themes.size());
        PhotoFixture photo;
        photo.number = n;
        photo.theme = theme.name;
        photo.id = fmt::format("{}-{:02}", theme.name, variant + 1);
        photo.tags = theme.tags;
        if (n % 7 == 5) {
            photo.altIsNull = true;
        } else if (n % 7 != 3) {
            photo.alt = fmt::format("{} {}", moods[static_cast<std::size_t>(variant)], theme.description);
        }
        photo.photographer = static_cast<std::size_t>(n * 3) % photographers().size();
        photos.push_back(std::move(photo));
    }
    return photos;
}

}  // namespace

const std::vector<Photographer>& photographers() {
    static const std::vector<Photographer> people = {
        {"ada_lind", "Ada Lind"},        {"bruno.keller", "Bruno Keller"}, {"chiara-v", "Chiara Valli"},
        {"dmitri_o", std::nullopt},      {"eunji.park", "Eun-ji Park"},    {"farid_h", "Farid Haddad"},
        {"gloria.m", "Glória Martins"},
    };
    return people;
}

const Photographer* findPhotographer(const std::string& handle) {
    for (const auto& person : photographers()) {
        if (person.handle == handle) return &person;
    }
    return nullptr;
}

const std::vector<PhotoFixture>& photoFixtures() {
    static const std::vector<PhotoFixture> photos = makePhotos();
    return photos;
}

const PhotoFixture* findPhoto(const std::string& id) {
    for (const auto& photo : photoFixtures()) {
        if (photo.id == id) return &photo;
    }
    return nullptr;
}

std::string photoPNG(const PhotoFixture& photo, bool small) {
    const int width = small ? smallPhotoWidth : photoWidth, height = small ? smallPhotoHeight : photoHeight;
    std::lock_guard lock(drawingMutex());
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), cairo_surface_destroy);
    cairo_t* cr = cairo_create(surface.get());
    cairo_scale(cr, static_cast<double>(width) / photoWidth, static_cast<double>(height) / photoHeight);
    Dice dice(photo.number);
    using Draw = void (*)(cairo_t*, Dice&);
    static const std::array<Draw, 8> painters = {drawMountain, drawSea,   drawForest,  drawCity,
                                                 drawDesert,   drawNight, drawFlowers, drawAbstract};
    painters[static_cast<std::size_t>(photo.number - 1) % painters.size()](cr, dice);
    cairo_destroy(cr);

    std::string png;
    cairo_surface_flush(surface.get());
    const auto status = cairo_surface_write_to_png_stream(surface.get(), appendBytes, &png);
    if (status != CAIRO_STATUS_SUCCESS) {
        throw std::runtime_error("cannot encode a photo: " + std::string(cairo_status_to_string(status)));
    }
    return png;
}

std::string personPage(const Photographer& person) {
    const std::string name = support::htmlEscaped(person.name.value_or(person.handle));
    const auto count = std::count_if(photoFixtures().begin(), photoFixtures().end(), [&](const PhotoFixture& photo) {
        return &photographers()[photo.photographer] == &person;
    });
    return fmt::format("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>{0}</title></head>"
                       "<body><h1>{0}</h1><p>@{1}, {2} photos</p></body></html>\n",
                       name, support::htmlEscaped(person.handle), count);
}

PhotoPage searchPhotos(const std::string& query, int page, int perPage) {
    bool nothing = false, noPages = false;
    std::vector<std::string> words;
    std::istringstream in(support::lowercased(query));
    for (std::string word; in >> word;) {
        if (word == "nophotos") {
            nothing = true;
        } else if (word == "nopages") {
            noPages = true;
        } else {
            words.push_back(word);
        }
    }
    std::vector<const PhotoFixture*> hits;
    for (const auto& photo : photoFixtures()) {
        if (nothing) break;
        std::string haystack = support::lowercased(photo.alt.value_or(""));
        for (const auto& tag : photo.tags) haystack += " " + tag;
        if (std::all_of(words.begin(), words.end(),
                        [&](const std::string& word) { return haystack.find(word) != std::string::npos; })) {
            hits.push_back(&photo);
        }
    }
    PhotoPage result;
    const auto first = static_cast<std::size_t>(page - 1) * static_cast<std::size_t>(perPage);
    if (first < hits.size()) {
        const auto last = std::min(hits.size(), first + static_cast<std::size_t>(perPage));
        result.results.assign(hits.begin() + static_cast<std::ptrdiff_t>(first),
                              hits.begin() + static_cast<std::ptrdiff_t>(last));
    }
    if (!noPages) result.totalPages = static_cast<int>((hits.size() + static_cast<std::size_t>(perPage) - 1) /
                                                       static_cast<std::size_t>(perPage));
    return result;
}

}  // namespace velmora::cloud
