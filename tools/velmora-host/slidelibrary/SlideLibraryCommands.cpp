// The slide library's files in the simulator: the metadata file and the
// thumbnails as a scenario sets them up, and what lies on disk beside what
// the library's view model holds.
//
// Commands: `library sample|broken|empty|none|FILE`, `library readonly on|off`,
// `thumbnail NAME none|empty|broken|huge|sample`. Show: `show library`.
// FILE is read relative to the working folder (a scenario runs in its own).

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

#include "Host.h"
#include "Scenario.h"
#include "slidelibrary/SlideLibraryFiles.h"
#include "support/Text.h"

namespace velmora::host {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

const std::vector<std::string> recordKeys = {"FullSlideName", "TextContent", "Tags", "DateSaved", "SlidesFileName"};

void writeMetadata(const std::string& bytes) {
    if (libraryReadOnly()) throw ScenarioError("the slide library is read-only (library readonly off first)");
    std::error_code ec;
    fs::create_directories(slideLibraryFolder(), ec);
    std::ofstream out(metadataFile(), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) throw ScenarioError("cannot write " + metadataFile().string());
}

std::optional<std::string> readBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return std::move(bytes).str();
}

std::string dumped(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

// A tag bare, as the pane shows it; quoted when that would blur the list.
std::string tagText(const std::string& tag) {
    const bool plain = !tag.empty() && tag.find_first_of(",[]\"\\") == std::string::npos && tag.front() != ' ' &&
                       tag.back() != ' ';
    return plain ? Host::oneLine(tag) : support::quoted(tag);
}

std::string stringOrJSON(const Json& value, bool quote) {
    if (!value.is_string()) return dumped(value);
    const auto& text = value.get_ref<const std::string&>();
    return quote ? support::quoted(text) : Host::oneLine(text);
}

std::string tagsText(const Json& tags) {
    if (!tags.is_array()) return dumped(tags);
    std::string out = "[";
    for (const auto& tag : tags) {
        if (out.size() > 1) out += ", ";
        out += tag.is_string() ? tagText(tag.get_ref<const std::string&>()) : dumped(tag);
    }
    return out + "]";
}

// `"Q3 Review" tags [Finance, Q3] saved 2026-09-14T09:30:00 file "Q3 Review.pptx"`,
// then the keys that are missing or not expected.
std::string recordLine(const Json& record) {
    if (!record.is_object()) return "not an object: " + dumped(record);
    std::vector<std::string> parts, missing, extra;
    auto part = [&](const char* key, const std::string& label, const std::function<std::string(const Json&)>& text) {
        if (!record.contains(key)) return;
        parts.push_back(label + text(record.at(key)));
    };
    // A name that is not a string is labelled, so the line still reads.
    const bool stringName = !record.contains("FullSlideName") || record.at("FullSlideName").is_string();
    part("FullSlideName", stringName ? "" : "name ",
         [](const Json& v) { return stringOrJSON(v, true); });
    part("Tags", "tags ", tagsText);
    part("DateSaved", "saved ", [](const Json& v) { return stringOrJSON(v, false); });
    part("SlidesFileName", "file ", [](const Json& v) { return stringOrJSON(v, true); });
    if (record.contains("TextContent") && !record.at("TextContent").is_string()) {
        parts.push_back("text " + dumped(record.at("TextContent")));
    }
    for (const auto& key : recordKeys) {
        if (!record.contains(key)) missing.push_back(key);
    }
    for (const auto& [key, _] : record.items()) {
        if (std::find(recordKeys.begin(), recordKeys.end(), key) == recordKeys.end()) extra.push_back(Host::oneLine(key));
    }
    std::string line;
    for (const auto& p : parts) line += (line.empty() ? "" : " ") + p;
    auto list = [](const std::vector<std::string>& keys) {
        std::string text;
        for (const auto& key : keys) text += (text.empty() ? "" : ", ") + key;
        return text;
    };
    if (!missing.empty()) line += (line.empty() ? "" : " ") + std::string("missing ") + list(missing);
    if (!extra.empty()) line += (line.empty() ? "" : " ") + std::string("extra ") + list(extra);
    return line;
}

// The names the records give, in file order; nothing when the file holds no list.
std::optional<std::vector<std::string>> showFile() {
    auto& host = Host::instance();
    const auto bytes = readBytes(metadataFile());
    if (!bytes) {
        host.emit("library file: (missing)");
        return std::nullopt;
    }
    const Json json = Json::parse(*bytes, nullptr, false);
    if (json.is_discarded()) {
        host.emit("library file: not JSON");
        return std::nullopt;
    }
    if (!json.is_array()) {
        host.emit(fmt::format("library file: {} bytes, not an array", bytes->size()));
        return std::nullopt;
    }
    if (json.empty()) host.emit("library file: (no records)");
    std::vector<std::string> names;
    for (const auto& record : json) {
        host.emit("library file: " + recordLine(record));
        if (record.is_object() && record.contains("FullSlideName") && record.at("FullSlideName").is_string()) {
            names.push_back(record.at("FullSlideName").get<std::string>());
        }
    }
    return names;
}

// How many listed slides have a thumbnail, which do not, and which
// thumbnails no record lists (by name when there are few, as after a delete).
void showThumbnails(const std::optional<std::vector<std::string>>& records) {
    std::set<std::string> files;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(slideLibraryFolder() / "Thumbnail", ec)) {
        const auto name = entry.path().filename().string();
        if (name.size() > 4 && name.ends_with(".png")) files.insert(name.substr(0, name.size() - 4));
    }
    if (!records) {
        Host::instance().emit(fmt::format("thumbnails: {} files", files.size()));
        return;
    }
    const auto& names = *records;
    std::size_t present = 0, empty = 0, notPNG = 0;
    std::vector<std::string> missing;
    std::set<std::string> listed;
    for (const auto& name : names) {
        listed.insert(name);
        const auto path = thumbnailFile(name);
        if (!path || !files.count(name)) {
            missing.push_back(support::quoted(name));
            continue;
        }
        ++present;
        char head[8] = {};
        std::ifstream in(*path, std::ios::binary);
        in.read(head, sizeof head);
        if (in.gcount() == 0) {
            ++empty;
        } else if (in.gcount() < 8 || std::string(head, 8) != "\x89PNG\r\n\x1a\n") {
            ++notPNG;
        }
    }
    std::vector<std::string> unlisted;
    for (const auto& file : files) {
        if (!listed.count(file)) unlisted.push_back(support::quoted(file));
    }
    auto list = [](const std::vector<std::string>& items) {
        std::string text;
        for (const auto& item : items) text += (text.empty() ? "" : ", ") + item;
        return text;
    };
    std::string line = fmt::format("thumbnails: {} present, ", present);
    if (empty) line += fmt::format("{} empty, ", empty);
    if (notPNG) line += fmt::format("{} not a PNG, ", notPNG);
    line += missing.empty() ? "none missing" : "missing: " + list(missing);
    constexpr std::size_t mostNamed = 5;
    if (unlisted.size() > mostNamed) {
        line += fmt::format("; {} not in the file", unlisted.size());
    } else if (!unlisted.empty()) {
        line += "; not in the file: " + list(unlisted);
    }
    Host::instance().emit(line);
}

void libraryCommand(const Arguments& a) {
    auto& host = Host::instance();
    if (host.sandboxRoot().empty()) throw ScenarioError("the simulator has no sandbox for the slide library");
    const std::string& what = a[0];
    if (what == "readonly") {
        if (a.size() != 2 || (a[1] != "on" && a[1] != "off")) throw ScenarioError("usage: library readonly on|off");
        const bool on = a[1] == "on";
        if (auto error = setLibraryReadOnly(on)) {
            host.emit("library: " + std::string(on ? "could not make it read-only: " : "could not make it writable: ") + *error);
        }
        host.emit(on ? "library: the folder and the metadata file are read-only"
                     : "library: the folder and the metadata file are writable");
        return;
    }
    if (a.size() != 1) throw ScenarioError("usage: library sample|broken|empty|none|FILE, or library readonly on|off");
    if (what == "sample") {
        writeSampleLibrary();
        const auto& slides = sampleSlides();
        const auto drawn = std::count_if(slides.begin(), slides.end(), [](const SampleSlide& s) { return s.thumbnail; });
        host.emit(fmt::format("library: wrote the sample: {} slides, {} thumbnails", slides.size(), drawn));
    } else if (what == "broken") {
        const std::string bytes = "[{\"FullSlideName\": \"Cut";
        writeMetadata(bytes);
        host.emit(fmt::format("library: wrote {} bytes that are not JSON", bytes.size()));
    } else if (what == "empty") {
        writeMetadata("[]");
        host.emit("library: wrote an empty list");
    } else if (what == "none") {
        if (libraryReadOnly()) throw ScenarioError("the slide library is read-only (library readonly off first)");
        std::error_code ec;
        const bool removed = fs::remove(metadataFile(), ec);
        host.emit(removed ? "library: removed the metadata file" : "library: there was no metadata file");
    } else {
        const auto bytes = readBytes(fs::absolute(what));
        if (!bytes) throw ScenarioError("cannot read '" + what + "'");
        writeMetadata(*bytes);
        host.emit(fmt::format("library: copied {} ({} bytes)", what, bytes->size()));
    }
}

void thumbnailCommand(const Arguments& a) {
    auto& host = Host::instance();
    if (host.sandboxRoot().empty()) throw ScenarioError("the simulator has no sandbox for the slide library");
    const auto path = thumbnailFile(a[0]);
    if (!path) throw ScenarioError("'" + a[0] + "' cannot name a thumbnail file");
    const std::string name = support::quoted(a[0]);
    auto write = [&](const std::string& bytes) {
        std::error_code ec;
        fs::create_directories(path->parent_path(), ec);
        std::ofstream out(*path, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush()) throw ScenarioError("cannot write " + path->string());
    };
    if (a[1] == "none") {
        std::error_code ec;
        const bool removed = fs::remove(*path, ec);
        host.emit(removed ? "thumbnail: removed " + name : "thumbnail: there was none for " + name);
    } else if (a[1] == "empty") {
        write("");
        host.emit("thumbnail: wrote an empty file for " + name);
    } else if (a[1] == "broken") {
        const std::string bytes = "this is not a picture\n";
        write(bytes);
        host.emit(fmt::format("thumbnail: wrote {} bytes that are not an image for {}", bytes.size(), name));
    } else if (a[1] == "huge") {
        write(thumbnailPNG(a[0], 4000, 3000));
        host.emit("thumbnail: wrote a 4000x3000 picture for " + name);
    } else if (a[1] == "sample") {
        write(thumbnailPNG(a[0]));
        host.emit("thumbnail: wrote the sample picture for " + name);
    } else {
        throw ScenarioError("thumbnail takes none, empty, broken, huge or sample, not '" + a[1] + "'");
    }
}

[[maybe_unused]] const bool registered[] = {
    registerCommand({"library", "library sample|broken|empty|none|FILE, or library readonly on|off", 1, 2,
                     libraryCommand}),
    registerCommand({"thumbnail", "thumbnail NAME none|empty|broken|huge|sample", 2, 2, thumbnailCommand}),
    registerShow({"library", "show library", 0, 0,
                  [](const Arguments&) {
                      Host::instance().emitInspected("slide library", {"slide library: (never opened)"});
                      showThumbnails(showFile());
                  }}),
};

}  // namespace

}  // namespace velmora::host
