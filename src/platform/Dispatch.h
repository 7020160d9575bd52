// Dispatch port: the host's main queue and the global queues.
//
// Provides: Task, QualityOfService, DispatchPort.
// The main queue runs blocks one at a time on the host's main thread, in order
// of deadline, ties in order of posting. Global queues run blocks on worker
// threads with no ordering promise between them.
#pragma once

#include <functional>

namespace velmora::platform {

using Task = std::function<void()>;

enum class QualityOfService { userInteractive, userInitiated, utility, background };

class DispatchPort {
public:
    virtual ~DispatchPort() = default;
    virtual void mainAsync(Task task) = 0;
    virtual void mainAsyncAfter(double seconds, Task task) = 0;
    virtual void globalAsync(QualityOfService qos, Task task) = 0;
    virtual bool isMainThread() const = 0;
};

}  // namespace velmora::platform
