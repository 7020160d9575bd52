#include "colorbar/ColorBarPane.h"

#include "bridge/Exports.h"
#include "bridge/MacroRunner.h"
#include "platform/Platform.h"
#include "support/Text.h"

namespace velmora {

namespace {

using namespace ui;
using M = ColorBarMetrics;

constexpr Color defaultBorder = colors::gray.opacity(0.4);

Node slash() { return line({0, 1}, {1, 0}, 2).stroke(colors::red.opacity(0.85), 2, LineCap::round); }

// A chip with its hit area, its tap and its pointer tracking wired to the pane's state.
Node chip(const ColorBarContext& context, const std::string& key, const std::string& help, Node content,
          std::function<void()> onTap) {
    Node area = hoverableTapArea(M::colWidth, M::chipSize, help, std::move(content), context.stateOf(key));
    area.action = [tap = context.tap, key, onTap = std::move(onTap)] { tap(key, onTap); };
    area.onHover = [hover = context.hover, key](bool inside) { hover(key, inside); };
    return area;
}

Node fillChip(const Color& color) {
    return zstack({roundedRectangle(M::corner).foregroundColor(color),
                   roundedRectangle(M::corner).stroke(defaultBorder, 1)});
}

Node borderChip(const Color& color) {
    return zstack({checkerboard(2, M::corner), roundedRectangle(M::corner).stroke(color, 3).padding(0.5),
                   roundedRectangle(M::corner).stroke(defaultBorder, 1)})
        .cornerRadius(M::corner);
}

Node fontChip(const Color& color) { return text("A").font(13, FontWeight::semibold).foregroundColor(color); }

std::function<void()> colorMacro(const char* macro, const std::string& name, double tint) {
    return [macro, name, tint] { runColorMacroWithHex(macro, {name}, tint); };
}

Node transparentRow(const ColorBarContext& context) {
    Node noFill = zstack({checkerboard(2, M::corner), slash()}).cornerRadius(M::corner);
    Node noBorder = zstack({roundedRectangle(M::corner).foregroundColor(colors::clear),
                            roundedRectangle(M::corner).stroke(colors::secondary.opacity(0.45), 1), slash()});
    return hstack(Alignment::center, 4,
                  {chip(context, "Transparent/No Fill", "No Fill", std::move(noFill), [] { runColorMacroNoArgs("ClearFill"); }),
                   chip(context, "Transparent/No Border", "No Border", std::move(noBorder),
                        [] { runColorMacroNoArgs("ClearBorder"); }),
                   spacer()})
        .frameHeight(M::chipSize)
        .padding(2);
}

Node shadeRow(const ColorBarContext& context, const Color& baseColor, const std::string& themeName, double factor) {
    const Color shade = adjust(baseColor, factor);
    const std::string key = themeName + "/" + support::formatFixed(factor, 2) + "/";
    return hstack(Alignment::center, 4,
                  {chip(context, key + "Fill", "Fill", fillChip(shade), colorMacro("ApplyFillColor", themeName, factor)),
                   chip(context, key + "Border", "Border", borderChip(shade),
                        colorMacro("ApplyBorderColor", themeName, factor)),
                   chip(context, key + "Font", "Font", fontChip(shade), colorMacro("ApplyFontColor", themeName, factor)),
                   rectangle().foregroundColor(colors::clear).frameWidth(12)})
        .id(support::formatFixed(factor, 2));
}

Node colorBarRow(const ColorBarContext& context, const ThemeColor& themeColor) {
    const std::string& name = themeColor.name;
    const bool expanded = context.isExpanded(name);
    const std::string key = name + "/";
    Node chevron =
        symbol("chevron.down").font(8, FontWeight::bold).foregroundColor(colors::secondary).rotation(expanded ? 180 : 0);
    Nodes column;
    column.push_back(
        hstack(Alignment::center, 4,
               {chip(context, key + "Apply Fill", "Apply Fill", fillChip(themeColor.color),
                     colorMacro("ApplyFillColor", name, 0.0)),
                chip(context, key + "Apply Border", "Apply Border", borderChip(themeColor.color),
                     colorMacro("ApplyBorderColor", name, 0.0)),
                chip(context, key + "Apply Font", "Apply Font",
                     fontChip(themeColor.color).shadow(textGlow(themeColor.hex), 0.5),
                     colorMacro("ApplyFontColor", name, 0.0)),
                chip(context, key + "More Shades", "More Shades", std::move(chevron),
                     [toggle = context.toggleExpansion, name] { toggle(name); })})
            .frameHeight(M::chipSize)
            .padding(2));
    if (expanded) {
        Nodes rows;
        for (const auto& shade : shades) rows.push_back(shadeRow(context, themeColor.color, name, shade.factor));
        column.push_back(vstack(Alignment::center, 2, std::move(rows)).padding(Edges{2, 5, 4, 0}));
    }
    return vstack(std::move(column)).id(themeColor.id.uuidString());
}

Node heading(const char* title) {
    return text(title)
        .font(captionSize)
        .foregroundColor(colors::secondary)
        .maxWidth(infinity, Alignment::leading)
        .padding(Edge::leading, 2);
}

}  // namespace

// --- view model ----------------------------------------------------------------

void ColorBarViewModel::refreshFromTheme() {
    auto self = shared_from_this();
    platform::globalAsync(platform::QualityOfService::userInitiated, [self] {
        auto csv = fetchThemeColorsHexCsv();
        if (!csv) return;
        auto colors = themeCsvToColors(*csv);
        if (colors.empty()) return;
        platform::mainAsync([self, colors = std::move(colors)]() mutable { self->rows.set(std::move(colors)); });
    });
}

bool ColorBarViewModel::isExpanded(const std::string& name) const { return expandedThemes.get().count(name) > 0; }

void ColorBarViewModel::toggleExpansion(const std::string& name) {
    expandedThemes.modify([&](std::set<std::string>& names) {
        if (!names.erase(name)) names.insert(name);
    });
}

// --- layout ----------------------------------------------------------------------

Node hoverableTapArea(double colWidth, double chipSize, const std::string& help, Node content,
                      const TapAreaState& state) {
    return zstack({rectangle().foregroundColor(state.hovered ? colors::gray.opacity(0.15) : colors::clear),
                   rectangle().foregroundColor(state.flash ? colors::white.opacity(0.4) : colors::clear),
                   std::move(content).frame(colWidth, chipSize)})
        .frame(colWidth, chipSize)
        .cornerRadius(4)
        .scale(state.isPressed ? 0.95 : 1.0)
        .help(help);
}

Node colorBarTaskpane(const std::vector<ThemeColor>& rows, const ColorBarContext& context) {
    Nodes column;
    column.push_back(heading("Transparent"));
    column.push_back(transparentRow(context));
    column.push_back(divider().padding(Edge::vertical, 4));
    column.push_back(heading("Base Colors"));
    for (std::size_t i = 0; i < rows.size() && i < 4; ++i) column.push_back(colorBarRow(context, rows[i]));
    column.push_back(divider().padding(Edge::vertical, 4));
    column.push_back(heading("Theme Colors"));
    for (std::size_t i = 4; i < rows.size(); ++i) column.push_back(colorBarRow(context, rows[i]));

    Frame widths;
    widths.minWidth = 70;
    widths.idealWidth = 85;
    widths.maxWidth = 95;
    return scroll(vstack(Alignment::leading, 6, std::move(column)).padding(4).maxWidth(95, Alignment::leading))
        .frame(widths);
}

// --- pane state ----------------------------------------------------------------

Node ColorBarPaneState::body(double) {
    std::weak_ptr<ColorBarPaneState> weak = weak_from_this();
    std::weak_ptr<ColorBarViewModel> model = viewModel_;
    ColorBarContext context;
    context.stateOf = [this](const std::string& key) { return tapArea(key); };
    context.hover = [weak](const std::string& key, bool inside) {
        if (auto state = weak.lock()) state->hover(key, inside);
    };
    context.tap = [weak](const std::string& key, const std::function<void()>& onTap) {
        if (auto state = weak.lock()) state->tap(key, onTap);
    };
    const auto expanded = viewModel_->expandedThemes.get();
    context.isExpanded = [expanded](const std::string& name) { return expanded.count(name) > 0; };
    context.toggleExpansion = [model](const std::string& name) {
        if (auto alive = model.lock()) alive->toggleExpansion(name);
    };
    return colorBarTaskpane(viewModel_->rows.get(), context);
}

TapAreaState ColorBarPaneState::tapArea(const std::string& key) const {
    auto found = areas_.find(key);
    return found == areas_.end() ? TapAreaState{} : found->second;
}

void ColorBarPaneState::hover(const std::string& key, bool inside) {
    areas_[key].hovered = inside;
    redraw();
}

void ColorBarPaneState::tap(const std::string& key, const std::function<void()>& onTap) {
    auto& area = areas_[key];
    area.isPressed = true;
    area.flash = true;
    std::weak_ptr<ColorBarPaneState> weak = weak_from_this();
    platform::mainAsyncAfter(releaseDelay, [weak, key] {
        auto state = weak.lock();
        if (!state) return;
        auto& released = state->areas_[key];
        released.isPressed = false;
        released.flash = false;
        state->redraw();
    });
    redraw();
    if (onTap) onTap();
}

void ColorBarPaneState::redraw() {
    if (auto view = view_.lock()) view->invalidate();
}

// --- loading ---------------------------------------------------------------------

std::shared_ptr<ui::HostingView>& ColorBarContentManager::hostingController() {
    static auto& view = *new std::shared_ptr<ui::HostingView>();
    return view;
}

std::weak_ptr<ColorBarViewModel>& ColorBarContentManager::activeViewModel() {
    static auto& model = *new std::weak_ptr<ColorBarViewModel>();
    return model;
}

namespace {

std::vector<std::string> describeColorBar() {
    auto model = ColorBarContentManager::activeViewModel().lock();
    if (!model) return {"colorbar: (no view model)"};
    std::vector<std::string> lines;
    for (const auto& row : model->rows.get()) {
        const auto& c = row.color;
        lines.push_back("colorbar: " + row.name + " " + support::quoted(row.hex) + " rgba(" +
                        support::formatFixed(c.red * 255, 1) + ", " + support::formatFixed(c.green * 255, 1) + ", " +
                        support::formatFixed(c.blue * 255, 1) + ", " + support::formatFixed(c.alpha, 3) + ")");
    }
    std::string expanded;
    for (const auto& name : model->expandedThemes.get()) expanded += (expanded.empty() ? "" : ", ") + name;
    lines.push_back("colorbar: expanded " + (expanded.empty() ? std::string("(none)") : expanded));
    return lines;
}

}  // namespace

void ColorBarContentManager::loadColorBarView(ContentCompletion completion) {
    auto model = std::make_shared<ColorBarViewModel>();
    activeViewModel() = model;
    auto state = std::make_shared<ColorBarPaneState>(model);
    auto hosting = ui::HostingView::make([state](double width) { return state->body(width); });
    state->attach(hosting);
    ui::invalidateOnChange(hosting, model->rows);
    ui::invalidateOnChange(hosting, model->expandedThemes);
    hosting->translatesAutoresizingMaskIntoConstraints = false;
    hosting->horizontalContentHuggingPriority = 750;
    hosting->horizontalCompressionResistancePriority = 1000;
    hostingController() = hosting;
    platform::registerInspector("colorbar", describeColorBar);
    completion(hosting);
    model->refreshFromTheme();
}

// Called by the macro project on the main thread.
void openColorBarTaskpane() {
    platform::nslog("ColorBar: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Color", 120, ColorBarContentManager::loadColorBarView);
}

void triggerColorThemeRefresh() {
    platform::nslog("ColorBar: 🎨 Theme refresh triggered from VBA");
    platform::mainAsync([] {
        if (auto model = ColorBarContentManager::activeViewModel().lock()) model->refreshFromTheme();
    });
}

}  // namespace velmora
