// Inspection port: lets a host that draws nothing read the library's
// observable state as text.
//
// Provides: Inspector, InspectionPort.
// A subsystem registers an inspector when its state is first made; the
// host calls it on the main thread, between events. A host without use
// for it ignores the registrations.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace velmora::platform {

using Inspector = std::function<std::vector<std::string>()>;

class InspectionPort {
public:
    virtual ~InspectionPort() = default;
    virtual void registerInspector(const std::string& name, Inspector inspector) = 0;
};

}  // namespace velmora::platform
