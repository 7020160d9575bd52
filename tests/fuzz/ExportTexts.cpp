// The C texts of every export that takes one: triggerAssistant's two,
// triggerMissedAssistant's, initializeTablesOverlay's rows and columns and
// initializeTaggingOverlay's file name, each possibly NULL, empty or not
// UTF-8. The first byte says which of the six texts are NULL, the next five
// are the table's flags as the macro language passes them (its True is -1:
// any byte may come); the rest splits at NULs into the texts.
// Every export is called as the macro project calls it, then the windows
// they open are drawn and the table's Insert pressed.

#include <array>

#include "FuzzPlatform.h"
#include "slidelibrary/TaggingUI.h"
#include "toolwindows/TableBuilder.h"

extern "C" {
void triggerAssistant(const char* selectedJSON, const char* nonSelectedJSON);
void triggerMissedAssistant(const char* missedShortcut);
void initializeTablesOverlay(const char* rows, const char* columns, std::uint8_t headerRow, std::uint8_t headerColumn,
                             std::uint8_t separatorLines, std::uint8_t pasteContent, std::uint8_t useReferenceShape);
void initializeTaggingOverlay(const char* slidesFileName);
}

using namespace velmora;

namespace {

void lookAt(const std::shared_ptr<ToolWindowController>& controller) {
    if (!controller) return;
    if (auto hosting = controller->hostingView()) fuzz::look(hosting->tree());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    const std::uint8_t nulls = bytes.take();
    std::array<std::uint8_t, 5> flags;
    for (auto& flag : flags) flag = bytes.take();
    std::array<std::string, 6> texts;
    std::string_view rest = bytes.text;
    for (auto& text : texts) {
        const auto nul = rest.find('\0');
        text = std::string(rest.substr(0, nul));
        rest = nul == std::string_view::npos ? std::string_view{} : rest.substr(nul + 1);
    }
    auto arg = [&](std::size_t i) { return nulls & (1u << i) ? nullptr : texts[i].c_str(); };

    fuzz::Session session;
    globalTableController().reset();
    globalTaggingController().reset();

    triggerAssistant(arg(0), arg(1));
    triggerMissedAssistant(arg(2));
    initializeTablesOverlay(arg(3), arg(4), flags[0], flags[1], flags[2], flags[3], flags[4]);
    initializeTaggingOverlay(arg(5));
    session.settle();

    lookAt(globalTableController());
    lookAt(globalTaggingController());
    if (auto table = globalTableController(); table && table->hostingView()) {
        // Insert sends both counts to InsertTable as integers.
        if (const auto* insert = ui::findActionable(table->hostingView()->tree(), "Insert"); insert && insert->action) {
            insert->action();
        }
    }
    session.settle();
    return 0;
}
