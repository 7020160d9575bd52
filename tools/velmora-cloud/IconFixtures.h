// The icon service's fixtures: geometric glyphs drawn as SVG text, the
// search over them with its cursor paging, and the queries that misbehave
// on purpose.
//
// Provides: IconFixture, iconFixtures(), findIcon(), findIconFile(),
// iconSVG(), IconPage, searchIcons(), iconCursor(), iconCursorText(),
// iconSpecialWords.
// Everything is a pure function of its arguments. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmora::cloud {

struct IconFixture {
    std::string provider;   // "lineart" or "flatshape"
    std::string id;         // as text
    bool numericId = false; // the reply carries the id as a JSON number
    std::optional<std::string> title, attribution;
    std::vector<std::string> tags;  // lower case
    std::string style;      // "eucalyp", "prosymbols" or empty (only in "all")
    int glyph = 0, variant = 0;

    // Below the CDN root: "icons/lineart-4100.svg".
    std::string file() const;
};

// 78 icons: 26 glyphs, each as a lineart outline, a bold lineart outline and
// a filled flatshape. Some ids are numbers, some texts; a number can stand for
// one icon of each provider, and a flatshape text can hold only digits.
const std::vector<IconFixture>& iconFixtures();
const IconFixture* findIcon(const std::string& provider, const std::string& id);
// By the file name below the CDN root ("icons/lineart-4100.svg").
const IconFixture* findIconFile(const std::string& relativePath);

// The icon in `colour` ("#RRGGBB") as a 24x24 SVG document.
std::string iconSVG(const IconFixture& icon, const std::string& colour);

// Words that change a search, alone or beside others: "nototal" leaves the
// total out, "zerototal" gives 0 as the total, "empty1".."empty4" answer that
// many empty pages (each with a next cursor) before the first hit, and
// "noresults" finds nothing. The other words filter as usual.
const std::vector<std::string>& iconSpecialWords();

struct IconPage {
    std::vector<const IconFixture*> items;
    std::optional<std::string> nextCursor;
    std::optional<std::size_t> total;
};

// One page of the icons whose titles and tags hold every word of `query`
// (case-insensitive), of `creator`'s style ("all" for every icon). Nothing
// when `cursor` does not decode or belongs to another query or creator.
std::optional<IconPage> searchIcons(const std::string& query, const std::string& creator, std::size_t limit,
                                    const std::optional<std::string>& cursor);

// The opaque cursor of a position in a search: base64url of
// "query|creator|offset", without padding. Negative offsets count the empty
// pages still to come.
std::string iconCursor(const std::string& query, const std::string& creator, long offset);
// What a cursor holds ("arrow|all|30"), for the record; nothing when it does not decode.
std::optional<std::string> iconCursorText(const std::string& cursor);

}  // namespace velmora::cloud
