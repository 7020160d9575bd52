#include "assistant/ShapeMetadata.h"

#include <simdjson.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>

#include <fmt/format.h>

#include "support/Text.h"

namespace velmora {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

enum class Kind { Integer, Text, Double, Boolean };

struct Field {
    std::string_view key;
    Kind kind;
};

// The keys in the order they are checked and printed.
constexpr std::array<Field, 17> fields = {{
    {"ID", Kind::Integer},        {"Name", Kind::Text},         {"Top", Kind::Double},
    {"Left", Kind::Double},       {"Width", Kind::Double},      {"Height", Kind::Double},
    {"ShpType", Kind::Text},      {"HasFill", Kind::Boolean},   {"FillColor", Kind::Integer},
    {"HasTextFrame", Kind::Boolean}, {"HasText", Kind::Boolean}, {"AutoSize", Kind::Boolean},
    {"WordWrap", Kind::Boolean},  {"MarginTop", Kind::Double},  {"MarginLeft", Kind::Double},
    {"ZOrder", Kind::Integer},    {"HasLineBreaks", Kind::Boolean},
}};

const char* kindName(Kind kind) {
    switch (kind) {
        case Kind::Integer: return "Int";
        case Kind::Text: return "String";
        case Kind::Double: return "Double";
        case Kind::Boolean: return "Bool";
    }
    return "";
}

const char* found(element_type type) {
    switch (type) {
        case element_type::ARRAY: return "an array";
        case element_type::OBJECT: return "an object";
        case element_type::INT64:
        case element_type::UINT64:
        case element_type::DOUBLE: return "a number";
        case element_type::STRING: return "a string";
        case element_type::BOOL: return "a boolean";
        case element_type::NULL_VALUE: return "null";
    }
    return "a value";
}

// Keys are 2 to 13 bytes long: two overlapping loads from each end compare
// any of them, cheaper than a call or a loop.
template <typename Word>
bool sameEnds(const char* a, const char* b, std::size_t size) {
    Word a0, a1, b0, b1;
    std::memcpy(&a0, a, sizeof(Word));
    std::memcpy(&b0, b, sizeof(Word));
    std::memcpy(&a1, a + size - sizeof(Word), sizeof(Word));
    std::memcpy(&b1, b + size - sizeof(Word), sizeof(Word));
    return ((a0 ^ b0) | (a1 ^ b1)) == 0;
}

bool sameKey(std::string_view a, std::string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) return false;
    if (size >= 8 && size <= 16) return sameEnds<std::uint64_t>(a.data(), b.data(), size);
    if (size >= 4 && size < 8) return sameEnds<std::uint32_t>(a.data(), b.data(), size);
    if (size >= 2 && size < 4) return sameEnds<std::uint16_t>(a.data(), b.data(), size);
    return a == b;
}

// Objects usually list their keys in field order, so the slot after the
// previous hit is tried first.
int slotOf(std::string_view key, int hint) {
    if (hint < static_cast<int>(fields.size()) && sameKey(fields[hint].key, key)) return hint;
    for (int i = 0; i < static_cast<int>(fields.size()); ++i) {
        if (sameKey(fields[i].key, key)) return i;
    }
    return -1;
}

struct Failure {
    std::string text;
};

std::string at(std::size_t field, std::size_t index) {
    return fmt::format("key \"{}\" at index {}", fields[field].key, index);
}

std::int64_t readInteger(element value, std::size_t field, std::size_t index) {
    switch (value.type()) {
        case element_type::INT64: return value.get_int64().value_unsafe();
        case element_type::UINT64:
            throw Failure{fmt::format("dataCorrupted: {} holds {}, which does not fit in Int", at(field, index),
                                      value.get_uint64().value_unsafe())};
        case element_type::DOUBLE: {
            // A whole number written with a fraction or an exponent still fits.
            double number = value.get_double().value_unsafe();
            if (std::isfinite(number) && std::trunc(number) == number && number >= -9223372036854775808.0 &&
                number < 9223372036854775808.0) {
                return static_cast<std::int64_t>(number);
            }
            throw Failure{fmt::format("dataCorrupted: {} holds {}, which does not fit in Int", at(field, index),
                                      support::swiftDescription(number))};
        }
        default: break;
    }
    return 0;  // not reached: the type was checked before
}

double readDouble(element value) {
    switch (value.type()) {
        case element_type::INT64: return static_cast<double>(value.get_int64().value_unsafe());
        case element_type::UINT64: return static_cast<double>(value.get_uint64().value_unsafe());
        default: return value.get_double().value_unsafe();
    }
}

bool accepts(Kind kind, element_type type) {
    switch (kind) {
        case Kind::Integer:
        case Kind::Double:
            return type == element_type::INT64 || type == element_type::UINT64 || type == element_type::DOUBLE;
        case Kind::Text: return type == element_type::STRING;
        case Kind::Boolean: return type == element_type::BOOL;
    }
    return false;
}

ShapeMetadata decodeShape(simdjson::dom::object object, std::size_t index) {
    std::array<element, fields.size()> slots;
    std::array<bool, fields.size()> present{};
    int hint = 0;
    for (auto member : object) {
        int slot = slotOf(member.key, hint);
        if (slot < 0) continue;  // keys beyond the seventeen are ignored
        slots[slot] = member.value;
        present[slot] = true;
        hint = slot + 1;
    }

    ShapeMetadata shape;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!present[i]) throw Failure{fmt::format("keyNotFound: no value for {}", at(i, index))};
        element value = slots[i];
        element_type type = value.type();
        if (type == element_type::NULL_VALUE) {
            throw Failure{fmt::format("valueNotFound: {} expects {} but found null", at(i, index), kindName(fields[i].kind))};
        }
        if (!accepts(fields[i].kind, type)) {
            throw Failure{fmt::format("typeMismatch: {} expects {} but found {}", at(i, index), kindName(fields[i].kind),
                                      found(type))};
        }
        switch (i) {
            case 0: shape.ID = readInteger(value, i, index); break;
            case 1: shape.Name = std::string(value.get_string().value_unsafe()); break;
            case 2: shape.Top = readDouble(value); break;
            case 3: shape.Left = readDouble(value); break;
            case 4: shape.Width = readDouble(value); break;
            case 5: shape.Height = readDouble(value); break;
            case 6: shape.ShpType = std::string(value.get_string().value_unsafe()); break;
            case 7: shape.HasFill = value.get_bool().value_unsafe(); break;
            case 8: shape.FillColor = readInteger(value, i, index); break;
            case 9: shape.HasTextFrame = value.get_bool().value_unsafe(); break;
            case 10: shape.HasText = value.get_bool().value_unsafe(); break;
            case 11: shape.AutoSize = value.get_bool().value_unsafe(); break;
            case 12: shape.WordWrap = value.get_bool().value_unsafe(); break;
            case 13: shape.MarginTop = readDouble(value); break;
            case 14: shape.MarginLeft = readDouble(value); break;
            case 15: shape.ZOrder = readInteger(value, i, index); break;
            case 16: shape.HasLineBreaks = value.get_bool().value_unsafe(); break;
        }
    }
    return shape;
}

// The text with every whole number that fits in no 64-bit integer written
// with ".0", so the parser reads it as a double; empty when there is none.
// The platform reads such a number as a double too, so it decodes where a
// double is wanted and fails where an integer is.
std::string widenLargeIntegers(std::string_view json) {
    std::string out;
    bool changed = false;
    bool inString = false;
    std::size_t copied = 0;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (inString) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                inString = false;
            }
            continue;
        }
        if (c == '"') {
            inString = true;
            continue;
        }
        if (c != '-' && (c < '0' || c > '9')) continue;
        std::size_t end = i;
        bool whole = true;
        while (end < json.size() && std::string_view("+-0123456789.eE").find(json[end]) != std::string_view::npos) {
            const bool digit = json[end] >= '0' && json[end] <= '9';
            whole = whole && (digit || (end == i && json[end] == '-'));
            ++end;
        }
        if (whole && end > i + (c == '-' ? 1 : 0)) {
            const char* first = json.data() + i;
            const char* last = json.data() + end;
            std::int64_t signedValue = 0;
            std::uint64_t unsignedValue = 0;
            const bool fits = std::from_chars(first, last, signedValue).ec == std::errc{} ||
                              std::from_chars(first, last, unsignedValue).ec == std::errc{};
            if (!fits) {
                out.append(json.substr(copied, end - copied));
                out += ".0";
                copied = end;
                changed = true;
            }
        }
        i = end - 1;
    }
    if (!changed) return {};
    out.append(json.substr(copied));
    return out;
}

}  // namespace

ShapeDecoding decodeShapeList(std::string_view json, bool padded) {
    // One parser per thread keeps its buffers between calls.
    thread_local simdjson::dom::parser parser;
    ShapeDecoding result;
    element root;
    // Padded text is read where it lies; other text is copied into the parser's padded buffer.
    auto error = parser.parse(json.data(), json.size(), !padded).get(root);
    if (error == simdjson::NUMBER_ERROR) {
        std::string widened = widenLargeIntegers(json);
        if (!widened.empty() && !parser.parse(widened).get(root)) error = simdjson::SUCCESS;
    }
    if (error) {
        result.error = fmt::format("dataCorrupted: the given data was not valid JSON ({})", simdjson::error_message(error));
        return result;
    }
    if (root.type() != element_type::ARRAY) {
        result.error = fmt::format("typeMismatch: expected an array of shapes but found {}", found(root.type()));
        return result;
    }
    try {
        simdjson::dom::array array = root.get_array().value_unsafe();
        result.shapes.reserve(array.size());
        std::size_t index = 0;
        for (element item : array) {
            if (item.type() != element_type::OBJECT) {
                throw Failure{fmt::format("typeMismatch: index {} expects a shape object but found {}", index,
                                          found(item.type()))};
            }
            result.shapes.push_back(decodeShape(item.get_object().value_unsafe(), index));
            ++index;
        }
    } catch (Failure& failure) {
        result.shapes.clear();
        result.error = std::move(failure.text);
        return result;
    }
    result.ok = true;
    return result;
}

std::string describeShapes(const std::vector<ShapeMetadata>& shapes) {
    std::string out;
    appendShapesDescription(out, shapes);
    return out;
}

void appendShapesDescription(std::string& out, const std::vector<ShapeMetadata>& shapes) {
    // Every run logs this line, so it is written straight into one buffer.
    out.reserve(out.size() + 64 + shapes.size() * 400);
    auto text = [&](std::string_view part) { out.append(part); };
    auto number = [&](double value) { support::appendSwiftDescription(out, value); };
    auto integer = [&](std::int64_t value) {
        char digits[24];
        out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    };
    auto flag = [&](bool value) { text(value ? "true" : "false"); };
    text("[");
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        const auto& s = shapes[i];
        if (i) text(", ");
        text("ShapeMetadata(ID: "), integer(s.ID);
        text(", Name: "), support::appendQuoted(out, s.Name);
        text(", Top: "), number(s.Top);
        text(", Left: "), number(s.Left);
        text(", Width: "), number(s.Width);
        text(", Height: "), number(s.Height);
        text(", ShpType: "), support::appendQuoted(out, s.ShpType);
        text(", HasFill: "), flag(s.HasFill);
        text(", FillColor: "), integer(s.FillColor);
        text(", HasTextFrame: "), flag(s.HasTextFrame);
        text(", HasText: "), flag(s.HasText);
        text(", AutoSize: "), flag(s.AutoSize);
        text(", WordWrap: "), flag(s.WordWrap);
        text(", MarginTop: "), number(s.MarginTop);
        text(", MarginLeft: "), number(s.MarginLeft);
        text(", ZOrder: "), integer(s.ZOrder);
        text(", HasLineBreaks: "), flag(s.HasLineBreaks);
        text(")");
    }
    text("]");
}

}  // namespace velmora
