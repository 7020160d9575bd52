// Loading host trees from files in place of the simulator's own window and
// accessibility tree, and showing them: `viewtree FILE|builtin`,
// `axtree FILE|builtin`, `show viewtree`, `show ribbon walk` (the file
// formats are in HostTrees.h).
//
// FILE is a path relative to the working folder, or the JSON text itself
// (what `@file` gives, relative to the scenario): a word that starts with
// `{` or `[` is text. A file that cannot be
// read as a tree stops the run with one line naming the place.

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "Host.h"
#include "Scenario.h"
#include "snapshot/Snapshot.h"
#include "support/Text.h"
#include "trees/HostTrees.h"

namespace velmora::host {

namespace {

// The host's process, the same as the simulator's own tree gives it, so a
// loaded tree takes its place rather than standing beside it.
constexpr int hostProcessIdentifier = 4242;

struct TreeText {
    std::string json;
    std::string source;  // the file's name, or "the text given"
};

TreeText readTreeArgument(const std::string& command, const std::string& argument) {
    const auto first = argument.find_first_not_of(" \t\r\n");
    if (first != std::string::npos && (argument[first] == '{' || argument[first] == '[')) return {argument, "the text given"};
    std::ifstream in(argument, std::ios::binary);
    if (!in) throw ScenarioError(command + ": cannot read " + argument);
    std::ostringstream data;
    data << in.rdbuf();
    return {std::move(data).str(), argument};
}

// --- views -----------------------------------------------------------------

struct LoadedViews {
    bool saved = false;
    std::shared_ptr<hosts::MemoryWindow> builtInWindow;
    std::shared_ptr<platform::View> builtInSplitView;
    // The windows that stand for the host's own now: the built-in one, or a tree's.
    std::vector<std::shared_ptr<platform::Window>> windows;
    std::optional<std::string> source;

    static LoadedViews& shared() {
        static LoadedViews loaded;
        return loaded;
    }

    void saveBuiltIn() {
        if (saved) return;
        auto& host = Host::instance();
        builtInWindow = host.documentWindow();
        builtInSplitView = host.splitView();
        windows = {builtInWindow};
        saved = true;
    }

    void replace(const std::vector<std::shared_ptr<platform::Window>>& replacements) {
        auto& views = Host::instance().views();
        for (const auto& window : windows) views.removeWindow(window);
        windows = replacements;
        for (std::size_t i = 0; i < windows.size(); ++i) views.insertWindow(i, windows[i]);
    }
};

std::shared_ptr<platform::View> rootOf(const hosts::MemoryWindow& window) {
    return window.frameView() ? window.frameView() : window.contentView();
}

std::shared_ptr<platform::View> firstSplitView(const std::shared_ptr<platform::View>& view) {
    if (!view) return nullptr;
    if (view->className() == "CUITaskPaneSplitView") return view;
    for (const auto& child : view->subviews()) {
        if (auto found = firstSplitView(child)) return found;
    }
    return nullptr;
}

void loadViewTree(const std::string& argument) {
    auto& loaded = LoadedViews::shared();
    auto& host = Host::instance();
    loaded.saveBuiltIn();
    if (argument == "builtin") {
        loaded.replace({loaded.builtInWindow});
        host.views().setKeyWindow(loaded.builtInWindow);
        host.setDocumentWindow(loaded.builtInWindow, loaded.builtInSplitView);
        loaded.source.reset();
        return;
    }
    const auto text = readTreeArgument("viewtree", argument);
    ViewTree tree;
    try {
        tree = parseViewTree(text.json);
    } catch (const TreeFileError& error) {
        throw ScenarioError("viewtree: " + text.source + ": " + error.what());
    }
    loaded.replace({tree.windows.begin(), tree.windows.end()});
    host.views().setKeyWindow(tree.key);
    // The snapshot draws the main window's first split view, or an empty one.
    auto split = tree.main ? firstSplitView(rootOf(*tree.main)) : nullptr;
    if (!split) split = makeHostView("CUITaskPaneSplitView", loaded.builtInSplitView->frame());
    host.setDocumentWindow(tree.main, split);
    loaded.source = text.source;
}

void showView(const std::shared_ptr<platform::View>& view, const std::shared_ptr<platform::View>& content, int depth) {
    auto& host = Host::instance();
    const std::string indent(static_cast<std::size_t>(depth) * 2, ' ');
    const auto frame = platform::describe(view->frame());
    if (host.paneAccess(view)) {
        host.emit("viewtree: " + indent + "pane " + support::quoted(firstTextField(view).value_or("")) + " " + frame);
        return;
    }
    std::string line = "viewtree: " + indent + view->className() + " " + frame;
    if (auto text = view->textFieldValue()) line += " text " + support::quoted(*text);
    if (view == content) line += " content";
    host.emit(line);
    for (const auto& child : view->subviews()) showView(child, content, depth + 1);
}

void showViewTree() {
    auto& host = Host::instance();
    const auto key = host.views().keyWindow();
    bool any = false;
    for (const auto& window : host.views().windows()) {
        if (!window || dynamic_cast<const platform::ToolWindow*>(window.get())) continue;
        any = true;
        std::string line = "viewtree: window " + window->className();
        if (const auto* captured = dynamic_cast<const CapturedWindow*>(window.get()); captured && captured->title) {
            line += " " + support::quoted(*captured->title);
        }
        if (window == key) line += " key";
        if (window == host.documentWindow()) line += " main";
        host.emit(line);
        const auto content = window->contentView();
        if (!content) host.emit("viewtree:   no content view");
        const auto* memory = dynamic_cast<const hosts::MemoryWindow*>(window.get());
        if (auto root = memory ? rootOf(*memory) : content) showView(root, content, 1);
    }
    if (!any) host.emit("viewtree: no windows");
    if (!key) host.emit("viewtree: no key window");
}

// --- accessibility ---------------------------------------------------------

struct LoadedAccessibility {
    std::optional<AxTree> tree;
    std::string source;

    static LoadedAccessibility& shared() {
        static LoadedAccessibility loaded;
        return loaded;
    }
};

void loadAxTree(const std::string& argument) {
    if (argument == "builtin") {
        rebuildBuiltInAccessibilityTree();
        return;
    }
    const auto text = readTreeArgument("axtree", argument);
    AxTree tree;
    try {
        tree = parseAxTree(text.json);
    } catch (const TreeFileError& error) {
        throw ScenarioError("axtree: " + text.source + ": " + error.what());
    }
    forgetLoadedAxTree();
    auto& accessibility = Host::instance().accessibility();
    accessibility.removeApplication(hostProcessIdentifier);
    if (tree.presence != AxTree::Presence::absent) {
        accessibility.addApplication({tree.bundleIdentifier, hostProcessIdentifier}, tree.application);
    }
    auto& loaded = LoadedAccessibility::shared();
    loaded.tree = std::move(tree);
    loaded.source = text.source;
}

// A captured ribbon for the tour: a newer host's window where the tabs sit
// four levels down, the quick access toolbar holds a near namesake of the
// tab, and the tab's value reads as text.
const char* const capturedRibbon = R"({
  "bundleIdentifier": "com.microsoft.Powerpoint",
  "title": "Microsoft PowerPoint",
  "focusedWindow": {"id": "window", "role": "AXWindow", "title": "Quarterly Review.pptx", "children": [
    {"role": "AXToolbar", "title": "Quick Access Toolbar", "children": [
      {"role": "AXButton", "title": "Save"},
      {"role": "AXMenuButton", "title": "Velmora ", "description": "Velmora add-in menu"}
    ]},
    {"role": "AXGroup", "title": "Ribbon", "children": [
      {"role": "AXGroup", "children": [
        {"role": "AXTabGroup", "title": "Ribbon Tabs", "children": [
          {"role": "AXRadioButton", "title": "Home", "value": "1"},
          {"role": "AXRadioButton", "title": "Insert", "value": "0"},
          {"id": "tab", "role": "AXRadioButton", "title": "Velmora", "description": "Velmora add-in tab", "value": "0"}
        ]}
      ]}
    ]},
    {"role": "AXSplitGroup", "fails": ["AXChildren"]}
  ]}
}
)";

void installCapturedRibbon() {
    const auto& root = Host::instance().sandboxRoot();
    if (root.empty()) return;
    const std::filesystem::path file = root + "/Trees/captured-ribbon.json";
    std::error_code ec;
    std::filesystem::create_directories(file.parent_path(), ec);
    std::ofstream(file, std::ios::binary) << capturedRibbon;
}

[[maybe_unused]] const bool installed = (installCapturedRibbon(), true);

[[maybe_unused]] const bool registered[] = {
    registerCommand({"viewtree", "viewtree FILE|builtin", 1, 1, [](const Arguments& a) { loadViewTree(a[0]); }}),
    registerCommand({"axtree", "axtree FILE|builtin", 1, 1, [](const Arguments& a) { loadAxTree(a[0]); }}),
    registerShow({"viewtree", "show viewtree", 0, 0, [](const Arguments&) { showViewTree(); }}),

    registerTourStep({16, "A ribbon captured from another host version",
                      "The simulator can replay an accessibility tree captured from a host, in place of\n"
                      "its own. In this one the tabs sit four levels down, the toolbar holds a menu\n"
                      "button titled \"Velmora \", which is not the tab, and the tab's value reads as\n"
                      "text, so the library presses the tab on every call: only the integer 1 stops it.\n"
                      "`show ribbon walk` lists what the walk listed, with each element's depth; the\n"
                      "slide area's children could not be read, so the walk did not enter it.",
                      "axtree @Trees/captured-ribbon.json\ncall activateVelmoraTab\nshow ribbon walk\n"
                      "call activateVelmoraTab\naxtree builtin\n"}),
};

}  // namespace

bool showLoadedRibbon() {
    const auto& loaded = LoadedAccessibility::shared();
    if (!loaded.tree) return false;
    const char* presence = loaded.tree->presence == AxTree::Presence::present  ? "present"
                           : loaded.tree->presence == AxTree::Presence::absent ? "absent"
                                                                               : "untrusted";
    auto& host = Host::instance();
    host.emit(fmt::format("ribbon: app {} ({})", presence, loaded.tree->bundleIdentifier));
    host.emit("ribbon: tree from " + loaded.source);
    return true;
}

void showRibbonWalk() {
    Host::instance().emitInspected("ribbon walk", {"ribbon walk: none yet (activateVelmoraTab has not run)"});
}

void forgetLoadedAxTree() {
    auto& loaded = LoadedAccessibility::shared();
    if (loaded.tree) loaded.tree->release();
    loaded.tree.reset();
}

}  // namespace velmora::host
