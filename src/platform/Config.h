// Config port: the host-specific values of the system.
//
// Provides: ConfigPort, and the service's endpoints that a build compiles
// in (every adapter's config port starts from them). The values are used
// as given.
#pragma once

#include <string>

namespace velmora::platform {

inline constexpr const char* defaultServiceBaseURL = "https://api.velmora.app";
inline constexpr const char* defaultCdnBaseURL = "https://cdn.velmora.app/templates/";
inline constexpr const char* defaultTemplateRequestPageURL = "https://velmora.app/templates/request";

class ConfigPort {
public:
    virtual ~ConfigPort() = default;
    virtual std::string serviceBaseURL() const = 0;
    virtual std::string cdnBaseURL() const = 0;
    // The web page where a user asks for a template the library lacks.
    virtual std::string templateRequestPageURL() const = 0;
};

}  // namespace velmora::platform
