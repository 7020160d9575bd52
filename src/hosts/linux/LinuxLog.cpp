#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <mutex>

#include <fmt/format.h>

#include "hosts/linux/LinuxAdapters.h"

namespace velmora::hosts::linuxhost {

namespace {

std::mutex outputMutex;

std::string timestamp() {
    timeval now{};
    gettimeofday(&now, nullptr);
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
    return fmt::format("{}.{:03d}", date, static_cast<int>(now.tv_usec / 1000));
}

void writeLine(std::FILE* stream, const std::string& line) {
    std::lock_guard lock(outputMutex);
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fflush(stream);
}

std::string prefix() {
    return fmt::format("{} VelmoraMac[{}:{}] ", timestamp(), getpid(), static_cast<long>(syscall(SYS_gettid)));
}

}  // namespace

void StderrLog::nslog(std::string_view text) { writeLine(stderr, fmt::format("{}{}\n", prefix(), text)); }

void StderrLog::print(std::string_view text) { writeLine(stdout, fmt::format("{}\n", text)); }

void StderrLog::logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                       std::string_view text) {
    writeLine(stderr, fmt::format("{}[{}:{}] <{}> {}\n", prefix(), subsystem, category, platform::levelName(level), text));
}

void TeeLog::nslog(std::string_view text) {
    first_->nslog(text);
    second_->nslog(text);
}

void TeeLog::print(std::string_view text) {
    first_->print(text);
    second_->print(text);
}

void TeeLog::logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                    std::string_view text) {
    first_->logger(subsystem, category, level, text);
    second_->logger(subsystem, category, level, text);
}

}  // namespace velmora::hosts::linuxhost
