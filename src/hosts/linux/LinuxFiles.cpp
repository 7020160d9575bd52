#include <algorithm>
#include <fstream>
#include <filesystem>
#include <random>
#include <sstream>
#include <system_error>

#include <fmt/format.h>

#include "hosts/linux/LinuxAdapters.h"

namespace fs = std::filesystem;

namespace velmora::hosts::linuxhost {

namespace {

void setError(std::string* error, const std::string& text) {
    if (error) *error = text;
}

}  // namespace

LinuxFiles::LinuxFiles(std::string root, std::string homeDirectory)
    : root_(std::move(root)), home_(std::move(homeDirectory)) {
    while (root_.size() > 1 && root_.back() == '/') root_.pop_back();
    if (root_ == "/") root_.clear();
}

std::string LinuxFiles::mapped(const std::string& path) const {
    if (root_.empty()) return path;
    // Read as a path from the root, "..", that climbs past it stays at it: a
    // name made of outside text ("../../x") never leaves the sandbox.
    const fs::path absolute = path.empty() || path.front() != '/' ? "/" + path : path;
    return root_ + absolute.lexically_normal().string();
}

bool LinuxFiles::exists(const std::string& path) const {
    std::error_code ec;
    return fs::exists(mapped(path), ec);
}

bool LinuxFiles::isDirectory(const std::string& path) const {
    std::error_code ec;
    return fs::is_directory(mapped(path), ec);
}

std::optional<std::string> LinuxFiles::read(const std::string& path, std::string* error) const {
    std::ifstream in(mapped(path), std::ios::binary);
    if (!in) {
        setError(error, fmt::format("The file “{}” couldn’t be opened because there is no such file.",
                                    fs::path(path).filename().string()));
        return std::nullopt;
    }
    std::ostringstream data;
    data << in.rdbuf();
    if (in.bad()) {
        setError(error, fmt::format("The file “{}” couldn’t be read.", fs::path(path).filename().string()));
        return std::nullopt;
    }
    return std::move(data).str();
}

bool LinuxFiles::write(const std::string& path, const std::string& data, bool atomic, std::string* error) {
    const std::string target = mapped(path);
    std::string temporary = target;
    if (atomic) {
        std::random_device random;
        temporary = fmt::format("{}.tmp-{:08x}", target, random());
    }
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out) {
            // The reason as the platform words it: a missing folder, or one we may not write in.
            const fs::path file(path);
            std::error_code ec;
            if (fs::is_directory(fs::path(target).parent_path(), ec)) {
                setError(error, fmt::format("You don’t have permission to save the file “{}” in the folder “{}”.",
                                            file.filename().string(), file.parent_path().filename().string()));
            } else {
                setError(error, fmt::format("You can’t save the file “{}” because the folder doesn’t exist.",
                                            file.filename().string()));
            }
            return false;
        }
        out.write(data.data(), static_cast<std::streamsize>(data.size()));
        if (!out.flush()) {
            setError(error, fmt::format("The file “{}” couldn’t be saved.", fs::path(path).filename().string()));
            return false;
        }
    }
    if (atomic) {
        std::error_code ec;
        fs::rename(temporary, target, ec);
        if (ec) {
            fs::remove(temporary, ec);
            setError(error, fmt::format("The file “{}” couldn’t be saved.", fs::path(path).filename().string()));
            return false;
        }
    }
    return true;
}

bool LinuxFiles::createDirectories(const std::string& path, std::string* error) {
    std::error_code ec;
    fs::create_directories(mapped(path), ec);
    if (ec) {
        setError(error, fmt::format("You don’t have permission to save the file “{}”.", fs::path(path).filename().string()));
        return false;
    }
    return true;
}

bool LinuxFiles::remove(const std::string& path, std::string* error) {
    std::error_code ec;
    const bool removed = fs::remove_all(mapped(path), ec) > 0;
    if (ec || !removed) {
        setError(error, fmt::format("“{}” couldn’t be removed.", fs::path(path).filename().string()));
        return false;
    }
    return true;
}

std::vector<std::string> LinuxFiles::list(const std::string& path) const {
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(mapped(path), ec), end; !ec && it != end; it.increment(ec)) {
        names.push_back(it->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace velmora::hosts::linuxhost
