// Config port: the host-specific values of the system.
//
// Provides: ConfigPort. The values are used as given.
#pragma once

#include <string>

namespace velmora::platform {

class ConfigPort {
public:
    virtual ~ConfigPort() = default;
    virtual std::string serviceBaseURL() const = 0;
    virtual std::string cdnBaseURL() const = 0;
    // The web page where a user asks for a template the library lacks.
    virtual std::string templateRequestPageURL() const = 0;
};

}  // namespace velmora::platform
