#include "IconFixtures.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <sstream>

#include "support/Text.h"

namespace velmora::cloud {

namespace {

struct Glyph {
    const char* slug;
    const char* title;
    std::vector<std::string> tags;
    std::string markup;  // $S paints a closed shape, $L a stroke
};

std::string polygon(int corners, double radius, double inner, double cx, double cy) {
    std::string points;
    const int count = inner > 0 ? corners * 2 : corners;
    for (int i = 0; i < count; ++i) {
        const double r = inner > 0 && i % 2 ? inner : radius;
        const double angle = -M_PI / 2 + i * 2 * M_PI / count;
        points += fmt::format("{}{:.2f},{:.2f}", i ? " " : "", cx + r * std::cos(angle), cy + r * std::sin(angle));
    }
    return "<polygon points=\"" + points + "\" $S/>";
}

std::string arrow(int degrees) {
    return fmt::format("<g transform=\"rotate({} 12 12)\"><path d=\"M3 9.5 H13 V5 L21 12 L13 19 V14.5 H3 Z\" $S/></g>",
                       degrees);
}

const std::vector<Glyph>& glyphs() {
    static const std::vector<Glyph> all = {
        {"circle", "Circle", {"circle", "round", "dot", "shape"}, R"(<circle cx="12" cy="12" r="8.5" $S/>)"},
        {"square", "Square", {"square", "box", "shape"}, R"(<rect x="4" y="4" width="16" height="16" rx="2" $S/>)"},
        {"triangle", "Triangle", {"triangle", "warning", "shape"}, R"(<path d="M12 3.5 L20.5 19.5 H3.5 Z" $S/>)"},
        {"star", "Star", {"star", "favourite", "rating", "shape"}, polygon(5, 9.5, 4, 12, 12.8)},
        {"heart", "Heart", {"heart", "love", "like", "shape"},
         R"(<path d="M12 20 C6 15.5 3 12.5 3 8.8 C3 6.2 5 4.5 7.3 4.5 C9.3 4.5 11 5.8 12 7.5 )"
         R"(C13 5.8 14.7 4.5 16.7 4.5 C19 4.5 21 6.2 21 8.8 C21 12.5 18 15.5 12 20 Z" $S/>)"},
        {"hexagon", "Hexagon", {"hexagon", "cell", "shape"}, polygon(6, 9, 0, 12, 12)},
        {"diamond", "Diamond", {"diamond", "rhombus", "shape"}, R"(<path d="M12 3 L20 12 L12 21 L4 12 Z" $S/>)"},
        {"arrow-right", "Arrow Right", {"arrow", "right", "next", "direction"}, arrow(0)},
        {"arrow-left", "Arrow Left", {"arrow", "left", "back", "direction"}, arrow(180)},
        {"arrow-up", "Arrow Up", {"arrow", "up", "increase", "direction"}, arrow(-90)},
        {"arrow-down", "Arrow Down", {"arrow", "down", "decrease", "direction"}, arrow(90)},
        {"check", "Check", {"check", "tick", "done", "yes"}, R"(<path d="M5 12.5 L10 17.5 L19 7" $L/>)"},
        {"cross", "Cross", {"cross", "close", "no", "cancel"}, R"(<path d="M6 6 L18 18 M18 6 L6 18" $L/>)"},
        {"plus", "Plus", {"plus", "add", "new"}, R"(<path d="M12 5 V19 M5 12 H19" $L/>)"},
        {"bar-chart", "Bar Chart", {"bar", "chart", "graph", "data", "statistics"},
         R"(<rect x="4" y="13" width="4" height="7" $S/><rect x="10" y="8" width="4" height="12" $S/>)"
         R"(<rect x="16" y="4" width="4" height="16" $S/>)"},
        {"line-chart", "Line Chart", {"line", "chart", "graph", "data", "trend"},
         R"(<path d="M3 20 H21" $L/><path d="M4 16 L9 10 L13 13 L20 5" $L/>)"},
        {"pie-chart", "Pie Chart", {"pie", "chart", "graph", "data", "share"},
         R"(<path d="M11 4 A8.5 8.5 0 1 0 19.5 12.5 H11 Z" $S/><path d="M13.5 2 A8.5 8.5 0 0 1 22 10.5 H13.5 Z" $S/>)"},
        {"person", "Person", {"person", "user", "profile", "people"},
         R"(<circle cx="12" cy="7.5" r="3.5" $S/><path d="M5 20 C5 15.5 8 13 12 13 C16 13 19 15.5 19 20 Z" $S/>)"},
        {"people", "People", {"people", "group", "team", "users"},
         R"(<circle cx="8" cy="8" r="3" $S/><path d="M2 19 C2 15 4.5 12.5 8 12.5 C11.5 12.5 14 15 14 19 Z" $S/>)"
         R"(<circle cx="16.5" cy="7" r="2.5" $S/><path d="M15 12 C18.5 11.5 22 13.5 22 17.5 H16" $L/>)"},
        {"house", "House", {"house", "home", "building"},
         R"(<path d="M3 11 L12 3 L21 11 V20 H3 Z" $S/><path d="M10 20 V14 H14 V20" $L/>)"},
        {"flag", "Flag", {"flag", "goal", "milestone"}, R"(<path d="M5 21 V3" $L/><path d="M5 4 H18 L15 8 L18 12 H5 Z" $S/>)"},
        {"target", "Target", {"target", "goal", "aim", "focus"},
         R"(<circle cx="12" cy="12" r="9" $L/><circle cx="12" cy="12" r="5.5" $L/><circle cx="12" cy="12" r="2" $S/>)"},
        {"clock", "Clock", {"clock", "time", "hour", "schedule"},
         R"(<circle cx="12" cy="12" r="9" $L/><path d="M12 7 V12 L15.5 14" $L/>)"},
        {"chat", "Chat Bubble", {"chat", "bubble", "message", "comment"}, R"(<path d="M4 5 H20 V16 H10 L6 20 V16 H4 Z" $S/>)"},
        {"lightning", "Lightning", {"lightning", "bolt", "energy", "power"},
         R"(<path d="M13 2 L5 13 H11 L10 22 L19 10 H13 Z" $S/>)"},
        {"magnifier", "Magnifier", {"magnifier", "search", "find", "zoom"},
         R"(<circle cx="10" cy="10" r="6" $L/><path d="M14.5 14.5 L20 20" $L/>)"},
    };
    return all;
}

constexpr int firstNumber = 4100;
const std::array<const char*, 3> styles = {"eucalyp", "prosymbols", ""};

std::vector<IconFixture> makeIcons() {
    std::vector<IconFixture> icons;
    const auto& all = glyphs();
    for (std::size_t g = 0; g < all.size(); ++g) {
        const auto& glyph = all[g];
        const int number = firstNumber + static_cast<int>(g);
        for (int variant = 0; variant < 3; ++variant) {
            IconFixture icon;
            icon.glyph = static_cast<int>(g);
            icon.variant = variant;
            icon.tags = glyph.tags;
            if (variant == 0) {
                icon.provider = "lineart";
                icon.id = std::to_string(number);
                icon.numericId = true;
                icon.title = glyph.title;
                icon.tags.push_back("outline");
            } else if (variant == 1) {
                icon.provider = "lineart";
                icon.id = std::string("bold-") + glyph.slug;
                icon.title = std::string(glyph.title) + " Bold";
                icon.attribution = "Lineart collection, drawn by Mira Oduya";
                icon.tags.insert(icon.tags.end(), {"outline", "bold"});
            } else {
                icon.provider = "flatshape";
                // The same number as the lineart icon, digits as a text, or a name.
                switch (g % 3) {
                    case 0: icon.id = std::to_string(number); icon.numericId = true; break;
                    case 1: icon.id = std::to_string(number + 5000); break;
                    default: icon.id = glyph.slug; break;
                }
                icon.title = std::string(glyph.title) + " Filled";
                if (g % 2 == 0) icon.attribution = "Flatshape studio";
                icon.tags.insert(icon.tags.end(), {"filled", "solid"});
            }
            const std::size_t index = icons.size();
            if (index % 7 == 3) icon.title.reset();
            icon.style = styles[(g + static_cast<std::size_t>(variant)) % styles.size()];
            icons.push_back(std::move(icon));
        }
    }
    return icons;
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream in(support::lowercased(text));
    std::string word;
    while (in >> word) words.push_back(word);
    return words;
}

bool matchesWords(const IconFixture& icon, const std::vector<std::string>& words) {
    std::string haystack = support::lowercased(icon.title.value_or(""));
    for (const auto& tag : icon.tags) haystack += " " + tag;
    return std::all_of(words.begin(), words.end(),
                       [&](const std::string& word) { return haystack.find(word) != std::string::npos; });
}

std::string base64url(std::string_view bytes) {
    std::string text = support::base64Encoded(bytes);
    while (!text.empty() && text.back() == '=') text.pop_back();
    for (char& c : text) c = c == '+' ? '-' : c == '/' ? '_' : c;
    return text;
}

std::optional<std::string> fromBase64url(const std::string& text) {
    if (text.empty() || text.find_first_of("+/=") != std::string::npos) return std::nullopt;
    std::string standard = text;
    for (char& c : standard) c = c == '-' ? '+' : c == '_' ? '/' : c;
    if (standard.size() % 4 == 1) return std::nullopt;
    return support::base64Decoded(standard);
}

}  // namespace

const std::vector<std::string>& iconSpecialWords() {
    // Made at first use, for the same reason as the route table.
    static const std::vector<std::string> words = {"nototal", "zerototal", "empty1", "empty2",
                                                   "empty3",  "empty4",    "noresults"};
    return words;
}

std::string IconFixture::file() const { return "icons/" + provider + "-" + id + ".svg"; }

const std::vector<IconFixture>& iconFixtures() {
    static const std::vector<IconFixture> icons = makeIcons();
    return icons;
}

const IconFixture* findIcon(const std::string& provider, const std::string& id) {
    for (const auto& icon : iconFixtures()) {
        if (icon.provider == provider && icon.id == id) return &icon;
    }
    return nullptr;
}

const IconFixture* findIconFile(const std::string& relativePath) {
    for (const auto& icon : iconFixtures()) {
        if (icon.file() == relativePath) return &icon;
    }
    return nullptr;
}

std::string iconSVG(const IconFixture& icon, const std::string& colour) {
    const std::string stroke = fmt::format(R"(stroke="{}" stroke-linecap="round" stroke-linejoin="round")", colour);
    std::string shape, line;
    switch (icon.variant) {
        case 0: shape = line = R"(fill="none" stroke-width="2" )" + stroke; break;
        case 1: shape = line = R"(fill="none" stroke-width="3" )" + stroke; break;
        default:
            shape = fmt::format(R"(fill="{}")", colour);
            line = R"(fill="none" stroke-width="2.5" )" + stroke;
            break;
    }
    std::string markup = glyphs()[static_cast<std::size_t>(icon.glyph)].markup;
    for (auto at = markup.find('$'); at != std::string::npos; at = markup.find('$', at)) {
        const std::string& paint = markup[at + 1] == 'S' ? shape : line;
        markup.replace(at, 2, paint);
        at += paint.size();
    }
    const std::string title = icon.title ? "<title>" + support::htmlEscaped(*icon.title) + "</title>" : "";
    return R"(<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24" viewBox="0 0 24 24">)" + title +
           markup + "</svg>\n";
}

std::string iconCursor(const std::string& query, const std::string& creator, long offset) {
    return base64url(fmt::format("{}|{}|{}", query, creator, offset));
}

std::optional<std::string> iconCursorText(const std::string& cursor) {
    auto text = fromBase64url(cursor);
    if (!text || std::any_of(text->begin(), text->end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
        })) {
        return std::nullopt;
    }
    return text;
}

std::optional<IconPage> searchIcons(const std::string& query, const std::string& creator, std::size_t limit,
                                    const std::optional<std::string>& cursor) {
    bool noTotal = false, zeroTotal = false, noResults = false;
    long emptyPages = 0;
    std::vector<std::string> words;
    for (auto& word : wordsOf(query)) {
        if (word == "nototal") {
            noTotal = true;
        } else if (word == "zerototal") {
            zeroTotal = true;
        } else if (word == "noresults") {
            noResults = true;
        } else if (word.size() == 6 && word.compare(0, 5, "empty") == 0 && word[5] >= '1' && word[5] <= '4') {
            emptyPages = word[5] - '0';
        } else {
            words.push_back(std::move(word));
        }
    }

    std::vector<const IconFixture*> hits;
    if (!noResults) {
        for (const auto& icon : iconFixtures()) {
            if ((creator == "all" || (!icon.style.empty() && icon.style == creator)) && matchesWords(icon, words)) {
                hits.push_back(&icon);
            }
        }
    }
    const long count = static_cast<long>(hits.size());

    long offset = -emptyPages;
    if (cursor) {
        auto text = fromBase64url(*cursor);
        const std::string prefix = query + "|" + creator + "|";
        if (!text || text->compare(0, prefix.size(), prefix) != 0) return std::nullopt;
        const char* first = text->data() + prefix.size();
        const char* last = text->data() + text->size();
        auto [end, error] = std::from_chars(first, last, offset);
        // Only positions this search hands out: an empty page still to come, or a hit.
        if (error != std::errc{} || end != last || offset < -emptyPages || (offset > 0 && offset >= count)) {
            return std::nullopt;
        }
    }

    IconPage page;
    if (offset < 0) {
        page.nextCursor = iconCursor(query, creator, offset + 1);
    } else {
        const long end = std::min(count, offset + static_cast<long>(limit));
        page.items.assign(hits.begin() + offset, hits.begin() + end);
        if (end < count) page.nextCursor = iconCursor(query, creator, end);
    }
    if (!noTotal) page.total = zeroTotal ? 0 : hits.size();
    return page;
}

}  // namespace velmora::cloud
