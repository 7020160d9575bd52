#include "document/Macros.h"

#include <fmt/format.h>
#include <httplib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "Host.h"
#include "document/Document.h"
#include "slidelibrary/SlideLibraryFiles.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

using Shapes = std::vector<Shape*>;
using Edit = std::function<void(DocumentState&, const MacroCall&)>;

// The tint as the library writes it ("0.80", "-0.25"); nothing for any other text.
std::optional<double> tintParameter(const std::string& text) {
    double value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

Edit paint(std::function<void(Shape&, Rgb)> set) {
    return [set](DocumentState& doc, const MacroCall& call) {
        if (call.parameters.size() < 2) return;
        auto base = doc.themeSlot(call.parameters[0]);
        auto tint = tintParameter(call.parameters[1]);
        if (!base || !tint) return;
        for (auto* shape : doc.selectedShapes()) set(*shape, tinted(*base, *tint));
    };
}

Edit clear(std::optional<Rgb> Shape::*property) {
    return [property](DocumentState& doc, const MacroCall&) {
        for (auto* shape : doc.selectedShapes()) shape->*property = std::nullopt;
    };
}

struct Bounds {
    double left, top, right, bottom;
};

// Several shapes align among themselves; a single one aligns to the slide.
std::optional<Bounds> alignmentBounds(const Shapes& shapes) {
    if (shapes.empty()) return std::nullopt;
    if (shapes.size() == 1) return Bounds{0, 0, slideWidth, slideHeight};
    Bounds box{shapes[0]->left, shapes[0]->top, shapes[0]->left + shapes[0]->width, shapes[0]->top + shapes[0]->height};
    for (const auto* shape : shapes) {
        box.left = std::min(box.left, shape->left);
        box.top = std::min(box.top, shape->top);
        box.right = std::max(box.right, shape->left + shape->width);
        box.bottom = std::max(box.bottom, shape->top + shape->height);
    }
    return box;
}

// `place` moves one shape within the bounds.
Edit align(std::function<void(Shape&, const Bounds&)> place) {
    return [place](DocumentState& doc, const MacroCall&) {
        auto shapes = doc.selectedShapes();
        auto bounds = alignmentBounds(shapes);
        if (!bounds) return;
        for (auto* shape : shapes) place(*shape, *bounds);
    };
}

// Keeps the first and last shape in order of position and spaces those
// between them with equal gaps; gaps may come out negative when the shapes
// are wider than the room between the outer two.
Edit distribute(double Shape::*position, double Shape::*size) {
    return [position, size](DocumentState& doc, const MacroCall&) {
        auto shapes = doc.selectedShapes();
        if (shapes.size() < 3) return;
        std::stable_sort(shapes.begin(), shapes.end(),
                         [&](const Shape* a, const Shape* b) { return a->*position < b->*position; });
        const Shape& first = *shapes.front();
        const Shape& last = *shapes.back();
        double occupied = 0;
        for (const auto* shape : shapes) occupied += shape->*size;
        const double gap = (last.*position + last.*size - first.*position - occupied) / double(shapes.size() - 1);
        double at = first.*position + first.*size + gap;
        for (std::size_t i = 1; i + 1 < shapes.size(); ++i) {
            shapes[i]->*position = at;
            at += shapes[i]->*size + gap;
        }
    };
}

Edit matchFirst(bool width, bool height) {
    return [width, height](DocumentState& doc, const MacroCall&) {
        auto shapes = doc.selectedShapes();
        if (shapes.empty()) return;
        const Shape first = *shapes.front();
        for (auto* shape : shapes) {
            if (width) shape->width = first.width;
            if (height) shape->height = first.height;
        }
    };
}

// The host refuses a table outside 1...75 rows or columns.
constexpr int mostTableCells = 75;
constexpr double tableRowHeight = 40;

std::optional<int> countParameter(const std::string& text) {
    int value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    if (value < 1 || value > mostTableCells) return std::nullopt;
    return value;
}

std::optional<bool> flagParameter(const std::string& text) {
    if (text == "True") return true;
    if (text == "False") return false;
    return std::nullopt;
}

// What the host does after an insert: the new shape alone is selected.
void insertSelected(DocumentState& doc, Shape shape, const char* baseName) {
    shape.id = doc.nextId++;
    shape.name = std::string(baseName) + " " + std::to_string(shape.id);
    doc.selection = {shape.id};
    doc.currentSlide().shapes.push_back(std::move(shape));
    doc.rawSelected.reset();
    doc.rawOthers.reset();
}

// An inserted slide goes after the current one and becomes current, its
// picture selected.
void insertSlide(DocumentState& doc, Shape picture) {
    doc.slides.insert(doc.slides.begin() + static_cast<std::ptrdiff_t>(doc.current) + 1, Slide{});
    ++doc.current;
    insertSelected(doc, std::move(picture), "Picture");
}

// Rows, columns, then header row, header column, separator lines, paste
// content and use reference shape as "True"/"False". The table goes in the
// middle of the slide, or where the first selected shape is when asked to
// follow it. The simulated host has no clipboard: paste is only recorded.
void insertTable(DocumentState& doc, const MacroCall& call) {
    const auto& p = call.parameters;
    if (p.size() != 7) return;
    TableGrid grid;
    auto rows = countParameter(p[0]), columns = countParameter(p[1]);
    std::optional<bool> flags[5];
    for (int i = 0; i < 5; ++i) flags[i] = flagParameter(p[2 + i]);
    if (!rows || !columns || std::any_of(std::begin(flags), std::end(flags), [](const auto& f) { return !f; })) return;
    grid.rows = *rows;
    grid.columns = *columns;
    grid.headerRow = *flags[0];
    grid.headerColumn = *flags[1];
    grid.separators = *flags[2];
    grid.pasted = *flags[3];
    grid.fromReference = *flags[4];

    Shape table = Shape::made(ShapeKind::table);
    table.table = grid;
    table.width = slideWidth * 0.6;
    table.height = tableRowHeight * grid.rows;
    table.left = (slideWidth - table.width) / 2;
    table.top = (slideHeight - table.height) / 2;
    if (grid.fromReference) {
        if (auto selected = doc.selectedShapes(); !selected.empty()) {
            const Shape& reference = *selected.front();
            table.left = reference.left;
            table.top = reference.top;
            table.width = reference.width;
            table.height = reference.height;
        }
    }
    insertSelected(doc, std::move(table), "Table");
}

// Presets "1".."9": black lines of 0.5, 1 and 1.5 points, the same in grey,
// then lines ending in a triangle, an open arrow head and a circle.
void insertLine(DocumentState& doc, const MacroCall& call) {
    if (call.parameters.size() != 1) return;
    const auto& text = call.parameters[0];
    if (text.size() != 1 || text[0] < '1' || text[0] > '9') return;
    const int preset = text[0] - '0';
    Shape line = Shape::made(ShapeKind::line);
    line.width = slideWidth * 0.4;
    line.left = (slideWidth - line.width) / 2;
    line.top = slideHeight / 2;
    line.line = preset >= 4 && preset <= 6 ? Rgb{0x80, 0x80, 0x80} : Rgb{0, 0, 0};
    if (preset <= 6) {
        line.lineWeight = 0.5 * ((preset - 1) % 3 + 1);
    } else {
        line.lineWeight = 1;
        line.end = preset == 7 ? LineEnd::triangle : preset == 8 ? LineEnd::open : LineEnd::circle;
    }
    insertSelected(doc, std::move(line), "Line");
}

// A template's presentation file as the cloud serves it: a first line that
// names the format, then "key: value" lines (id, title, and the slide's
// picture as base64 PNG). The host inserts it as a new slide after the
// current one, the picture filling it; a file of another kind gives a slide
// with its name alone.
Shape templatePicture(const std::string& bytes, const std::string& path) {
    Shape picture = Shape::made(ShapeKind::picture);
    picture.left = 0;
    picture.top = 0;
    picture.width = slideWidth;
    picture.height = slideHeight;
    picture.source = std::filesystem::path(path).filename().string();
    if (bytes.rfind("VELMORA TEMPLATE FIXTURE\n", 0) != 0) return picture;
    std::istringstream lines(bytes);
    for (std::string line; std::getline(lines, line);) {
        const auto colon = line.find(": ");
        if (colon == std::string::npos) continue;
        const std::string key = line.substr(0, colon), value = line.substr(colon + 2);
        if (key == "id") picture.source = value;
        if (key == "title") picture.text = value;
        if (key == "picture") picture.picture = support::base64Decoded(value).value_or("");
    }
    return picture;
}

// A saved slide as the host inserts it: the slide's picture fills a new
// slide (here its thumbnail stands in for it); a slide whose thumbnail
// cannot be read comes in with a caption that says why.
Shape savedSlidePicture(const std::string& fullSlideName) {
    Shape picture = Shape::made(ShapeKind::picture);
    picture.left = 0;
    picture.top = 0;
    picture.width = slideWidth;
    picture.height = slideHeight;
    picture.source = fullSlideName;
    const auto path = thumbnailFile(fullSlideName);
    std::ifstream in;
    if (path) in.open(*path, std::ios::binary);
    if (!path || !in) {
        picture.text = fullSlideName + ": thumbnail missing";
        return picture;
    }
    std::ostringstream bytes;
    bytes << in.rdbuf();
    const std::string png = std::move(bytes).str();
    if (png.empty()) {
        picture.text = fullSlideName + ": thumbnail empty";
    } else if (png.rfind("\x89PNG\r\n\x1a\n", 0) != 0) {
        picture.text = fullSlideName + ": thumbnail is not a PNG";
    } else {
        picture.picture = png;
    }
    return picture;
}

// A single file name in one folder: no path, nothing that climbs out.
bool plainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

std::optional<std::string> readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return std::move(bytes).str();
}

constexpr double iconSide = 96, iconStep = 24;
constexpr int iconSteps = 8;

bool knownIconStyle(const std::string& style) { return style == "Normal" || style == "Fill" || style == "Outline"; }

// The icon the library saved, by its file name in the user's icon folder,
// as the add-in's macro finds it; a file it cannot use gives a frame whose
// caption says why.
Shape iconPicture(const std::string& fileName, const std::string& style) {
    Shape picture = Shape::made(ShapeKind::picture);
    picture.width = picture.height = iconSide;
    picture.source = fileName;
    picture.iconStyle = style;
    const auto bytes = plainFileName(fileName) ? readFile(userIconFolder() / fileName) : std::nullopt;
    if (!bytes) {
        picture.text = fileName + ": icon file missing";
    } else if (bytes->empty()) {
        picture.text = fileName + ": icon file empty";
    } else if (pictureType(*bytes) != "image/svg+xml") {
        picture.text = fileName + ": icon file is not an SVG";
    } else {
        picture.picture = *bytes;
    }
    return picture;
}

// Icons go in the middle of the slide, each one a step down and right of the
// icon before it, so a second one does not hide the first.
void placeIcon(DocumentState& doc, Shape& icon) {
    const auto earlier = std::count_if(doc.currentSlide().shapes.begin(), doc.currentSlide().shapes.end(),
                                       [](const Shape& shape) { return shape.iconStyle.has_value(); });
    const double step = iconStep * static_cast<double>(earlier % iconSteps);
    icon.left = (slideWidth - iconSide) / 2 + step;
    icon.top = (slideHeight - iconSide) / 2 + step;
}

// "http://127.0.0.1[:PORT]/PATH?QUERY" as the port and the target; nothing
// for any other address.
std::optional<std::pair<int, std::string>> loopbackTarget(const std::string& url) {
    const std::string head = "http://127.0.0.1";
    if (url.rfind(head, 0) != 0) return std::nullopt;
    std::size_t at = head.size();
    int port = 80;
    if (at < url.size() && url[at] == ':') {
        const auto end = url.find_first_of("/?", at + 1);
        const std::string digits = url.substr(at + 1, end == std::string::npos ? std::string::npos : end - at - 1);
        auto [last, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
        if (digits.empty() || ec != std::errc{} || last != digits.data() + digits.size() || port < 1 || port > 65535) {
            return std::nullopt;
        }
        at = end == std::string::npos ? url.size() : end;
    }
    if (at < url.size() && url[at] != '/' && url[at] != '?') return std::nullopt;
    std::string target = url.substr(at);
    if (target.empty() || target[0] == '?') target.insert(0, "/");
    return std::make_pair(port, target);
}

unsigned bigEndian32(const std::string& bytes, std::size_t at) {
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

// A photo as the host inserts one from an address: fetched, then scaled to
// fit the slide and centred. The simulated host fetches from loopback alone
// and says so on the transcript; a picture it could not get is a frame with
// a caption.
Shape fetchedPicture(Host& host, const std::string& url) {
    Shape picture = Shape::made(ShapeKind::picture);
    picture.source = url;
    picture.width = slideWidth / 2;
    picture.height = slideHeight / 2;
    auto caption = [&](const std::string& why) { picture.text = "picture not fetched: " + why; };
    const auto target = loopbackTarget(url);
    if (!target) {
        host.emit("image: not fetched, the host fetches from http://127.0.0.1 alone: " + Host::oneLine(url));
        caption("not a loopback address");
    } else {
        httplib::Client client("127.0.0.1", target->first);
        client.set_connection_timeout(5);
        client.set_read_timeout(65);  // the cloud's longest delay and then some
        auto result = client.Get(target->second.c_str());
        if (!result) {
            const std::string error = httplib::to_string(result.error());
            host.emit("image: GET " + Host::oneLine(url) + ": no answer (" + error + ")");
            caption("no answer");
        } else if (result->status != 200) {
            host.emit(fmt::format("image: GET {}: {}", Host::oneLine(url), result->status));
            caption(fmt::format("HTTP {}", result->status));
        } else if (pictureType(result->body) != "image/png" || result->body.size() < 24) {
            host.emit(fmt::format("image: GET {}: 200, {} bytes that are no PNG", Host::oneLine(url), result->body.size()));
            caption("not a picture");
        } else {
            const unsigned width = bigEndian32(result->body, 16), height = bigEndian32(result->body, 20);
            host.emit(fmt::format("image: GET {}: 200, PNG {}x{}", Host::oneLine(url), width, height));
            if (width > 0 && height > 0) {
                const double scale = std::min(slideWidth / width, slideHeight / height);
                picture.width = width * scale;
                picture.height = height * scale;
            }
            picture.picture = std::move(result->body);
        }
    }
    picture.left = (slideWidth - picture.width) / 2;
    picture.top = (slideHeight - picture.height) / 2;
    return picture;
}

}  // namespace

std::filesystem::path userIconFolder() {
    auto& host = Host::instance();
    return std::filesystem::path(host.sandboxRoot() + host.connection()->homeDirectory +
                                 "/Library/Application Support/Microsoft/Velmora/User/Icons");
}

void installDocumentMacros(Host& host) {
    const std::pair<const char*, Edit> edits[] = {
        {"ApplyFillColor", paint([](Shape& s, Rgb c) { s.fill = c; })},
        {"ApplyBorderColor", paint([](Shape& s, Rgb c) { s.line = c; })},
        {"ApplyFontColor", paint([](Shape& s, Rgb c) { s.font = c; })},
        {"ClearFill", clear(&Shape::fill)},
        {"ClearBorder", clear(&Shape::line)},
        {"AlignLeft", align([](Shape& s, const Bounds& b) { s.left = b.left; })},
        {"AlignRight", align([](Shape& s, const Bounds& b) { s.left = b.right - s.width; })},
        {"AlignTop", align([](Shape& s, const Bounds& b) { s.top = b.top; })},
        {"AlignBottom", align([](Shape& s, const Bounds& b) { s.top = b.bottom - s.height; })},
        {"AlignCenter", align([](Shape& s, const Bounds& b) { s.left = (b.left + b.right - s.width) / 2; })},
        {"AlignMiddle", align([](Shape& s, const Bounds& b) { s.top = (b.top + b.bottom - s.height) / 2; })},
        {"DistributeHorizontally", distribute(&Shape::left, &Shape::width)},
        {"DistributeVertically", distribute(&Shape::top, &Shape::height)},
        {"SameHeight", matchFirst(false, true)},
        {"SameWidth", matchFirst(true, false)},
        {"SameSize", matchFirst(true, true)},
        {"InsertTable", insertTable},
        {"InsertLine", insertLine},
    };
    for (const auto& [name, edit] : edits) {
        // Copied by name: clang 14 cannot capture a structured binding.
        host.handleMacro(name, [&host, edit = edit](const MacroCall& call) -> std::optional<std::string> {
            host.document().with([&](DocumentState& doc) { edit(doc, call); });
            return std::nullopt;
        });
    }
    // The file is read outside the document's lock; a path the host cannot
    // open changes nothing.
    host.handleMacro("InsertFromTemplateLibrary", [&host](const MacroCall& call) -> std::optional<std::string> {
        if (call.parameters.size() != 2 || host.sandboxRoot().empty()) return std::nullopt;
        std::ifstream in(host.sandboxRoot() + call.parameters[0], std::ios::binary);
        if (!in) return std::nullopt;
        std::ostringstream bytes;
        bytes << in.rdbuf();
        Shape picture = templatePicture(bytes.str(), call.parameters[0]);
        host.document().with([&](DocumentState& doc) { insertSlide(doc, std::move(picture)); });
        return std::nullopt;
    });
    // The slide's name and "True" or "False" for keeping its formatting;
    // anything else changes nothing.
    host.handleMacro("InsertFromSlideLibrary", [&host](const MacroCall& call) -> std::optional<std::string> {
        if (call.parameters.size() != 2 || host.sandboxRoot().empty()) return std::nullopt;
        const auto keep = flagParameter(call.parameters[1]);
        if (!keep) return std::nullopt;
        Shape picture = savedSlidePicture(call.parameters[0]);
        picture.keepSourceFormatting = *keep;
        host.document().with([&](DocumentState& doc) { insertSlide(doc, std::move(picture)); });
        return std::nullopt;
    });
    // The icon's file name and the pane's style; a style of another name
    // changes nothing.
    host.handleMacro("InsertIconSvgIntoPowerPoint", [&host](const MacroCall& call) -> std::optional<std::string> {
        if (call.parameters.size() != 2 || !knownIconStyle(call.parameters[1]) || host.sandboxRoot().empty()) {
            return std::nullopt;
        }
        Shape icon = iconPicture(call.parameters[0], call.parameters[1]);
        host.document().with([&](DocumentState& doc) {
            placeIcon(doc, icon);
            insertSelected(doc, std::move(icon), "Picture");
        });
        return std::nullopt;
    });
    // The photo's address; fetched outside the document's lock.
    host.handleMacro("InsertImageIntoPowerPoint", [&host](const MacroCall& call) -> std::optional<std::string> {
        if (call.parameters.size() != 1) return std::nullopt;
        Shape picture = fetchedPicture(host, call.parameters[0]);
        host.document().with([&](DocumentState& doc) { insertSelected(doc, std::move(picture), "Picture"); });
        return std::nullopt;
    });
    host.handleMacro("GetThemeColorsHexCsv", [&host](const MacroCall&) -> std::optional<std::string> {
        return host.document().with([](DocumentState& doc) { return doc.themeText; });
    });
    host.handleMacro("CallTriggerAssistant", [&host](const MacroCall&) -> std::optional<std::string> {
        std::string selected, others;
        host.document().with([&](DocumentState& doc) {
            selected = doc.selectedShapesJSON();
            others = doc.otherShapesJSON();
        });
        // Outside the lock: the library may run macros of its own from here.
        host.exports().triggerAssistant(selected.c_str(), others.c_str());
        return std::nullopt;
    });
}

}  // namespace velmora::host
