// The theme text GetThemeColorsHexCsv answers: split into the ten slots,
// each piece read as a colour, then the colour bar with its last row
// unfolded to its shades, and a tap on a shade, which sends the tint to the macro.

#include "ColorCheck.h"
#include "colorbar/ColorBarPane.h"
#include "ui/HostingView.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string csv(reinterpret_cast<const char*>(data), size);

    const auto rows = themeCsvToColors(csv);
    if (rows.size() > themeSlotNames.size()) fuzz::fail("more rows than slots");
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].name != themeSlotNames[i]) fuzz::fail("a row out of its slot");
        if (rows[i].hex.empty()) fuzz::fail("an empty piece made a row");
        fuzz::checkColor(rows[i].color, "the row " + rows[i].name);
    }

    fuzz::Session session;
    session.fake.script->answer("GetThemeColorsHexCsv", csv);
    // The pane as the content manager makes it, on a view model of its own.
    auto model = std::make_shared<ColorBarViewModel>();
    auto state = std::make_shared<ColorBarPaneState>(model);
    auto pane = ui::HostingView::make([state](double width) { return state->body(width); });
    state->attach(pane);
    model->refreshFromTheme();
    session.settle();
    // The last row unfolded: its five shades come from the colour its piece read as.
    const auto shown = model->rows.get();
    if (!shown.empty()) model->toggleExpansion(shown.back().name);
    fuzz::look(pane, 120, 700);
    // The last fill chip: the last row's darkest shade.
    const auto chips = ui::findActionables(pane->tree(), "Fill");
    if (!chips.empty() && chips.back()->action) chips.back()->action();
    session.advance(ColorBarPaneState::releaseDelay);
    return 0;
}
