// The table builder: a floating window in which the user picks a table's
// size and options; "Insert" sends all seven values to the macro
// InsertTable. The window keeps nothing between openings.
//
// Provides: TableBuilderValues, tableCount(), insertTableArguments(),
// CustomButtonStyle, ToggleSwitchStyle, loadIcon(), TableBuilderWindow,
// TableWindowController, globalTableController(), embedTableBuilder().
// Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolwindows/ToolWindow.h"
#include "ui/Node.h"

namespace velmora {

inline constexpr const char* tablesIconDirectory = "/Library/Application Support/Microsoft/Velmora/PowerPoint/Tables/";

struct TableBuilderValues {
    std::string rows = "3";
    std::string columns = "3";
    bool headerRow = false;
    bool headerColumn = false;
    bool separatorLines = false;
    bool pasteContent = false;
    bool useReferenceShape = false;
};

// A count as typed, as the integer it reads as ("007" is 7, "-2" is -2):
// an optional sign and decimal digits within 64 bits; anything else is 3.
long long tableCount(std::string_view text);

// The seven arguments of InsertTable: both counts as integers, then the
// five options as "True" or "False".
std::vector<std::string> insertTableArguments(const TableBuilderValues& values);

// A filled, bordered button label.
struct CustomButtonStyle {
    ui::Color backgroundColor;
    ui::Color foregroundColor;
    ui::Color borderColor;
    std::optional<double> fixedWidth;
    std::optional<double> fixedHeight;

    ui::Node makeBody(ui::Node label, bool isPressed = false) const;
};

// A toggle drawn as a switch: a 30 by 15 track, red when on, with a white
// knob 7 points right of centre when on and 7 left when off.
struct ToggleSwitchStyle {
    // `label` names the toggle for the host; it is drawn only when `showLabel`.
    ui::Node makeBody(const std::string& label, bool showLabel, bool isOn, std::function<void()> flip) const;
};

// The installed icon of that name (.svg, then .png), or the question-mark symbol.
ui::Node loadIcon(const std::string& name);

// The view and its seven values.
class TableBuilderWindow : public std::enable_shared_from_this<TableBuilderWindow> {
public:
    explicit TableBuilderWindow(TableBuilderValues values) : values(std::move(values)) {}

    TableBuilderValues values;
    ui::Node body(double width);
    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

    // "Insert": sends the values, then closes the current table window.
    void insert() const;
    // "Cancel": closes the current table window and sends nothing.
    static void cancel();

private:
    void changed();
    std::weak_ptr<ui::HostingView> view_;
};

class TableWindowController {
public:
    // A window "Insert Table" of 300 by 200 before it fits its content, at
    // 0.9 background opacity, showing these values.
    static std::shared_ptr<ToolWindowController> make(TableBuilderValues values);
};

// The table window now shown or last shown; replaced at each opening.
std::shared_ptr<ToolWindowController>& globalTableController();

// A table builder with every value at its default, filling `parent` and
// following its size. Nothing in the library calls it; it is there for a
// host view.
std::shared_ptr<ui::HostingView> embedTableBuilder(const std::shared_ptr<platform::View>& parent);

}  // namespace velmora
