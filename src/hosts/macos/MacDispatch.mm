#import <Foundation/Foundation.h>

#include <dispatch/dispatch.h>

#include <algorithm>
#include <cstdint>
#include <memory>

#include "hosts/macos/MacDispatch.h"

namespace velmora::hosts::macos {

namespace {

dispatch_qos_class_t classFor(platform::QualityOfService qos) {
    switch (qos) {
        case platform::QualityOfService::userInteractive: return QOS_CLASS_USER_INTERACTIVE;
        case platform::QualityOfService::userInitiated: return QOS_CLASS_USER_INITIATED;
        case platform::QualityOfService::utility: return QOS_CLASS_UTILITY;
        case platform::QualityOfService::background: return QOS_CLASS_BACKGROUND;
    }
    return QOS_CLASS_DEFAULT;
}

// A block owns the task through a shared pointer: a block captures C++
// objects by copy, and a std::function may be expensive to copy.
dispatch_block_t blockFor(platform::Task task) {
    auto owned = std::make_shared<platform::Task>(std::move(task));
    return ^{
        (*owned)();
    };
}

}  // namespace

void MacDispatch::mainAsync(platform::Task task) { dispatch_async(dispatch_get_main_queue(), blockFor(std::move(task))); }

void MacDispatch::mainAsyncAfter(double seconds, platform::Task task) {
    const auto delay = static_cast<std::int64_t>(std::max(0.0, seconds) * NSEC_PER_SEC);
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delay), dispatch_get_main_queue(), blockFor(std::move(task)));
}

void MacDispatch::globalAsync(platform::QualityOfService qos, platform::Task task) {
    dispatch_async(dispatch_get_global_queue(classFor(qos), 0), blockFor(std::move(task)));
}

bool MacDispatch::isMainThread() const { return [NSThread isMainThread]; }

}  // namespace velmora::hosts::macos
