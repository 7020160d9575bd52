#include "shortcuts/ShortcutContentManager.h"

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

// The pane's state: the catalogue as read at opening, and which icons load.
struct ReferencePane {
    ResponsiveShortcutsView view;
    std::map<std::string, bool> iconLoads;
};

std::shared_ptr<platform::View> catalogueView(std::vector<Shortcut> shortcuts) {
    auto pane = std::make_shared<ReferencePane>();
    auto groups = groupShortcuts(shortcuts);
    pane->view = ResponsiveShortcutsView{std::move(groups.categories), std::move(groups.grouped)};
    auto hosting = ui::HostingView::make([pane](double width) {
        IconCheck check = [pane](const std::string& path) {
            auto [entry, isNew] = pane->iconLoads.try_emplace(path, false);
            if (isNew) entry->second = ui::canLoadImage(path);
            return entry->second;
        };
        return pane->view.body(width, globalModifierKeyState().modifierFlags.get(), check);
    });

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
        auto parser = std::make_shared<ShortcutXMLParser>();
        parseShortcutXML(*document, *parser);
        platform::mainAsync([completion, parser] {
            if (parser->shortcuts.empty()) {
                completion(statusView("No shortcuts found", ui::colors::gray));
                return;
            }
            completion(catalogueView(std::move(parser->shortcuts)));
        });
    });
}

// Called by the macro project on the main thread.
void openShortcutsTaskpane() {
    platform::nslog("Shortcuts: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Velmora Shortcuts", 250, ShortcutContentManager::loadShortcutsView);
}

}  // namespace velmora
