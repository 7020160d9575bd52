// The library's own Linux adapters: what it supplies when the host does not.
//
// Provides: StderrLog, TeeLog, LinuxFiles, CurlHttp, LinuxProcess,
// StandaloneDispatch, StandaloneScript, StaticConfig.
#pragma once

#include <memory>
#include <string>
#include <thread>

#include "hosts/common/ThreadPool.h"
#include "platform/Platform.h"

namespace velmora::hosts::linuxhost {

// NSLog-like lines on stderr: "2026-11-21 10:00:00.123 VelmoraMac[pid:tid] text".
// print() goes to stdout as a plain line.
class StderrLog : public platform::LogPort {
public:
    void nslog(std::string_view text) override;
    void print(std::string_view text) override;
    void logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                std::string_view text) override;
};

// Sends every line to two logs, first to second.
class TeeLog : public platform::LogPort {
public:
    TeeLog(std::shared_ptr<platform::LogPort> first, std::shared_ptr<platform::LogPort> second)
        : first_(std::move(first)), second_(std::move(second)) {}
    void nslog(std::string_view text) override;
    void print(std::string_view text) override;
    void logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                std::string_view text) override;

private:
    std::shared_ptr<platform::LogPort> first_, second_;
};

// std::filesystem below a root: "/a/b" is root + "/a/b". An empty root is
// the real file system.
class LinuxFiles : public platform::FilesPort {
public:
    LinuxFiles(std::string root, std::string homeDirectory);
    std::string homeDirectory() const override { return home_; }
    std::string applicationSupportDirectory() const override { return home_ + "/Library/Application Support"; }
    bool exists(const std::string& path) const override;
    bool isDirectory(const std::string& path) const override;
    std::optional<std::string> read(const std::string& path, std::string* error) const override;
    bool write(const std::string& path, const std::string& data, bool atomic, std::string* error) override;
    bool createDirectories(const std::string& path, std::string* error) override;
    bool remove(const std::string& path, std::string* error) override;
    std::vector<std::string> list(const std::string& path) const override;

    // Where `path` lives on the real file system.
    std::string mapped(const std::string& path) const;

private:
    std::string root_, home_;
};

// libcurl, one easy handle per request, run on a global queue.
class CurlHttp : public platform::HttpPort {
public:
    explicit CurlHttp(std::shared_ptr<platform::DispatchPort> dispatch);
    void send(platform::HttpRequest request, std::function<void(platform::HttpResponse)> completion) override;
    // The blocking transfer itself, for callers already on a worker thread.
    static platform::HttpResponse perform(const platform::HttpRequest& request);

private:
    std::shared_ptr<platform::DispatchPort> dispatch_;
};

// fork/exec with standard output captured. The hardware report tool of the
// library's home platform does not exist on Linux; asked for it, this
// adapter prints the same "Hardware UUID:" line from the machine's own
// identity instead (see hardwareReportFallback).
class LinuxProcess : public platform::ProcessPort {
public:
    platform::ProcessResult run(const std::string& path, const std::vector<std::string>& arguments) override;
};

// The Linux stand-in for the hardware report: "Hardware UUID: X" with X from
// the DMI product UUID when readable, else the machine id shaped as an
// upper-case UUID; nothing when neither is readable.
std::string hardwareReportFallback(const std::string& dmiPath = "/sys/class/dmi/id/product_uuid",
                                   const std::string& machineIdPath = "/etc/machine-id");

// For a process with no host: a main thread of the library's own, with a
// real-time queue, and a pool for the global queues.
class StandaloneDispatch : public platform::DispatchPort {
public:
    StandaloneDispatch();
    ~StandaloneDispatch() override;
    void mainAsync(platform::Task task) override { mainAsyncAfter(0, std::move(task)); }
    void mainAsyncAfter(double seconds, platform::Task task) override;
    void globalAsync(platform::QualityOfService qos, platform::Task task) override;
    bool isMainThread() const override;

private:
    struct State;
    std::shared_ptr<State> state_;
    ThreadPool pool_;
    std::thread main_;
};

// For a process with no host: every script fails as if the host were not running.
class StandaloneScript : public platform::ScriptPort {
public:
    platform::ScriptOutcome run(const std::string& source) override;
};

// For a host that does not read the library's state.
class IgnoredInspection : public platform::InspectionPort {
public:
    void registerInspector(const std::string&, platform::Inspector) override {}
};

// For a host that draws and clicks panes itself.
class IgnoredPaneHost : public platform::PaneHostPort {
public:
    void paneCreated(const std::shared_ptr<platform::View>&, platform::PaneAccess) override {}
};

class StaticConfig : public platform::ConfigPort {
public:
    StaticConfig(std::string service, std::string cdn, std::string requestPage)
        : service_(std::move(service)), cdn_(std::move(cdn)), requestPage_(std::move(requestPage)) {}
    std::string serviceBaseURL() const override { return service_; }
    std::string cdnBaseURL() const override { return cdn_; }
    std::string templateRequestPageURL() const override { return requestPage_; }

private:
    std::string service_, cdn_, requestPage_;
};

}  // namespace velmora::hosts::linuxhost
