// Shortcuts.xml, the shortcut catalogue: parsed whole and in pieces (the
// records must not depend on how the bytes arrive), then read from its
// place by the reference pane, which shows what it found.

#include "FuzzPlatform.h"
#include "shortcuts/ShortcutContentManager.h"
#include "shortcuts/ShortcutXMLParser.h"

using namespace velmora;

namespace {

struct Parsed {
    bool ok = false;
    std::vector<Shortcut> shortcuts;
};

Parsed parse(std::string_view document, std::size_t feedSize) {
    ShortcutXMLParser parser;
    Parsed parsed;
    parsed.ok = parseShortcutXML(document, parser, feedSize);
    parsed.shortcuts = std::move(parser.shortcuts);
    return parsed;
}

bool same(const Shortcut& a, const Shortcut& b) {
    return a.category == b.category && a.name == b.name && a.keys == b.keys && a.imageName == b.imageName;
}

void compare(const Parsed& whole, const Parsed& pieces, std::size_t feedSize) {
    const std::string feed = " fed " + std::to_string(feedSize) + " bytes at a time";
    if (whole.ok != pieces.ok) fuzz::fail("the outcome changes when" + feed);
    if (whole.shortcuts.size() != pieces.shortcuts.size()) fuzz::fail("the record count changes when" + feed);
    for (std::size_t i = 0; i < whole.shortcuts.size(); ++i) {
        if (!same(whole.shortcuts[i], pieces.shortcuts[i])) {
            fuzz::fail("record " + std::to_string(i) + " changes when" + feed + ": name \"" + whole.shortcuts[i].name +
                       "\" becomes \"" + pieces.shortcuts[i].name + "\"");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view document(reinterpret_cast<const char*>(data), size);
    const auto whole = parse(document, 0);
    for (std::size_t feedSize : {std::size_t{1}, 2 + size % 61}) compare(whole, parse(document, feedSize), feedSize);

    fuzz::Session session;
    session.write(shortcutCataloguePath, document);
    std::shared_ptr<platform::View> pane;
    ShortcutContentManager::loadShortcutsView([&](std::shared_ptr<platform::View> view) { pane = std::move(view); });
    session.settle();
    if (!pane) fuzz::fail("the pane's loader never finished");
    fuzz::look(pane, 250);
    fuzz::look(pane, 600);
    return 0;
}
