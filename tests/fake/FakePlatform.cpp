#include "fake/FakePlatform.h"

#include <stdlib.h>

#include <algorithm>
#include <filesystem>

namespace velmora::testing {

std::string macroNameIn(const std::string& script) {
    const std::string marker = "macro name \"";
    auto start = script.find(marker);
    if (start == std::string::npos) return {};
    start += marker.size();
    auto end = script.find('"', start);
    return end == std::string::npos ? std::string{} : script.substr(start, end - start);
}

platform::ScriptOutcome FakeScript::run(const std::string& source) {
    std::function<void()> action;
    platform::ScriptOutcome outcome;
    {
        std::lock_guard lock(mutex_);
        scripts_.push_back(source);
        if (refuse_) return {false, std::nullopt, std::nullopt};
        const auto macro = macroNameIn(source);
        if (auto it = table_.find(macro); it != table_.end()) outcome = it->second;
        if (auto it = actions_.find(macro); it != actions_.end()) action = it->second;
    }
    if (action) action();
    return outcome;
}

void FakeScript::answer(const std::string& macro, std::string text) {
    std::lock_guard lock(mutex_);
    table_[macro] = {true, std::nullopt, std::move(text)};
}

void FakeScript::fail(const std::string& macro, platform::ScriptError error) {
    std::lock_guard lock(mutex_);
    table_[macro] = {true, std::move(error), std::nullopt};
}

void FakeScript::respond(const std::string& macro, platform::ScriptOutcome outcome) {
    std::lock_guard lock(mutex_);
    table_[macro] = std::move(outcome);
}

void FakeScript::refuseToCreate(bool refuse) {
    std::lock_guard lock(mutex_);
    refuse_ = refuse;
}

void FakeScript::onMacro(const std::string& macro, std::function<void()> action) {
    std::lock_guard lock(mutex_);
    actions_[macro] = std::move(action);
}

std::vector<std::string> FakeScript::scripts() const {
    std::lock_guard lock(mutex_);
    return scripts_;
}

std::vector<std::string> FakeScript::macros() const {
    std::vector<std::string> names;
    for (const auto& script : scripts()) names.push_back(macroNameIn(script));
    return names;
}

void FakeDispatch::globalAsync(platform::QualityOfService qos, platform::Task task) {
    std::lock_guard lock(mutex_);
    global_.push_back(std::move(task));
    qualities_.push_back(qos);
}

bool FakeDispatch::runGlobal() {
    bool ran = false;
    for (;;) {
        platform::Task task;
        {
            std::lock_guard lock(mutex_);
            if (global_.empty()) return ran;
            task = std::move(global_.front());
            global_.pop_front();
        }
        task();
        ran = true;
    }
}

void FakeDispatch::runUntilIdle() {
    for (;;) {
        const bool ranGlobal = runGlobal();
        const bool ranMain = main.runDue() > 0;
        if (!ranGlobal && !ranMain) return;
    }
}

void FakeDispatch::advance(double seconds) {
    runGlobal();
    main.advance(seconds);
    runUntilIdle();
}

std::size_t FakeDispatch::pendingGlobal() const {
    std::lock_guard lock(mutex_);
    return global_.size();
}

std::vector<platform::QualityOfService> FakeDispatch::globalQualities() const {
    std::lock_guard lock(mutex_);
    return qualities_;
}

void CapturedLog::logger(std::string_view subsystem, std::string_view category, platform::LogLevel level,
                         std::string_view text) {
    add(std::string("logger ") + std::string(subsystem) + "/" + std::string(category) + " " +
            std::string(platform::levelName(level)),
        text);
}

void CapturedLog::add(std::string_view channel, std::string_view text) {
    std::lock_guard lock(mutex_);
    lines_.emplace_back(channel, text);
}

std::vector<std::string> CapturedLog::lines() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> out;
    for (const auto& [channel, text] : lines_) out.push_back(text);
    return out;
}

std::vector<std::string> CapturedLog::linesWithChannel() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> out;
    for (const auto& [channel, text] : lines_) out.push_back(channel + ": " + text);
    return out;
}

bool CapturedLog::contains(std::string_view text) const {
    auto all = lines();
    return std::find(all.begin(), all.end(), text) != all.end();
}

void CapturedLog::clear() {
    std::lock_guard lock(mutex_);
    lines_.clear();
}

void FakeHttp::send(platform::HttpRequest request, std::function<void(platform::HttpResponse)> completion) {
    platform::HttpResponse response;
    {
        std::lock_guard lock(mutex_);
        requests_.push_back(request);
        auto it = routes_.find(request.url);
        if (it == routes_.end()) it = routes_.find(request.url.substr(0, request.url.find('?')));
        if (it != routes_.end()) {
            response = it->second;
        } else {
            response.status = 404;
        }
    }
    dispatch_->globalAsync(platform::QualityOfService::utility,
                           [response = std::move(response), completion = std::move(completion)] {
                               if (completion) completion(response);
                           });
}

void FakeHttp::route(const std::string& url, platform::HttpResponse response) {
    std::lock_guard lock(mutex_);
    routes_[url] = std::move(response);
}

void FakeHttp::fault(const std::string& url, std::string transportError) {
    platform::HttpResponse response;
    response.transportError = std::move(transportError);
    route(url, std::move(response));
}

std::vector<platform::HttpRequest> FakeHttp::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

platform::ProcessResult FakeProcess::run(const std::string& path, const std::vector<std::string>&) {
    ++runs_[path];
    auto it = results_.find(path);
    if (it != results_.end()) return it->second;
    platform::ProcessResult result;
    result.error = "The file “" + path + "” doesn’t exist.";
    return result;
}

int FakeProcess::runs(const std::string& path) const {
    auto it = runs_.find(path);
    return it == runs_.end() ? 0 : it->second;
}

void FakeInspection::registerInspector(const std::string& name, platform::Inspector inspector) {
    std::lock_guard lock(mutex_);
    inspectors_[name] = std::move(inspector);
}

std::optional<std::vector<std::string>> FakeInspection::inspect(const std::string& name) const {
    platform::Inspector inspector;
    {
        std::lock_guard lock(mutex_);
        auto it = inspectors_.find(name);
        if (it == inspectors_.end()) return std::nullopt;
        inspector = it->second;
    }
    return inspector();
}

FakePlatform::FakePlatform() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make a temporary folder");
    root_ = pattern;
    files = std::make_shared<hosts::linuxhost::LinuxFiles>(root_, "/Users/tester");
}

FakePlatform::~FakePlatform() {
    std::error_code ec;
    std::filesystem::remove_all(root_, ec);
}

void FakePlatform::install() { platform::install(ports()); }

std::shared_ptr<platform::Platform> FakePlatform::ports() const {
    auto platform = std::make_shared<platform::Platform>();
    platform->script = script;
    platform->dispatch = dispatch;
    platform->log = log;
    platform->http = http;
    platform->files = files;
    platform->process = process;
    platform->events = events;
    platform->views = views;
    platform->accessibility = accessibility;
    platform->web = web;
    platform->config = config;
    platform->inspection = inspection;
    platform->panes = panes;
    return platform;
}

}  // namespace velmora::testing
