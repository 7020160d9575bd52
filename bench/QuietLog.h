// A log that keeps nothing, so a benchmark measures the formatting of the
// library's lines but not their storage.
//
// Provides: QuietLog.
#pragma once

#include "platform/Log.h"

namespace velmora {

class QuietLog : public platform::LogPort {
public:
    void nslog(std::string_view) override {}
    void print(std::string_view) override {}
    void logger(std::string_view, std::string_view, platform::LogLevel, std::string_view) override {}
};

}  // namespace velmora
