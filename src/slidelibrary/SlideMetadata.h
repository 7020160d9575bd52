// The slide library's file, SlideLibrary_Metadata.json, and the four ways
// the library reads and writes it.
//
// Provides: SlideMetadataItem, decodeSlideMetadata(), encodeSlideMetadata(),
// RecentTagRecord, decodeRecentTagRecords(), JSONArrayRead, readJSONArray(),
// prettyJSON(), slideLibraryFolder(), taggingMetadataPath().
// The typed readers are strict: one record that does not decode fails the
// whole file. The untyped pair keeps every key and value it does not change.
// Pure, but for the two paths, which ask the files port. Any thread.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/Dates.h"

namespace velmora {

struct SlideMetadataItem {
    std::string fullSlideName;
    std::string textContent;
    std::vector<std::string> tags;
    support::Date dateSaved = 0;

    // Two records with one name are one slide.
    const std::string& id() const { return fullSlideName; }
    bool operator==(const SlideMetadataItem&) const = default;
};

// An array of objects, each with "FullSlideName", "TextContent" (strings),
// "Tags" (strings) and "DateSaved" in the local "yyyy-MM-ddTHH:mm:ss" form;
// other keys are ignored. Nothing when any of it fails.
std::optional<std::vector<SlideMetadataItem>> decodeSlideMetadata(std::string_view json);

// Exactly those four keys per record, in that order, pretty-printed.
std::string encodeSlideMetadata(const std::vector<SlideMetadataItem>& items);

// The tagging window's view of a record: its "DateSaved" as text, read as
// an internet date-time with fraction and zone (anything else is the
// distant past), and its "Tags".
struct RecentTagRecord {
    support::Date dateSaved = support::distantPast;
    std::vector<std::string> tags;
};
// Nothing when the file is not an array of objects that all carry both keys.
std::optional<std::vector<RecentTagRecord>> decodeRecentTagRecords(std::string_view json);

// The untyped read: `records` when the file is an array whose elements are
// all objects; empty when it is some other JSON; `parseError` when it is no
// JSON at all (or a bare scalar, which the reader does not take).
struct JSONArrayRead {
    std::vector<nlohmann::ordered_json> records;
    std::optional<std::string> parseError;
};
JSONArrayRead readJSONArray(std::string_view bytes);

// Two spaces per level, " : " between key and value, "/" escaped, keys in
// the order they hold: the form the platform's pretty-printing writers give.
std::string prettyJSON(const nlohmann::ordered_json& value);

// The library folder below the home directory, as the store builds it.
std::string slideLibraryFolder();
// The metadata path as the tagging window builds it, from its three pieces.
std::string taggingMetadataPath();

}  // namespace velmora
