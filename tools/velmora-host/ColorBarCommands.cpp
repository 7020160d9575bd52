// The colour bar in the simulator: what its view model holds. Its chips are
// tapped and hovered with the pane commands (`tap Color 'Apply Fill#5'`).
//
// Show: `show colorbar`.

#include "Host.h"
#include "Scenario.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerShow({"colorbar", "show colorbar", 0, 0,
                  [](const Arguments&) {
                      auto& host = Host::instance();
                      auto lines = host.inspect("colorbar");
                      if (!lines) lines = std::vector<std::string>{"colorbar: (never opened)"};
                      for (const auto& line : *lines) host.emit(line);
                  }}),
};

}  // namespace

}  // namespace velmora::host
