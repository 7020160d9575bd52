// Files port on macOS: NSFileManager and NSData.
//
// Provides: MacFiles. Paths are the real file system's; the home and
// application support directories are those the platform reports for the
// user (in a sandboxed host, its container). Error texts are the
// localized descriptions of the platform's own errors. Callable from any
// thread (each call uses the process's default manager, which is thread-safe).
#pragma once

#include "platform/Files.h"

namespace velmora::hosts::macos {

class MacFiles : public platform::FilesPort {
public:
    std::string homeDirectory() const override;
    std::string applicationSupportDirectory() const override;
    bool exists(const std::string& path) const override;
    bool isDirectory(const std::string& path) const override;
    std::optional<std::string> read(const std::string& path, std::string* error) const override;
    bool write(const std::string& path, const std::string& data, bool atomic, std::string* error) override;
    bool createDirectories(const std::string& path, std::string* error) override;
    bool remove(const std::string& path, std::string* error) override;
    std::vector<std::string> list(const std::string& path) const override;
};

}  // namespace velmora::hosts::macos
