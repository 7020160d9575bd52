#include "shortcuts/ShortcutContentManager.h"

#include <algorithm>
#include <map>

#include "bridge/Exports.h"
#include "keyboard/ModifierKeyState.h"
#include "platform/Platform.h"
#include "shortcuts/ShortcutReferenceView.h"
#include "shortcuts/ShortcutXMLParser.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/HostingView.h"
#include "ui/Images.h"

namespace velmora {

namespace {

using Completion = std::function<void(std::shared_ptr<platform::View>)>;

std::shared_ptr<platform::View> statusView(const char* message, ui::Color color) {
    std::string text = message;
    return ui::HostingView::make([text, color](double) { return ui::text(text).foregroundColor(color); });
}

// The pane's state: the catalogue as read at opening, which icons load in
// the drawing under way, and, for a list built as a window, where its
// scroll view stands.
struct ReferencePane {
    ResponsiveShortcutsView view;
    std::map<std::string, bool> iconLoads;
    std::weak_ptr<ui::HostingView> hosting;
    double scrollOffset = 0;
};

std::shared_ptr<platform::View> catalogueView(ResponsiveShortcutsView view) {
    auto pane = std::make_shared<ReferencePane>();
    pane->view = std::move(view);
    auto hosting = ui::HostingView::make([pane](double width) {
        // Icon files are looked at anew at every drawing, so one installed
        // while the pane is open shows at the next.
        pane->iconLoads.clear();
        IconCheck check = [pane](const std::string& path) {
            auto [entry, isNew] = pane->iconLoads.try_emplace(path, false);
            if (isNew) entry->second = ui::canLoadImage(path);
            return entry->second;
        };
        const auto view = pane->hosting.lock();
        ReferenceViewport viewport{pane->scrollOffset, view ? view->frame().height : 0};
        ui::Node list = pane->view.body(width, globalModifierKeyState().modifierFlags.get(), check, viewport);
        if (pane->view.buildsWindow()) {
            std::weak_ptr<ReferencePane> weak = pane;
            list.onScroll = [weak](double offset) {
                auto self = weak.lock();
                if (!self) return;
                self->scrollOffset = std::max(0.0, offset);
                if (auto shown = self->hosting.lock()) shown->invalidate();
            };
        }
        return list;
    });
    pane->hosting = hosting;

    // Each published change of the held modifiers redraws the rows.
    ui::invalidateOnChange(hosting, globalModifierKeyState().modifierFlags);
    return hosting;
}

}  // namespace

void ShortcutContentManager::loadShortcutsView(Completion completion) {
    platform::globalAsync(platform::QualityOfService::userInitiated, [completion = std::move(completion)] {
        auto document = platform::files().read(shortcutCataloguePath);
        if (!document) {
            platform::mainAsync([completion] { completion(statusView("Failed to load XML file", ui::colors::red)); });
            return;
        }
        // The parse result is not looked at: records before a fault stand.
        ShortcutXMLParser parser;
        parseShortcutXML(*document, parser);
        document.reset();
        if (parser.shortcuts.empty()) {
            platform::mainAsync([completion] { completion(statusView("No shortcuts found", ui::colors::gray)); });
            return;
        }
        // Grouped here, off the main thread, keeping of each record what the pane shows.
        auto view =
            std::make_shared<ResponsiveShortcutsView>(ResponsiveShortcutsView::make(std::move(parser.shortcuts)));
        platform::mainAsync([completion, view] { completion(catalogueView(std::move(*view))); });
    });
}

// Called by the macro project on the main thread.
void openShortcutsTaskpane() {
    platform::nslog("Shortcuts: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Velmora Shortcuts", 250, ShortcutContentManager::loadShortcutsView);
}

}  // namespace velmora
