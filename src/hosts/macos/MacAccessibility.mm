#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>

#include "hosts/macos/MacAccessibility.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

namespace {

AXUIElementRef axElement(const void* element) { return static_cast<AXUIElementRef>(element); }

platform::AXElementRef wrapRetained(CFTypeRef element) {
    return std::make_shared<MacAXElement>(CFRetain(element));
}

std::optional<platform::AXValue> valueFrom(CFTypeRef value) {
    const CFTypeID type = CFGetTypeID(value);
    if (type == CFStringGetTypeID()) return platform::AXValue{toStdString((__bridge NSString*)value)};
    if (type == CFBooleanGetTypeID()) return platform::AXValue{CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0};
    if (type == CFNumberGetTypeID()) {
        NSNumber* number = (__bridge NSNumber*)value;
        if (CFNumberIsFloatType(static_cast<CFNumberRef>(value))) return platform::AXValue{[number doubleValue]};
        return platform::AXValue{static_cast<std::int64_t>([number longLongValue])};
    }
    if (type == AXUIElementGetTypeID()) return platform::AXValue{wrapRetained(value)};
    if (type == CFArrayGetTypeID()) {
        auto array = static_cast<CFArrayRef>(value);
        std::vector<platform::AXElementRef> elements;
        const CFIndex count = CFArrayGetCount(array);
        for (CFIndex i = 0; i < count; ++i) {
            CFTypeRef item = CFArrayGetValueAtIndex(array, i);
            if (item && CFGetTypeID(item) == AXUIElementGetTypeID()) elements.push_back(wrapRetained(item));
        }
        return platform::AXValue{std::move(elements)};
    }
    return std::nullopt;
}

}  // namespace

MacAXElement::~MacAXElement() {
    if (element_) CFRelease(element_);
}

platform::AXResult MacAXElement::copyAttributeValue(const std::string& attribute) const {
    platform::AXResult result;
    @autoreleasepool {
        CFTypeRef value = nullptr;
        result.error = AXUIElementCopyAttributeValue(axElement(element_), (__bridge CFStringRef)toNSString(attribute), &value);
        if (value) {
            if (result.error == kAXErrorSuccess) result.value = valueFrom(value);
            CFRelease(value);
        }
    }
    return result;
}

platform::AXError MacAXElement::performAction(const std::string& action) {
    @autoreleasepool {
        return AXUIElementPerformAction(axElement(element_), (__bridge CFStringRef)toNSString(action));
    }
}

std::vector<platform::RunningApplication> MacAccessibility::runningApplications() const {
    std::vector<platform::RunningApplication> applications;
    @autoreleasepool {
        for (NSRunningApplication* application in [[NSWorkspace sharedWorkspace] runningApplications]) {
            platform::RunningApplication entry;
            if (NSString* identifier = [application bundleIdentifier]) entry.bundleIdentifier = toStdString(identifier);
            entry.processIdentifier = [application processIdentifier];
            applications.push_back(std::move(entry));
        }
    }
    return applications;
}

platform::AXElementRef MacAccessibility::createApplicationElement(int processIdentifier) {
    AXUIElementRef element = AXUIElementCreateApplication(processIdentifier);
    if (!element) return nullptr;
    return std::make_shared<MacAXElement>(element);
}

}  // namespace velmora::hosts::macos
