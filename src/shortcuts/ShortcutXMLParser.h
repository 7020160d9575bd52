// Reading the shortcut catalogue (Shortcuts.xml) into records, and grouping
// them by category.
//
// Provides: ShortcutXMLParser (the event delegate that builds the records),
// parseShortcutXML() (expat driving a delegate), ShortcutGroups,
// groupShortcuts().
//
// The delegate knows five elements: `object` (one record, finished by its
// end tag), `name`, `category`, `shortcut` and `img`. Attributes, other
// elements and nesting are not looked at: only the latest start tag and the
// `object` end tag count. A ShortcutXMLParser is used by one thread at a
// time and handed on only after parsing has ended.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "shortcuts/Shortcut.h"

namespace velmora {

class ShortcutXMLParser {
public:
    // The finished records, in document order.
    std::vector<Shortcut> shortcuts;

    // Delegate operations, called in document order.
    void didStartElement(std::string_view elementName);
    // One chunk of character data. A chunk that is blank once trimmed of
    // blanks and line ends is dropped; any other is appended untrimmed.
    void foundCharacters(std::string_view chunk);
    void didEndElement(std::string_view elementName);

private:
    void resetCurrent();

    // The latest start tag, as far as the records care.
    enum class Element { none, name, category, shortcut, img, other };
    Element currentElement = Element::none;
    std::string currentName;
    std::string currentCategory;
    std::string currentShortcut;
    std::string currentImage;
};

// Feeds `document` to expat and calls the delegate in document order;
// gives false when the XML is malformed, after the events before the fault
// have been delivered. A character chunk is a run of text between markup,
// and every entity or character reference is a chunk of its own; expat's
// own splits at line ends and buffer ends are joined first, so the chunks
// do not depend on how the bytes arrive. `feedSize` (0: all at once) hands
// the bytes over in pieces of that size. Text inside CDATA sections is not
// character data for the delegate and is skipped.
bool parseShortcutXML(std::string_view document, ShortcutXMLParser& delegate, std::size_t feedSize = 0);

struct ShortcutGroups {
    // Distinct categories in order of first appearance: the display order.
    std::vector<std::string> categories;
    // Each category's records in document order.
    std::map<std::string, std::vector<Shortcut>> grouped;
};

ShortcutGroups groupShortcuts(const std::vector<Shortcut>& shortcuts);

// Splits at each ", " exactly; an empty text gives one empty part.
std::vector<std::string> splitShortcutKeys(std::string_view text);

}  // namespace velmora
