// The wall clock the library reads, as local time in the simulator's fixed
// zone: the virtual clock's start plus what has run since.
//
// Show: `show clock` (`clock: 2026-11-23T11:00:00 CET`).

#include <time.h>

#include <cmath>

#include <fmt/format.h>

#include "Host.h"
#include "Scenario.h"
#include "platform/Platform.h"

namespace velmora::host {

namespace {

[[maybe_unused]] const bool registered[] = {
    registerShow({"clock", "show clock", 0, 0,
                  [](const Arguments&) {
                      const double now = Host::instance().connection()->ports->dispatch->now();
                      const time_t seconds = static_cast<time_t>(std::floor(now));
                      struct tm local {};
                      char text[64] = "";
                      if (!localtime_r(&seconds, &local) || !strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S %Z", &local)) {
                          Host::instance().emit(fmt::format("clock: {} seconds, not a local time", now));
                          return;
                      }
                      Host::instance().emit(std::string("clock: ") + text);
                  }}),
};

}  // namespace

}  // namespace velmora::host
