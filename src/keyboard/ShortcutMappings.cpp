#include "keyboard/ShortcutMappings.h"

namespace velmora {

namespace {

constexpr std::uint64_t shift = ModifierFlags::shift;
constexpr std::uint64_t control = ModifierFlags::control;
constexpr std::uint64_t command = ModifierFlags::command;

// The platform's private-use characters for the arrow keys, and Return.
const char* const upArrow = "\uF700";
const char* const downArrow = "\uF701";
const char* const leftArrow = "\uF702";
const char* const rightArrow = "\uF703";
const char* const carriageReturn = "\r";

ShortcutMapping byCharacter(const char* macroName, const char* shortCutRecord, std::uint64_t modifiers,
                            const char* character) {
    return {macroName, shortCutRecord, ModifierFlags{modifiers}, std::nullopt, std::string(character)};
}

ShortcutMapping byKeyCode(const char* macroName, const char* shortCutRecord, std::uint64_t modifiers,
                          std::uint16_t keyCode) {
    return {macroName, shortCutRecord, ModifierFlags{modifiers}, keyCode, std::nullopt};
}

// The key codes name positions on the digit row of an ANSI keyboard, so
// these rows follow the physical key whatever the layout prints on it:
// 18 "1", 19 "2", 20 "3", 22 "6", 25 "9", 26 "7", 28 "8", 29 "0".
std::vector<ShortcutMapping> makeTable() {
    return {
        byCharacter("AlignBottom", "AlignBottom", control | command, downArrow),
        byCharacter("AlignLeft", "AlignLeft", control | command, leftArrow),
        byCharacter("AlignRight", "AlignRight", control | command, rightArrow),
        byCharacter("AlignTop", "AlignTop", control | command, upArrow),
        byCharacter("AlignCenter", "AlignCenter", control | command, "c"),
        byCharacter("AlignMiddle", "AlignMiddle", control | command, "m"),
        byCharacter("DistributeHorizontally", "DistributeHorizontal", control | command, "h"),
        byCharacter("DistributeVertically", "DistributeVertical", control | command, "v"),
        byKeyCode("CopyPosition", "CopyPosition", control, 18),
        byKeyCode("PastePosition", "PastePosition", control, 19),
        byKeyCode("SwapObjects", "SwapObjects", control, 20),
        byCharacter("SelectSimilar", "SelectSimilar", control, "s"),
        byCharacter("ShapeAction", "ToggleHarvey", control, "t"),
        byKeyCode("DisableAutoFit", "DisableAutofit", shift | command, 28),
        byKeyCode("DisableWordWrap", "DisableWordWrap", shift | command, 26),
        byKeyCode("EnableAutoFit", "Autofit", command, 28),
        byKeyCode("EnableWordWrap", "WordWrap", command, 26),
        byCharacter("AddPlaceholderText", "PlaceholderText", control, "."),
        byKeyCode("IncreaseMargin", "IncreaseMargin", control | command, 29),
        byKeyCode("DecreaseMargin", "DecreaseMargin", control | command, 25),
        byKeyCode("DeleteStickies", "DeleteStickies", shift | command, 29),
        byCharacter("CopyToExcel", "CopyToExcel", control, "c"),
        byCharacter("PasteFromExcel", "PasteFromExcel", control, "v"),
        byCharacter("ResetShapes", "ResetShapes", control | command, "r"),
        byCharacter("InsertFootnote", "InsertFootnote", control | command, "f"),
        byCharacter("InsertSource", "InsertSource", control | command, "s"),
        byCharacter("InsertTextBox", "InsertTextbox", control, "q"),
        byCharacter("InsertUnformattedText", "InsertUnformatted", control | command, "t"),
        byKeyCode("InsertFlags", "InsertFlags", command, 22),
        byKeyCode("InsertStickyNote", "InsertStickies", command, 29),
        byCharacter("ShowStickerForm", "OpenStickers", control | command, "k"),
        byCharacter("SameHeight", "SameHeight", shift | command, "e"),
        byCharacter("SameSize", "SameSize", control, "z"),
        byCharacter("SameWidth", "SameWidth", control | command, "e"),
        byCharacter("ToggleShortcutsTaskpane", "Shortcuts", control | command, "i"),
        byCharacter("ShowSendSlidesForm", "OpenSend", control | command, carriageReturn),
        byCharacter("ShowListLineSpacingForm", "OpenListLine", shift | command, "l"),
        byCharacter("DeleteObjectsFromMultipleSlides", "DeleteObjectsFromMultipleSlides", control | command, "o"),
        byCharacter("ShowLegendForm", "OpenLegend", control | command, "l"),
        byCharacter("TogglePlaceholders", "TogglePlaceholders", control | command, "p"),
        byCharacter("SplitTextboxes", "SplitTextbox", control | command, "j"),
        byCharacter("SwitchTextContrast", "SwitchContrast", shift | command, "o"),
        byCharacter("ShowSymbolsForm", "OpenSymbols", control | command, "y"),
        byCharacter("ShowLinesForm", "OpenLines", control, "l"),
        byCharacter("ToggleIconTaskpane", "Icons", control, "i"),
        byCharacter("ShowTablesForm", "OpenTables", command, "t"),
        byCharacter("InsertSlideAfterCurrent", "InsertSlide", control, "m"),
    };
}

}  // namespace

const std::vector<ShortcutMapping>& shortcutMappings() {
    // Never destroyed: a queued key block holds a row's macro name, and
    // may run while the process exits.
    static const auto& table = *new const std::vector<ShortcutMapping>(makeTable());
    return table;
}

}  // namespace velmora
