#include "assistant/ShapeMetadata.h"

#include <simdjson.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <optional>

#include <fmt/format.h>

#include "support/Text.h"

namespace velmora {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

enum class Kind { Integer, Text, Double, Boolean };

// A key, its kind and where its value goes: exactly one member pointer is set.
struct Field {
    std::string_view key;
    Kind kind;
    std::int64_t ShapeMetadata::*integer = nullptr;
    std::string ShapeMetadata::*text = nullptr;
    double ShapeMetadata::*number = nullptr;
    bool ShapeMetadata::*flag = nullptr;
};

constexpr Field integerField(std::string_view key, std::int64_t ShapeMetadata::*member) {
    return {key, Kind::Integer, member, nullptr, nullptr, nullptr};
}
constexpr Field textField(std::string_view key, std::string ShapeMetadata::*member) {
    return {key, Kind::Text, nullptr, member, nullptr, nullptr};
}
constexpr Field doubleField(std::string_view key, double ShapeMetadata::*member) {
    return {key, Kind::Double, nullptr, nullptr, member, nullptr};
}
constexpr Field booleanField(std::string_view key, bool ShapeMetadata::*member) {
    return {key, Kind::Boolean, nullptr, nullptr, nullptr, member};
}

// The keys in the order they are checked and printed.
constexpr std::array<Field, 17> fields = {{
    integerField("ID", &ShapeMetadata::ID),
    textField("Name", &ShapeMetadata::Name),
    doubleField("Top", &ShapeMetadata::Top),
    doubleField("Left", &ShapeMetadata::Left),
    doubleField("Width", &ShapeMetadata::Width),
    doubleField("Height", &ShapeMetadata::Height),
    textField("ShpType", &ShapeMetadata::ShpType),
    booleanField("HasFill", &ShapeMetadata::HasFill),
    integerField("FillColor", &ShapeMetadata::FillColor),
    booleanField("HasTextFrame", &ShapeMetadata::HasTextFrame),
    booleanField("HasText", &ShapeMetadata::HasText),
    booleanField("AutoSize", &ShapeMetadata::AutoSize),
    booleanField("WordWrap", &ShapeMetadata::WordWrap),
    doubleField("MarginTop", &ShapeMetadata::MarginTop),
    doubleField("MarginLeft", &ShapeMetadata::MarginLeft),
    integerField("ZOrder", &ShapeMetadata::ZOrder),
    booleanField("HasLineBreaks", &ShapeMetadata::HasLineBreaks),
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

inline bool sameKey(std::string_view a, std::string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) return false;
    if (size >= 8 && size <= 16) return sameEnds<std::uint64_t>(a.data(), b.data(), size);
    if (size >= 4 && size < 8) return sameEnds<std::uint32_t>(a.data(), b.data(), size);
    if (size >= 2 && size < 4) return sameEnds<std::uint16_t>(a.data(), b.data(), size);
    return a == b;
}

// Whether `key` is field `i`'s: against a constant text, which the compiler
// turns into a length check and a word or two of comparison.
inline bool isFieldKey(std::size_t i, std::string_view key) {
    switch (i) {
        case 0: return key == "ID";
        case 1: return key == "Name";
        case 2: return key == "Top";
        case 3: return key == "Left";
        case 4: return key == "Width";
        case 5: return key == "Height";
        case 6: return key == "ShpType";
        case 7: return key == "HasFill";
        case 8: return key == "FillColor";
        case 9: return key == "HasTextFrame";
        case 10: return key == "HasText";
        case 11: return key == "AutoSize";
        case 12: return key == "WordWrap";
        case 13: return key == "MarginTop";
        case 14: return key == "MarginLeft";
        case 15: return key == "ZOrder";
        case 16: return key == "HasLineBreaks";
    }
    return false;
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

// The integer a number holds, or nothing when it holds a fraction or does
// not fit in 64 bits. A whole number written with a fraction or an
// exponent still fits.
std::optional<std::int64_t> integerOf(element value) {
    switch (value.type()) {
        case element_type::INT64: return value.get_int64().value_unsafe();
        case element_type::DOUBLE: {
            const double number = value.get_double().value_unsafe();
            if (std::isfinite(number) && std::trunc(number) == number && number >= -9223372036854775808.0 &&
                number < 9223372036854775808.0) {
                return static_cast<std::int64_t>(number);
            }
            return std::nullopt;
        }
        default: return std::nullopt;
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

// Reads field `i` of `shape` from `value`; false, leaving it, when the value
// is null, of another type, or an integer that does not fit.
inline bool readField(ShapeMetadata& shape, std::size_t i, element value) {
    const Field& field = fields[i];
    switch (value.type()) {
        case element_type::INT64:
            if (field.integer) {
                shape.*field.integer = value.get_int64().value_unsafe();
                return true;
            }
            if (field.number) {
                shape.*field.number = static_cast<double>(value.get_int64().value_unsafe());
                return true;
            }
            return false;
        case element_type::UINT64:
            if (!field.number) return false;  // no integer field holds one beyond Int's range
            shape.*field.number = static_cast<double>(value.get_uint64().value_unsafe());
            return true;
        case element_type::DOUBLE:
            if (field.number) {
                shape.*field.number = value.get_double().value_unsafe();
                return true;
            }
            if (field.integer) {
                auto whole = integerOf(value);
                if (whole) shape.*field.integer = *whole;
                return whole.has_value();
            }
            return false;
        case element_type::STRING:
            if (!field.text) return false;
            (shape.*field.text).append(value.get_string().value_unsafe());  // every field starts empty
            return true;
        case element_type::BOOL:
            if (!field.flag) return false;
            shape.*field.flag = value.get_bool().value_unsafe();
            return true;
        default: return false;
    }
}

// Why field `i` could not be read from `value`.
std::string failureOf(std::size_t i, element value, std::size_t index) {
    const element_type type = value.type();
    if (type == element_type::NULL_VALUE) {
        return fmt::format("valueNotFound: {} expects {} but found null", at(i, index), kindName(fields[i].kind));
    }
    if (!accepts(fields[i].kind, type)) {
        return fmt::format("typeMismatch: {} expects {} but found {}", at(i, index), kindName(fields[i].kind), found(type));
    }
    if (type == element_type::UINT64) {
        return fmt::format("dataCorrupted: {} holds {}, which does not fit in Int", at(i, index),
                           value.get_uint64().value_unsafe());
    }
    return fmt::format("dataCorrupted: {} holds {}, which does not fit in Int", at(i, index),
                       support::swiftDescription(value.get_double().value_unsafe()));
}

// Every key found wherever it stands, the last of a repeated key winning;
// then the fields checked in their order, the first missing or bad one
// failing the shape.
ShapeMetadata decodeShapeBySlots(simdjson::dom::object object, std::size_t index) {
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
        if (!readField(shape, i, slots[i])) throw Failure{failureOf(i, slots[i], index)};
    }
    return shape;
}

// Decodes into `shape`, which is fresh.
void decodeShape(simdjson::dom::object object, std::size_t index, ShapeMetadata& shape) {
    // The host writes the seventeen keys in field order: then each value is
    // read as it comes. Anything else (another order, a missing, bad or
    // repeated key) goes the general way, which decides what wins and
    // which failure is reported.
    std::size_t next = 0;
    for (auto member : object) {
        if (next < fields.size()) {
            if (!isFieldKey(next, member.key) || !readField(shape, next, member.value)) {
                shape = decodeShapeBySlots(object, index);
                return;
            }
            ++next;
        } else if (slotOf(member.key, 0) >= 0) {
            shape = decodeShapeBySlots(object, index);
            return;
        }
    }
    if (next < fields.size()) shape = decodeShapeBySlots(object, index);
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
            decodeShape(item.get_object().value_unsafe(), index, result.shapes.emplace_back());
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

namespace {

// Writes the printed form of the list through one pointer. Each shape first
// makes room for the most it can take (its two texts escaped at their
// longest, every number at its longest), and the line is cut to what was
// written at the end.
class DescriptionWriter {
public:
    explicit DescriptionWriter(std::string& out) : out_(out), used_(out.size()) {}
    ~DescriptionWriter() { out_.resize(used_); }

    void shape(const ShapeMetadata& s, bool first) {
        out_.resize(used_ + fixedRoom + support::quotedLengthBound(s.Name.size()) +
                    support::quotedLengthBound(s.ShpType.size()));
        at_ = out_.data() + used_;
        if (!first) put(", ");
        put("ShapeMetadata(ID: "), integer(s.ID);
        put(", Name: "), at_ = support::writeQuoted(at_, s.Name);
        put(", Top: "), number(s.Top);
        put(", Left: "), number(s.Left);
        put(", Width: "), number(s.Width);
        put(", Height: "), number(s.Height);
        put(", ShpType: "), at_ = support::writeQuoted(at_, s.ShpType);
        put(", HasFill: "), flag(s.HasFill);
        put(", FillColor: "), integer(s.FillColor);
        put(", HasTextFrame: "), flag(s.HasTextFrame);
        put(", HasText: "), flag(s.HasText);
        put(", AutoSize: "), flag(s.AutoSize);
        put(", WordWrap: "), flag(s.WordWrap);
        put(", MarginTop: "), number(s.MarginTop);
        put(", MarginLeft: "), number(s.MarginLeft);
        put(", ZOrder: "), integer(s.ZOrder);
        put(", HasLineBreaks: "), flag(s.HasLineBreaks);
        put(")");
        used_ = static_cast<std::size_t>(at_ - out_.data());
    }

    void literal(std::string_view text) {
        out_.resize(used_);
        out_.append(text);
        used_ += text.size();
    }

private:
    // The labels (under 220 bytes), six numbers, three integers and six flags at their longest.
    static constexpr std::size_t fixedRoom = 256 + 6 * support::maxSwiftDescriptionLength + 3 * 20 + 6 * 5;

    template <std::size_t N>
    void put(const char (&text)[N]) {
        std::memcpy(at_, text, N - 1);
        at_ += N - 1;
    }
    void integer(std::int64_t value) { at_ = support::writeInteger(at_, value); }
    void number(double value) { at_ = support::writeSwiftDescription(at_, value); }
    void flag(bool value) {
        if (value) {
            put("true");
        } else {
            put("false");
        }
    }

    std::string& out_;
    std::size_t used_;
    char* at_ = nullptr;
};

}  // namespace

void appendShapesDescription(std::string& out, const std::vector<ShapeMetadata>& shapes) {
    // Every run logs this line, so it is written straight into one buffer.
    out.reserve(out.size() + 64 + shapes.size() * 420);
    DescriptionWriter writer(out);
    writer.literal("[");
    for (std::size_t i = 0; i < shapes.size(); ++i) writer.shape(shapes[i], i == 0);
    writer.literal("]");
}

}  // namespace velmora
