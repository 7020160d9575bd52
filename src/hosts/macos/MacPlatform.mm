// The default platform on macOS: every port over the host process's own
// AppKit, Foundation and system services. The host draws and clicks the
// panes itself, so inspection and the pane host's hand-over are not used.

#import <AppKit/AppKit.h>

#include "hosts/macos/MacAccessibility.h"
#include "hosts/macos/MacDispatch.h"
#include "hosts/macos/MacEvents.h"
#include "hosts/macos/MacFiles.h"
#include "hosts/macos/MacHttp.h"
#include "hosts/macos/MacLog.h"
#include "hosts/macos/MacProcess.h"
#include "hosts/macos/MacScript.h"
#include "hosts/macos/MacViews.h"
#include "hosts/macos/MacWeb.h"
#include "platform/Platform.h"

namespace velmora::hosts::macos {

namespace {

// The service's endpoints compiled into the library.
class StaticConfig : public platform::ConfigPort {
public:
    std::string serviceBaseURL() const override { return platform::defaultServiceBaseURL; }
    std::string cdnBaseURL() const override { return platform::defaultCdnBaseURL; }
    std::string templateRequestPageURL() const override { return platform::defaultTemplateRequestPageURL; }
};

class IgnoredInspection : public platform::InspectionPort {
public:
    void registerInspector(const std::string&, platform::Inspector) override {}
};

// A toolkit host draws and clicks the panes itself; their colours come
// from its asset catalogue.
class AppKitPaneHost : public platform::PaneHostPort {
public:
    void paneCreated(const std::shared_ptr<platform::View>&, platform::PaneAccess) override {}
    std::optional<std::array<double, 4>> namedColor(const std::string& name) const override {
        NSColor* color = [NSColor colorNamed:[NSString stringWithUTF8String:name.c_str()]];
        NSColor* rgb = [color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]];
        if (!rgb) return std::nullopt;
        return std::array<double, 4>{rgb.redComponent, rgb.greenComponent, rgb.blueComponent, rgb.alphaComponent};
    }
};

}  // namespace

}  // namespace velmora::hosts::macos

namespace velmora::platform {

std::shared_ptr<Platform> makeDefaultPlatform() {
    using namespace hosts::macos;
    auto platform = std::make_shared<Platform>();
    platform->script = std::make_shared<MacScript>();
    platform->dispatch = std::make_shared<MacDispatch>();
    platform->log = std::make_shared<MacLog>();
    platform->http = std::make_shared<MacHttp>();
    platform->files = std::make_shared<MacFiles>();
    platform->process = std::make_shared<MacProcess>();
    platform->events = std::make_shared<MacEvents>();
    platform->views = std::make_shared<MacViews>();
    platform->accessibility = std::make_shared<MacAccessibility>();
    platform->web = std::make_shared<MacWeb>();
    platform->config = std::make_shared<StaticConfig>();
    platform->inspection = std::make_shared<IgnoredInspection>();
    platform->panes = std::make_shared<AppKitPaneHost>();
    return platform;
}

}  // namespace velmora::platform
