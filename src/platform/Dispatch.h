// Dispatch port: the host's main queue and the global queues.
//
// Provides: Task, QualityOfService, DispatchPort.
// The main queue runs blocks one at a time on the host's main thread, in order
// of deadline, ties in order of posting. Global queues run blocks on worker
// threads with no ordering promise between them. The port also tells the
// time of day.
#pragma once

#include <chrono>
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
    // The wall clock, in seconds since 1970-01-01 00:00:00 UTC. A host that
    // plays time (a simulator, a test) gives its own.
    virtual double now() const {
        using namespace std::chrono;
        return duration<double>(system_clock::now().time_since_epoch()).count();
    }
};

}  // namespace velmora::platform
