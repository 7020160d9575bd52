#include "slidelibrary/SlideMetadata.h"

#include <simdjson.h>

#include <cmath>
#include <cstdio>

#include "platform/Platform.h"

namespace velmora {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

simdjson::dom::parser& parser() {
    // One per thread: loads run on worker threads, the tagging window on the main one.
    thread_local simdjson::dom::parser instance;
    return instance;
}

std::optional<std::vector<std::string>> strings(element value) {
    simdjson::dom::array array;
    if (value.get_array().get(array)) return std::nullopt;
    std::vector<std::string> out;
    out.reserve(array.size());
    for (element item : array) {
        std::string_view text;
        if (item.get_string().get(text)) return std::nullopt;
        out.emplace_back(text);
    }
    return out;
}

std::optional<std::string_view> stringOf(element value) {
    std::string_view text;
    if (value.get_string().get(text)) return std::nullopt;
    return text;
}

// Walks an array of objects; `record` turns one into a T or fails the whole.
template <typename T, typename Record>
std::optional<std::vector<T>> decodeArray(std::string_view json, Record&& record) {
    element root;
    if (parser().parse(json.data(), json.size()).get(root)) return std::nullopt;
    simdjson::dom::array array;
    if (root.get_array().get(array)) return std::nullopt;
    std::vector<T> out;
    out.reserve(array.size());
    for (element item : array) {
        simdjson::dom::object object;
        if (item.get_object().get(object)) return std::nullopt;
        auto decoded = record(object);
        if (!decoded) return std::nullopt;
        out.push_back(std::move(*decoded));
    }
    return out;
}

void escapeInto(std::string& out, std::string_view text) {
    out += '"';
    for (unsigned char c : text) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '/': out += "\\/"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            default:
                if (c < 0x20) {
                    char buffer[8];
                    std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
                    out += buffer;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    out += '"';
}

void prettyInto(std::string& out, const nlohmann::ordered_json& value, int depth) {
    const std::string inner(static_cast<std::size_t>(depth + 1) * 2, ' ');
    const std::string outer(static_cast<std::size_t>(depth) * 2, ' ');
    switch (value.type()) {
        case nlohmann::ordered_json::value_t::array: {
            out += "[\n";
            bool first = true;
            for (const auto& element : value) {
                if (!first) out += ",\n";
                first = false;
                out += inner;
                prettyInto(out, element, depth + 1);
            }
            out += "\n" + outer + "]";
            break;
        }
        case nlohmann::ordered_json::value_t::object: {
            out += "{\n";
            bool first = true;
            for (const auto& [key, element] : value.items()) {
                if (!first) out += ",\n";
                first = false;
                out += inner;
                escapeInto(out, key);
                out += " : ";
                prettyInto(out, element, depth + 1);
            }
            out += "\n" + outer + "}";
            break;
        }
        case nlohmann::ordered_json::value_t::string:
            escapeInto(out, value.get_ref<const std::string&>());
            break;
        default:
            out += value.dump();
    }
}

}  // namespace

std::optional<std::vector<SlideMetadataItem>> decodeSlideMetadata(std::string_view json) {
    return decodeArray<SlideMetadataItem>(json, [](simdjson::dom::object object) -> std::optional<SlideMetadataItem> {
        std::optional<std::string_view> name, text, date;
        std::optional<std::vector<std::string>> tags;
        bool ok = true;
        for (auto field : object) {
            const std::string_view key = field.key;
            if (key == "FullSlideName") {
                ok = ok && (name = stringOf(field.value)).has_value();
            } else if (key == "TextContent") {
                ok = ok && (text = stringOf(field.value)).has_value();
            } else if (key == "Tags") {
                ok = ok && (tags = strings(field.value)).has_value();
            } else if (key == "DateSaved") {
                ok = ok && (date = stringOf(field.value)).has_value();
            }
        }
        if (!ok || !name || !text || !tags || !date) return std::nullopt;
        const auto saved = support::parseLocalTimestamp(*date);
        if (!saved) return std::nullopt;
        return SlideMetadataItem{std::string(*name), std::string(*text), std::move(*tags), *saved};
    });
}

std::string encodeSlideMetadata(const std::vector<SlideMetadataItem>& items) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const auto& item : items) {
        nlohmann::ordered_json record;
        record["FullSlideName"] = item.fullSlideName;
        record["TextContent"] = item.textContent;
        record["Tags"] = item.tags;
        record["DateSaved"] = support::formatLocalTimestamp(item.dateSaved);
        array.push_back(std::move(record));
    }
    return prettyJSON(array);
}

std::optional<std::vector<RecentTagRecord>> decodeRecentTagRecords(std::string_view json) {
    return decodeArray<RecentTagRecord>(json, [](simdjson::dom::object object) -> std::optional<RecentTagRecord> {
        std::optional<std::string_view> date;
        std::optional<std::vector<std::string>> tags;
        bool ok = true;
        for (auto field : object) {
            if (field.key == "DateSaved") {
                ok = ok && (date = stringOf(field.value)).has_value();
            } else if (field.key == "Tags") {
                ok = ok && (tags = strings(field.value)).has_value();
            }
        }
        if (!ok || !date || !tags) return std::nullopt;
        return RecentTagRecord{support::parseInternetDateTime(*date).value_or(support::distantPast), std::move(*tags)};
    });
}

JSONArrayRead readJSONArray(std::string_view bytes) {
    JSONArrayRead read;
    auto parsed = nlohmann::ordered_json::parse(bytes, nullptr, false);
    if (parsed.is_discarded() || !(parsed.is_array() || parsed.is_object())) {
        read.parseError = "The data couldn’t be read because it isn’t in the correct format.";
        return read;
    }
    if (!parsed.is_array()) return read;
    for (const auto& element : parsed) {
        if (!element.is_object()) return read;
    }
    read.records.assign(std::make_move_iterator(parsed.begin()), std::make_move_iterator(parsed.end()));
    return read;
}

std::string prettyJSON(const nlohmann::ordered_json& value) {
    if (value.is_array() && value.empty()) return "[\n\n]";
    std::string out;
    prettyInto(out, value, 0);
    return out;
}

std::string slideLibraryFolder() {
    return platform::files().homeDirectory() + "/Library/Application Support/Microsoft/Velmora/User/SlideLibrary";
}

std::string taggingMetadataPath() {
    std::string path = platform::files().homeDirectory();
    for (const char* piece : {"Library/Application Support/Microsoft/Velmora/User", "SlideLibrary",
                              "SlideLibrary_Metadata.json"}) {
        if (path.empty() || path.back() != '/') path += '/';
        path += piece;
    }
    return path;
}

}  // namespace velmora
