#include "websearch/SearchPages.h"

#include <algorithm>
#include <string_view>

namespace velmora {

namespace pages {
extern const char iconSearchPage[];
extern const unsigned long iconSearchPageSize;
extern const char imageSearchPage[];
extern const unsigned long imageSearchPageSize;
}  // namespace pages

namespace {

// The page with each marker replaced by its value, in one pass over the
// page, so a value is never read for markers itself.
std::string filled(std::string_view page, std::initializer_list<std::pair<std::string_view, std::string_view>> values) {
    std::string text;
    text.reserve(page.size() + 256);
    std::size_t at = 0;
    while (at < page.size()) {
        const auto next = page.find("{{", at);
        if (next == std::string_view::npos) break;
        text.append(page.substr(at, next - at));
        at = next;
        bool replaced = false;
        for (const auto& [marker, value] : values) {
            if (page.substr(at, marker.size()) == marker) {
                text.append(value);
                at += marker.size();
                replaced = true;
                break;
            }
        }
        if (!replaced) text.append(page.substr(at++, 1));
    }
    text.append(page.substr(std::min(at, page.size())));
    return text;
}

bool isPlain(const std::string& text) {
    if (text.empty()) return false;
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
               c == '$' || c == '/';
    });
}

std::string quotedIfNeeded(const std::string& text) {
    if (isPlain(text)) return text;
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        out += c;
    }
    return out + "\"";
}

void describeInto(const nlohmann::json& value, int depth, std::string& out) {
    const std::string inner(static_cast<std::size_t>(depth + 1) * 4, ' ');
    const std::string outer(static_cast<std::size_t>(depth) * 4, ' ');
    // A nested collection opens after its own indentation, as the platform prints one.
    if (depth > 0 && (value.is_object() || value.is_array())) out += outer;
    if (value.is_object()) {
        // Keys print sorted, as the platform's dictionaries do.
        std::vector<std::string> keys;
        for (const auto& item : value.items()) keys.push_back(item.key());
        std::sort(keys.begin(), keys.end());
        out += "{\n";
        for (const auto& key : keys) {
            out += inner + quotedIfNeeded(key) + " = ";
            describeInto(value.at(key), depth + 1, out);
            out += ";\n";
        }
        out += outer + "}";
    } else if (value.is_array()) {
        out += "(\n";
        for (std::size_t i = 0; i < value.size(); ++i) {
            out += inner;
            describeInto(value[i], depth + 1, out);
            out += i + 1 < value.size() ? ",\n" : "\n";
        }
        out += outer + ")";
    } else if (value.is_string()) {
        out += depth == 0 ? value.get<std::string>() : quotedIfNeeded(value.get<std::string>());
    } else if (value.is_boolean()) {
        out += value.get<bool>() ? "1" : "0";
    } else if (value.is_null()) {
        out += depth == 0 ? "<null>" : "\"<null>\"";
    } else {
        out += value.dump();
    }
}

}  // namespace

std::string iconSearchPage(const std::string& licenseKey, const std::string& apiBase) {
    return filled({pages::iconSearchPage, pages::iconSearchPageSize},
                  {{"{{LICENSE_KEY}}", licenseKey}, {"{{API_BASE}}", apiBase}});
}

std::string imageSearchPage(const std::string& serviceBase) {
    return filled({pages::imageSearchPage, pages::imageSearchPageSize}, {{"{{SERVICE_BASE}}", serviceBase}});
}

std::string describeMessageBody(const nlohmann::json& body) {
    std::string out;
    describeInto(body, 0, out);
    return out;
}

std::string messageBodyType(const nlohmann::json& body) {
    switch (body.type()) {
        case nlohmann::json::value_t::object: return "__NSDictionaryM";
        case nlohmann::json::value_t::array: return "__NSArrayM";
        case nlohmann::json::value_t::string: return "__NSCFString";
        case nlohmann::json::value_t::boolean: return "__NSCFBoolean";
        case nlohmann::json::value_t::null: return "NSNull";
        default: return "__NSCFNumber";
    }
}

}  // namespace velmora
