// The shortcut reference pane's content loader.
//
// Provides: ShortcutContentManager::loadShortcutsView().
// Reads Shortcuts.xml anew at every opening, on a user-initiated global
// queue, and makes the view on the main queue; the completion is always
// called there, once, with a hosting view of the catalogue or of one of the
// two failure texts ("Failed to load XML file", "No shortcuts found").
#pragma once

#include <functional>
#include <memory>

#include "platform/Views.h"

namespace velmora {

class ShortcutContentManager {
public:
    static void loadShortcutsView(std::function<void(std::shared_ptr<platform::View>)> completion);
};

}  // namespace velmora
