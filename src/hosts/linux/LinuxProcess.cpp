#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

#include <fmt/format.h>

#include "hosts/linux/LinuxAdapters.h"

extern char** environ;

namespace velmora::hosts::linuxhost {

namespace {

constexpr std::string_view hardwareReportTool = "/usr/sbin/system_profiler";

std::string firstLine(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    if (!in || !std::getline(in, line)) return {};
    auto last = line.find_last_not_of(" \t\r\n");
    return last == std::string::npos ? std::string{} : line.substr(0, last + 1);
}

std::string upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

std::string hardwareReportFallback(const std::string& dmiPath, const std::string& machineIdPath) {
    std::string uuid = upper(firstLine(dmiPath));
    if (uuid.empty()) {
        // The machine id is 32 hexadecimal digits; shape it 8-4-4-4-12.
        const std::string id = firstLine(machineIdPath);
        if (id.size() == 32) {
            uuid = upper(fmt::format("{}-{}-{}-{}-{}", id.substr(0, 8), id.substr(8, 4), id.substr(12, 4),
                                     id.substr(16, 4), id.substr(20)));
        }
    }
    if (uuid.empty()) return {};
    return fmt::format("Hardware:\n\n    Hardware Overview:\n\n      Hardware UUID: {}\n", uuid);
}

platform::ProcessResult LinuxProcess::run(const std::string& path, const std::vector<std::string>& arguments) {
    platform::ProcessResult result;
    if (path == hardwareReportTool && access(path.c_str(), X_OK) != 0) {
        result.started = true;
        result.output = hardwareReportFallback();
        return result;
    }

    int pipeFds[2];
    if (pipe2(pipeFds, O_CLOEXEC) != 0) {
        result.error = fmt::format("The operation couldn’t be completed. ({})", std::strerror(errno));
        return result;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, path.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeFds[1]);
    if (spawned != 0) {
        close(pipeFds[0]);
        result.error = fmt::format("The file “{}” doesn’t exist. ({})", path, std::strerror(spawned));
        return result;
    }
    result.started = true;
    char buffer[4096];
    for (;;) {
        ssize_t n = read(pipeFds[0], buffer, sizeof buffer);
        if (n > 0) {
            result.output.append(buffer, static_cast<size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    close(pipeFds[0]);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace velmora::hosts::linuxhost
