// The template library in the simulator: what its view model holds. The
// pane opens with `open templates`; its filters and cells are tapped by
// label (`tap Templates Sales`, `tap Templates tpl-003`).
//
// Shows: `show templates`, `show browser` (the web addresses the library
// opened in the user's browser).

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerShow({"templates", "show templates", 0, 0,
                  [](const Arguments&) { Host::instance().emitInspected("templates", {"templates: (never opened)"}); }}),
    registerShow({"browser", "show browser", 0, 0,
                  [](const Arguments&) {
                      auto& host = Host::instance();
                      const auto& urls = host.views().openedURLs();
                      if (urls.empty()) host.emit("browser: (nothing opened)");
                      for (const auto& url : urls) host.emit("browser: " + url);
                  }}),
};

}  // namespace

}  // namespace velmora::host
