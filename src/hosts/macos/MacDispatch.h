// Dispatch port on macOS: the main queue and the global queues.
//
// Provides: MacDispatch. mainAsync/mainAsyncAfter post to the main queue
// (after a delay: dispatch_after on the wall clock's deadline), globalAsync
// to the global queue of the matching quality-of-service class.
#pragma once

#include "platform/Dispatch.h"

namespace velmora::hosts::macos {

class MacDispatch : public platform::DispatchPort {
public:
    void mainAsync(platform::Task task) override;
    void mainAsyncAfter(double seconds, platform::Task task) override;
    void globalAsync(platform::QualityOfService qos, platform::Task task) override;
    bool isMainThread() const override;
};

}  // namespace velmora::hosts::macos
