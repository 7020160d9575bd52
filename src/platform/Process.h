// Process port: run a tool and capture what it prints.
//
// Provides: ProcessResult, ProcessPort. Blocks the caller until the tool ends.
#pragma once

#include <string>
#include <vector>

namespace velmora::platform {

struct ProcessResult {
    bool started = false;  // false: the tool could not be started; see error
    std::string error;
    std::string output;  // standard output
    int exitStatus = 0;
};

class ProcessPort {
public:
    virtual ~ProcessPort() = default;
    virtual ProcessResult run(const std::string& path, const std::vector<std::string>& arguments) = 0;
};

}  // namespace velmora::platform
