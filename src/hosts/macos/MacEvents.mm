#import <AppKit/AppKit.h>

#include <memory>

#include "hosts/macos/MacEvents.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

namespace {

platform::Event eventFrom(NSEvent* event) {
    platform::Event converted;
    converted.type = static_cast<platform::EventType>([event type]);
    converted.modifierFlags = static_cast<std::uint64_t>([event modifierFlags]);
    // Characters and key codes exist only on key events; asking a mouse
    // event for them raises.
    switch ([event type]) {
        case NSEventTypeKeyDown:
        case NSEventTypeKeyUp:
            if (NSString* characters = [event charactersIgnoringModifiers]) {
                converted.charactersIgnoringModifiers = toStdString(characters);
            }
            converted.keyCode = [event keyCode];
            break;
        case NSEventTypeFlagsChanged:
            converted.keyCode = [event keyCode];
            break;
        default:
            break;
    }
    return converted;
}

}  // namespace

platform::MonitorToken MacEvents::addLocalMonitor(std::uint64_t mask, platform::EventMonitorHandler handler) {
    auto owned = std::make_shared<platform::EventMonitorHandler>(std::move(handler));
    id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:static_cast<NSEventMask>(mask)
                                                       handler:^NSEvent* _Nullable(NSEvent* event) {
                                                         // A passed-on event goes on as the host's own object.
                                                         return (*owned)(eventFrom(event)) ? event : nil;
                                                       }];
    if (!monitor) return 0;
    const platform::MonitorToken token = nextToken_++;
    monitors_[token] = monitor;
    return token;
}

void MacEvents::removeMonitor(platform::MonitorToken token) {
    auto found = monitors_.find(token);
    if (found == monitors_.end()) return;
    [NSEvent removeMonitor:found->second];
    monitors_.erase(found);
}

}  // namespace velmora::hosts::macos
