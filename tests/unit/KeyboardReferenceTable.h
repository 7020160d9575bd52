// The shortcut table written out a second time, by hand and apart from
// the library's own so that a slip in either shows as a disagreement.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmora::testing::reference {

inline constexpr std::uint64_t S = 0x20000;   // shift
inline constexpr std::uint64_t C = 0x40000;   // control
inline constexpr std::uint64_t O = 0x80000;   // option
inline constexpr std::uint64_t M = 0x100000;  // command

struct Row {
    const char* macro;
    const char* record;
    std::uint64_t modifiers;
    int keyCode;            // -1: none
    const char* character;  // nullptr: none
};

inline const std::vector<Row>& rows() {
    static const std::vector<Row> table = {
        {"AlignBottom", "AlignBottom", C | M, -1, "\xEF\x9C\x81"},
        {"AlignLeft", "AlignLeft", C | M, -1, "\xEF\x9C\x82"},
        {"AlignRight", "AlignRight", C | M, -1, "\xEF\x9C\x83"},
        {"AlignTop", "AlignTop", C | M, -1, "\xEF\x9C\x80"},
        {"AlignCenter", "AlignCenter", C | M, -1, "c"},
        {"AlignMiddle", "AlignMiddle", C | M, -1, "m"},
        {"DistributeHorizontally", "DistributeHorizontal", C | M, -1, "h"},
        {"DistributeVertically", "DistributeVertical", C | M, -1, "v"},
        {"CopyPosition", "CopyPosition", C, 18, nullptr},
        {"PastePosition", "PastePosition", C, 19, nullptr},
        {"SwapObjects", "SwapObjects", C, 20, nullptr},
        {"SelectSimilar", "SelectSimilar", C, -1, "s"},
        {"ShapeAction", "ToggleHarvey", C, -1, "t"},
        {"DisableAutoFit", "DisableAutofit", S | M, 28, nullptr},
        {"DisableWordWrap", "DisableWordWrap", S | M, 26, nullptr},
        {"EnableAutoFit", "Autofit", M, 28, nullptr},
        {"EnableWordWrap", "WordWrap", M, 26, nullptr},
        {"AddPlaceholderText", "PlaceholderText", C, -1, "."},
        {"IncreaseMargin", "IncreaseMargin", C | M, 29, nullptr},
        {"DecreaseMargin", "DecreaseMargin", C | M, 25, nullptr},
        {"DeleteStickies", "DeleteStickies", S | M, 29, nullptr},
        {"CopyToExcel", "CopyToExcel", C, -1, "c"},
        {"PasteFromExcel", "PasteFromExcel", C, -1, "v"},
        {"ResetShapes", "ResetShapes", C | M, -1, "r"},
        {"InsertFootnote", "InsertFootnote", C | M, -1, "f"},
        {"InsertSource", "InsertSource", C | M, -1, "s"},
        {"InsertTextBox", "InsertTextbox", C, -1, "q"},
        {"InsertUnformattedText", "InsertUnformatted", C | M, -1, "t"},
        {"InsertFlags", "InsertFlags", M, 22, nullptr},
        {"InsertStickyNote", "InsertStickies", M, 29, nullptr},
        {"ShowStickerForm", "OpenStickers", C | M, -1, "k"},
        {"SameHeight", "SameHeight", S | M, -1, "e"},
        {"SameSize", "SameSize", C, -1, "z"},
        {"SameWidth", "SameWidth", C | M, -1, "e"},
        {"ToggleShortcutsTaskpane", "Shortcuts", C | M, -1, "i"},
        {"ShowSendSlidesForm", "OpenSend", C | M, -1, "\r"},
        {"ShowListLineSpacingForm", "OpenListLine", S | M, -1, "l"},
        {"DeleteObjectsFromMultipleSlides", "DeleteObjectsFromMultipleSlides", C | M, -1, "o"},
        {"ShowLegendForm", "OpenLegend", C | M, -1, "l"},
        {"TogglePlaceholders", "TogglePlaceholders", C | M, -1, "p"},
        {"SplitTextboxes", "SplitTextbox", C | M, -1, "j"},
        {"SwitchTextContrast", "SwitchContrast", S | M, -1, "o"},
        {"ShowSymbolsForm", "OpenSymbols", C | M, -1, "y"},
        {"ShowLinesForm", "OpenLines", C, -1, "l"},
        {"ToggleIconTaskpane", "Icons", C, -1, "i"},
        {"ShowTablesForm", "OpenTables", M, -1, "t"},
        {"InsertSlideAfterCurrent", "InsertSlide", C, -1, "m"},
    };
    return table;
}

// The macro a key-down runs: the first row whose modifiers equal the held
// ones among shift, control, option and command, and whose character equals
// the lower-cased characters or whose key code equals the key's. `lowered`
// is the event's characters already lower-cased (ASCII suffices here).
inline std::optional<std::string> expectedMacro(const std::optional<std::string>& lowered, int keyCode,
                                                std::uint64_t flags) {
    const std::uint64_t held = flags & (S | C | O | M);
    for (const auto& row : rows()) {
        if (row.modifiers != held) continue;
        if ((row.character && lowered && *lowered == row.character) || (row.keyCode >= 0 && row.keyCode == keyCode)) {
            return std::string(row.macro);
        }
    }
    return std::nullopt;
}

}  // namespace velmora::testing::reference
