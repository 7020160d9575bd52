#include "document/Document.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "support/Text.h"

namespace velmora::host {

namespace {

std::uint8_t channel(double value) { return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0))); }

// Whole numbers go out as integers, as the macro project's JSON writes them.
nlohmann::ordered_json number(double value) {
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 9e15) {
        return static_cast<std::int64_t>(value);
    }
    return value;
}

const char* hostShapeType(ShapeKind kind) {
    switch (kind) {
        case ShapeKind::textbox: return "17";
        case ShapeKind::line: return "9";
        case ShapeKind::table: return "19";
        case ShapeKind::picture: return "13";
        default: return "1";  // an auto shape
    }
}

nlohmann::ordered_json shapeJSON(const Shape& shape, std::size_t zOrder) {
    const bool textFrame =
        shape.kind != ShapeKind::line && shape.kind != ShapeKind::table && shape.kind != ShapeKind::picture;
    return {
        {"ID", shape.id},
        {"Name", shape.name},
        {"Top", number(shape.top)},
        {"Left", number(shape.left)},
        {"Width", number(shape.width)},
        {"Height", number(shape.height)},
        {"ShpType", hostShapeType(shape.kind)},
        {"HasFill", shape.fill.has_value()},
        {"FillColor", shape.fill ? shape.fill->hostValue() : 0},
        {"HasTextFrame", textFrame},
        {"HasText", textFrame && !shape.text.empty()},
        {"AutoSize", false},
        {"WordWrap", true},
        {"MarginTop", 3.6},
        {"MarginLeft", 7.2},
        {"ZOrder", zOrder},
        {"HasLineBreaks", textFrame && shape.text.find_first_of("\r\n\v") != std::string::npos},
    };
}

std::string dumped(const nlohmann::ordered_json& json) {
    // Names are whatever the scenario wrote; bad UTF-8 must not throw.
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace

std::string Rgb::hex() const { return fmt::format("#{:02X}{:02X}{:02X}", r, g, b); }

std::optional<Rgb> parseHexColor(std::string_view text) {
    text = support::trimWhitespace(text);
    if (!text.empty() && text.front() == '#') text.remove_prefix(1);
    if (text.size() != 3 && text.size() != 6) return std::nullopt;
    std::array<int, 6> digits{};
    for (std::size_t i = 0; i < text.size(); ++i) {
        digits[i] = support::hexDigitValue(text[i]);
        if (digits[i] < 0) return std::nullopt;
    }
    if (text.size() == 3) {
        return Rgb{static_cast<std::uint8_t>(digits[0] * 17), static_cast<std::uint8_t>(digits[1] * 17),
                   static_cast<std::uint8_t>(digits[2] * 17)};
    }
    return Rgb{static_cast<std::uint8_t>(digits[0] * 16 + digits[1]), static_cast<std::uint8_t>(digits[2] * 16 + digits[3]),
               static_cast<std::uint8_t>(digits[4] * 16 + digits[5])};
}

Rgb tinted(Rgb color, double tint) {
    auto apply = [&](std::uint8_t c) {
        return tint > 0 ? channel(c + (255.0 - c) * tint) : channel(c * (1.0 + tint));
    };
    return {apply(color.r), apply(color.g), apply(color.b)};
}

std::string_view kindName(ShapeKind kind) {
    switch (kind) {
        case ShapeKind::rect: return "rect";
        case ShapeKind::ellipse: return "ellipse";
        case ShapeKind::textbox: return "textbox";
        case ShapeKind::line: return "line";
        case ShapeKind::table: return "table";
        case ShapeKind::picture: return "picture";
    }
    return "rect";
}

std::optional<ShapeKind> kindNamed(std::string_view name) {
    for (auto kind : {ShapeKind::rect, ShapeKind::ellipse, ShapeKind::textbox, ShapeKind::line, ShapeKind::table}) {
        if (kindName(kind) == name) return kind;
    }
    return std::nullopt;
}

std::string_view pictureType(std::string_view bytes) {
    if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return "image/png";
    const auto start = bytes.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) return {};
    const auto text = bytes.substr(start);
    if (text.starts_with("<svg") || (text.starts_with("<?xml") && text.find("<svg") != std::string_view::npos)) {
        return "image/svg+xml";
    }
    return {};
}

std::string_view lineEndName(LineEnd end) {
    switch (end) {
        case LineEnd::none: return "none";
        case LineEnd::triangle: return "triangle";
        case LineEnd::open: return "open";
        case LineEnd::circle: return "circle";
    }
    return "none";
}

Shape Shape::made(ShapeKind kind) {
    Shape shape;
    shape.kind = kind;
    switch (kind) {
        case ShapeKind::rect:
        case ShapeKind::ellipse:
            shape.fill = Rgb{0x44, 0x72, 0xC4};
            shape.line = Rgb{0x2F, 0x52, 0x8F};
            shape.font = Rgb{0xFF, 0xFF, 0xFF};
            break;
        case ShapeKind::textbox:
            shape.width = 200;
            shape.height = 40;
            break;
        case ShapeKind::line:
            shape.height = 0;
            shape.line = Rgb{0x44, 0x72, 0xC4};
            break;
        case ShapeKind::table:
            shape.table = TableGrid{};
            break;
        case ShapeKind::picture:
            break;
    }
    return shape;
}

Shape* DocumentState::shapeNamed(std::string_view name) {
    for (auto& shape : currentSlide().shapes) {
        if (shape.name == name) return &shape;
    }
    return nullptr;
}

std::vector<Shape*> DocumentState::selectedShapes() {
    std::vector<Shape*> shapes;
    for (auto id : selection) {
        for (auto& shape : currentSlide().shapes) {
            if (shape.id == id) shapes.push_back(&shape);
        }
    }
    return shapes;
}

int DocumentState::selectionOrder(std::int64_t id) const {
    auto it = std::find(selection.begin(), selection.end(), id);
    return it == selection.end() ? 0 : static_cast<int>(it - selection.begin()) + 1;
}

std::vector<Rgb> DocumentState::themeSlots() const {
    std::vector<Rgb> slots;
    std::string_view rest = themeText;
    while (slots.size() < themeSlotNames.size()) {
        auto comma = rest.find(',');
        if (auto color = parseHexColor(rest.substr(0, comma))) slots.push_back(*color);
        if (comma == std::string_view::npos) break;
        rest.remove_prefix(comma + 1);
    }
    return slots;
}

std::optional<Rgb> DocumentState::themeSlot(std::string_view slotName) const {
    auto named = std::find(themeSlotNames.begin(), themeSlotNames.end(), slotName);
    if (named == themeSlotNames.end()) return std::nullopt;
    auto slots = themeSlots();
    auto index = static_cast<std::size_t>(named - themeSlotNames.begin());
    if (index >= slots.size()) return std::nullopt;
    return slots[index];
}

std::string DocumentState::selectedShapesJSON() const {
    if (rawSelected) return *rawSelected;
    auto json = nlohmann::ordered_json::array();
    const auto& shapes = currentSlide().shapes;
    for (auto id : selection) {
        for (std::size_t i = 0; i < shapes.size(); ++i) {
            if (shapes[i].id == id) json.push_back(shapeJSON(shapes[i], i + 1));
        }
    }
    return dumped(json);
}

std::string DocumentState::otherShapesJSON() const {
    if (rawOthers) return *rawOthers;
    auto json = nlohmann::ordered_json::array();
    const auto& shapes = currentSlide().shapes;
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        if (selectionOrder(shapes[i].id) == 0) json.push_back(shapeJSON(shapes[i], i + 1));
    }
    return dumped(json);
}

}  // namespace velmora::host
