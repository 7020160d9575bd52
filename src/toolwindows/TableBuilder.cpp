#include "toolwindows/TableBuilder.h"

#include <charconv>
#include <limits>

#include "bridge/Exports.h"
#include "bridge/MacroRunner.h"
#include "platform/Platform.h"
#include "support/Unicode.h"
#include "ui/Images.h"

namespace velmora {

namespace {

using namespace ui;

const char* flag(bool value) { return value ? "True" : "False"; }

Node boldLabel(const std::string& label) { return text(label).font(bodySize, FontWeight::bold); }

const CustomButtonStyle insertStyle{colors::subtleRed, colors::white, colors::subtleRed, 80, 15};
const CustomButtonStyle cancelStyle{colors::white, colors::subtleRed, colors::subtleRed, 80, 15};

}  // namespace

long long tableCount(std::string_view text) {
    constexpr long long fallback = 3;
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    unsigned long long magnitude = 0;
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, magnitude);
    if (text.empty() || error != std::errc{} || stop != end) return fallback;
    constexpr auto largest = static_cast<unsigned long long>(std::numeric_limits<long long>::max());
    if (negative) {
        if (magnitude > largest + 1) return fallback;
        return magnitude == largest + 1 ? std::numeric_limits<long long>::min() : -static_cast<long long>(magnitude);
    }
    return magnitude > largest ? fallback : static_cast<long long>(magnitude);
}

std::vector<std::string> insertTableArguments(const TableBuilderValues& v) {
    return {std::to_string(tableCount(v.rows)), std::to_string(tableCount(v.columns)), flag(v.headerRow),
            flag(v.headerColumn), flag(v.separatorLines), flag(v.pasteContent), flag(v.useReferenceShape)};
}

Node CustomButtonStyle::makeBody(Node label, bool isPressed) const {
    Frame size;
    size.width = fixedWidth;
    size.height = fixedHeight;
    return std::move(label)
        .frame(size)
        .padding(5)
        .background(backgroundColor)
        .foregroundColor(foregroundColor)
        .border(borderColor, 1)
        .cornerRadius(5)
        .opacity(isPressed ? 0.8 : 1.0);
}

Node ToggleSwitchStyle::makeBody(const std::string& label, bool showLabel, bool isOn, std::function<void()> flip) const {
    Node track = zstack({roundedRectangle(8).foregroundColor(isOn ? colors::subtleRed : colors::gray.opacity(0.6)),
                         circle().foregroundColor(colors::white).frame(12, 12).offset(isOn ? 7 : -7).animation(0.2)})
                     .frame(30, 15);
    Nodes parts;
    if (showLabel) parts.push_back(text(label));
    parts.push_back(std::move(track));
    Node toggle = ui::toggle(label, isOn, std::move(flip));
    toggle.children.push_back(hstack(Alignment::center, 8, std::move(parts)));
    return toggle;
}

Node loadIcon(const std::string& name) {
    for (const char* extension : {".svg", ".png"}) {
        const std::string path = tablesIconDirectory + name + extension;
        if (canLoadImage(path)) return image(path);
    }
    return symbol("questionmark.square");
}

// --- the view ------------------------------------------------------------------

void TableBuilderWindow::changed() {
    if (auto view = view_.lock()) view->invalidate();
}

Node TableBuilderWindow::body(double) {
    std::weak_ptr<TableBuilderWindow> weak = weak_from_this();
    auto edit = [weak](std::string TableBuilderValues::*field) {
        return [weak, field](const std::string& text) {
            if (auto self = weak.lock()) {
                self->values.*field = text;
                self->changed();
            }
        };
    };
    auto flip = [weak](bool TableBuilderValues::*field) {
        return [weak, field] {
            if (auto self = weak.lock()) {
                self->values.*field = !(self->values.*field);
                self->changed();
            }
        };
    };
    const ToggleSwitchStyle switchStyle;
    auto entry = [](const char* icon, const std::string& label, Node control) {
        return hstack(Alignment::center, 7,
                      {loadIcon(icon).makeResizable().frame(35, 35),
                       vstack(Alignment::leading, 2, {boldLabel(label), std::move(control)})});
    };
    auto field = [&](const std::string& label, const std::string& value, std::string TableBuilderValues::*member) {
        return textField(label, value, edit(member)).frameWidth(70);
    };

    Node counts = hstack(
        Alignment::center, 30,
        {vstack(Alignment::leading, 10,
                {entry("Rows", "Rows", field("Rows", values.rows, &TableBuilderValues::rows)),
                 entry("TitleRow", "Title row",
                       switchStyle.makeBody("Title row", false, values.headerRow, flip(&TableBuilderValues::headerRow)))}),
         vstack(Alignment::leading, 10,
                {entry("Columns", "Columns", field("Columns", values.columns, &TableBuilderValues::columns)),
                 entry("TitleColumn", "Title column",
                       switchStyle.makeBody("Title column", false, values.headerColumn,
                                            flip(&TableBuilderValues::headerColumn)))})});

    Node options = vstack(
        Alignment::leading, 2,
        {switchStyle.makeBody("Add separator lines", true, values.separatorLines, flip(&TableBuilderValues::separatorLines)),
         switchStyle.makeBody("Paste from Clipboard", true, values.pasteContent, flip(&TableBuilderValues::pasteContent)),
         switchStyle.makeBody("Use selected shape as table reference", true, values.useReferenceShape,
                              flip(&TableBuilderValues::useReferenceShape)),
         text("Deletes shape after").font(footnoteSize).foregroundColor(colors::gray).padding(Edge::leading, 20)});

    Node buttons =
        hstack(Alignment::center, 20,
               {button(insertStyle.makeBody(text("Insert")),
                       [weak] {
                           if (auto self = weak.lock()) self->insert();
                       })
                    .defaultAction(),
                button(cancelStyle.makeBody(text("Cancel")), [] { cancel(); })})
            .maxWidth(infinity);

    Frame minimum;
    minimum.minWidth = 300;
    return vstack(Alignment::leading, 15, {std::move(counts), divider(), std::move(options), divider(), std::move(buttons)})
        .padding(10)
        .frame(minimum);
}

void TableBuilderWindow::insert() const {
    runPowerPointMacroWithArguments("InsertTable", insertTableArguments(values));
    cancel();
}

void TableBuilderWindow::cancel() {
    if (auto& controller = globalTableController()) controller->close();
}

// --- windows ---------------------------------------------------------------------

std::shared_ptr<ToolWindowController>& globalTableController() {
    // Lives as long as the process: a main-queue block may still use it at exit.
    static auto& controller = *new std::shared_ptr<ToolWindowController>();
    return controller;
}

std::shared_ptr<ToolWindowController> TableWindowController::make(TableBuilderValues values) {
    auto view = std::make_shared<TableBuilderWindow>(std::move(values));
    auto controller = ToolWindowController::make({"Insert Table", {300, 200}, 0.9},
                                                 [view](double width) { return view->body(width); });
    view->attach(controller->hostingView());
    return controller;
}

std::shared_ptr<ui::HostingView> embedTableBuilder(const std::shared_ptr<platform::View>& parent) {
    auto view = std::make_shared<TableBuilderWindow>(TableBuilderValues{});
    auto hosting = ui::HostingView::make([view](double width) { return view->body(width); });
    view->attach(hosting);
    const auto bounds = parent->frame();
    hosting->setFrame({0, 0, bounds.width, bounds.height});
    hosting->autoresizesWithParent = true;
    parent->addSubview(hosting);
    return hosting;
}

// Called by the macro project with its current settings.
void initializeTablesOverlay(const char* rows, const char* columns, bool headerRow, bool headerColumn,
                             bool separatorLines, bool pasteContent, bool useReferenceShape) {
    auto flagText = [](bool value) { return value ? "true" : "false"; };
    TableBuilderValues values{support::repairedUTF8(rows ? rows : ""),
                              support::repairedUTF8(columns ? columns : ""),
                              headerRow,
                              headerColumn,
                              separatorLines,
                              pasteContent,
                              useReferenceShape};
    platform::nslog("Initializing Table Builder with rows: " + values.rows + ", columns: " + values.columns +
                    ", headerRow: " + flagText(headerRow) + ", headerColumn: " + flagText(headerColumn) +
                    ", separatorLines: " + flagText(separatorLines) + ", pasteContent: " + flagText(pasteContent) +
                    ", useReferenceShape: " + flagText(useReferenceShape));
    platform::mainAsync([values = std::move(values)] {
        presentToolWindow(globalTableController(), [&] { return TableWindowController::make(values); });
    });
}

}  // namespace velmora
