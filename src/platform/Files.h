// Files port: the file system as the logic sees it.
//
// Provides: FilesPort.
// Paths are absolute, as on the user's machine ("/Library/Application
// Support/...", the home directory's "Library/..."); an adapter may map them
// below a root of its own. Every operation reports failure by its result and
// an error text, never by throwing. Callable from any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velmora::platform {

class FilesPort {
public:
    virtual ~FilesPort() = default;
    virtual std::string homeDirectory() const = 0;
    // The user's application support directory ("~/Library/Application Support").
    virtual std::string applicationSupportDirectory() const = 0;

    virtual bool exists(const std::string& path) const = 0;
    virtual bool isDirectory(const std::string& path) const = 0;
    virtual std::optional<std::string> read(const std::string& path, std::string* error = nullptr) const = 0;
    // Atomic writes go through a temporary file renamed into place.
    virtual bool write(const std::string& path, const std::string& data, bool atomic,
                       std::string* error = nullptr) = 0;
    virtual bool createDirectories(const std::string& path, std::string* error = nullptr) = 0;
    virtual bool remove(const std::string& path, std::string* error = nullptr) = 0;
    // Names of the entries of a directory, sorted; empty when it cannot be read.
    virtual std::vector<std::string> list(const std::string& path) const = 0;
};

}  // namespace velmora::platform
