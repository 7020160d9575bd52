#include "hosts/common/FaultInjection.h"

#include <charconv>
#include <cstdint>
#include <filesystem>

#include "support/Text.h"

namespace velmora::hosts {

namespace {

struct PointInfo {
    FaultPoint point;
    std::string_view name;
    CallCounter counter;
};

constexpr PointInfo points[] = {
    {FaultPoint::filesRead, "files.read", CallCounter::filesRead},
    {FaultPoint::filesWrite, "files.write", CallCounter::filesWrite},
    {FaultPoint::filesAtomicWrite, "files.atomicWrite", CallCounter::filesAtomicWrite},
    {FaultPoint::filesCreateDirectories, "files.createDirectories", CallCounter::filesCreateDirectories},
    {FaultPoint::filesRemove, "files.remove", CallCounter::filesRemove},
    {FaultPoint::filesExists, "files.exists", CallCounter::filesExists},
    {FaultPoint::httpTransport, "http.transport", CallCounter::httpSend},
    {FaultPoint::httpStatus, "http.status", CallCounter::httpSend},
    {FaultPoint::httpTruncated, "http.truncated", CallCounter::httpSend},
    {FaultPoint::scriptRun, "script.run", CallCounter::scriptRun},
    {FaultPoint::processRun, "process.run", CallCounter::processRun},
    {FaultPoint::dispatchMain, "dispatch.main", CallCounter::dispatchMain},
    {FaultPoint::dispatchGlobal, "dispatch.global", CallCounter::dispatchGlobal},
};

constexpr std::string_view counterNames[] = {
    "files.read",  "files.write", "files.atomicWrite", "files.createDirectories", "files.remove",    "files.exists",
    "http.send",   "script.run",  "process.run",       "dispatch.main",           "dispatch.global",
};
static_assert(std::size(counterNames) == static_cast<std::size_t>(CallCounter::count_));

const PointInfo& info(FaultPoint point) { return points[static_cast<std::size_t>(point)]; }

std::string fileName(const std::string& path) { return std::filesystem::path(path).filename().string(); }

// Shared by the wrappers: the plan and where markers go.
struct Injector {
    std::shared_ptr<FaultPlan> plan;
    std::shared_ptr<platform::LogPort> log;

    struct Call {
        long number;
        bool fails;
    };
    // Counts the call; when it is the one that fails, writes the marker.
    Call count(CallCounter counter, std::string_view detail) {
        auto [number, fails] = plan->call(counter);
        if (fails) mark(plan->target()->point, number, detail);
        return {number, fails};
    }
    // A call that failed by itself, with no fault: the journal keeps it.
    void failed(CallCounter counter, long number) {
        if (plan->journaling()) plan->noteFailure(counter, number);
    }
    void mark(FaultPoint point, long number, std::string_view detail, std::string_view suffix = {}) {
        std::string line = "fault: " + std::string(faultPointName(point)) + " #" + std::to_string(number);
        if (!detail.empty()) line += " " + support::oneLine(detail);  // a marker stays one line
        line += suffix;
        log->nslog(line);
    }
};

void setError(std::string* error, std::string text) {
    if (error) *error = std::move(text);
}

class FaultFiles : public platform::FilesPort {
public:
    FaultFiles(std::shared_ptr<platform::FilesPort> inner, std::shared_ptr<Injector> injector)
        : inner_(std::move(inner)), injector_(std::move(injector)) {}

    std::string homeDirectory() const override { return inner_->homeDirectory(); }
    std::string applicationSupportDirectory() const override { return inner_->applicationSupportDirectory(); }
    bool isDirectory(const std::string& path) const override { return inner_->isDirectory(path); }
    std::vector<std::string> list(const std::string& path) const override { return inner_->list(path); }

    // A failed existence test reads as absent: the stat did not succeed.
    bool exists(const std::string& path) const override {
        const auto call = injector_->count(CallCounter::filesExists, path);
        if (call.fails) return false;
        const bool found = inner_->exists(path);
        if (!found) injector_->failed(CallCounter::filesExists, call.number);
        return found;
    }
    std::optional<std::string> read(const std::string& path, std::string* error) const override {
        const auto call = injector_->count(CallCounter::filesRead, path);
        if (call.fails) {
            setError(error, "The file “" + fileName(path) + "” couldn’t be read: Input/output error.");
            return std::nullopt;
        }
        auto bytes = inner_->read(path, error);
        if (!bytes) injector_->failed(CallCounter::filesRead, call.number);
        return bytes;
    }
    // The write fails before a byte lands, so the old file stays whole.
    bool write(const std::string& path, const std::string& data, bool atomic, std::string* error) override {
        const auto counter = atomic ? CallCounter::filesAtomicWrite : CallCounter::filesWrite;
        const auto call = injector_->count(counter, path);
        if (call.fails) {
            setError(error, "The file “" + fileName(path) + "” couldn’t be saved: Input/output error.");
            return false;
        }
        const std::string before = journalState(path);
        const bool written = inner_->write(path, data, atomic, error);
        if (!written) {
            injector_->failed(counter, call.number);
        } else if (injector_->plan->journaling()) {
            injector_->plan->noteChange(atomic ? "atomicWrite" : "write", path, before, contentHash(data));
        }
        return written;
    }
    bool createDirectories(const std::string& path, std::string* error) override {
        const auto call = injector_->count(CallCounter::filesCreateDirectories, path);
        if (call.fails) {
            setError(error, "The folder “" + fileName(path) + "” couldn’t be created: Input/output error.");
            return false;
        }
        const bool made = inner_->createDirectories(path, error);
        if (!made) injector_->failed(CallCounter::filesCreateDirectories, call.number);
        return made;
    }
    bool remove(const std::string& path, std::string* error) override {
        const auto call = injector_->count(CallCounter::filesRemove, path);
        if (call.fails) {
            setError(error, "“" + fileName(path) + "” couldn’t be removed: Input/output error.");
            return false;
        }
        const std::string before = journalState(path);
        const bool removed = inner_->remove(path, error);
        if (!removed) {
            injector_->failed(CallCounter::filesRemove, call.number);
        } else if (injector_->plan->journaling()) {
            injector_->plan->noteChange("remove", path, before, {});
        }
        return removed;
    }

private:
    // The file's hash before a change, when journaling; a folder or no file is empty.
    std::string journalState(const std::string& path) const {
        if (!injector_->plan->journaling() || inner_->isDirectory(path)) return {};
        auto bytes = inner_->read(path, nullptr);
        return bytes ? contentHash(*bytes) : std::string{};
    }

    std::shared_ptr<platform::FilesPort> inner_;
    std::shared_ptr<Injector> injector_;
};

class FaultHttp : public platform::HttpPort {
public:
    FaultHttp(std::shared_ptr<platform::HttpPort> inner, std::shared_ptr<platform::DispatchPort> dispatch,
              std::shared_ptr<Injector> injector)
        : inner_(std::move(inner)), dispatch_(std::move(dispatch)), injector_(std::move(injector)) {}

    void send(platform::HttpRequest request, std::function<void(platform::HttpResponse)> completion) override {
        const auto call = injector_->count(CallCounter::httpSend, request.method + " " + request.url);
        const auto point = call.fails ? std::optional(injector_->plan->target()->point) : std::nullopt;
        if (point == FaultPoint::httpTransport) {
            // Never on the caller's stack, as the port promises.
            dispatch_->globalAsync(platform::QualityOfService::utility, [completion = std::move(completion)] {
                platform::HttpResponse response;
                response.transportError = "The network connection was lost.";
                if (completion) completion(std::move(response));
            });
            return;
        }
        inner_->send(std::move(request), [point, number = call.number, injector = injector_,
                                          completion = std::move(completion)](platform::HttpResponse response) {
            // A transfer that failed by itself stays as it failed.
            if (response.transportError || response.status >= 400) {
                injector->failed(CallCounter::httpSend, number);
            } else if (point == FaultPoint::httpStatus) {
                response.status = 500;
                response.headers = {{"content-type", "text/html"}};
                response.body = "<html><body><h1>500 Internal Server Error</h1></body></html>";
            } else if (point == FaultPoint::httpTruncated) {
                response.body.resize(response.body.size() / 2);
            }
            if (completion) completion(std::move(response));
        });
    }

private:
    std::shared_ptr<platform::HttpPort> inner_;
    std::shared_ptr<platform::DispatchPort> dispatch_;
    std::shared_ptr<Injector> injector_;
};

class FaultScript : public platform::ScriptPort {
public:
    FaultScript(std::shared_ptr<platform::ScriptPort> inner, std::shared_ptr<Injector> injector)
        : inner_(std::move(inner)), injector_(std::move(injector)) {}
    platform::ScriptOutcome run(const std::string& source) override {
        const auto call = injector_->count(CallCounter::scriptRun, source);
        if (call.fails) {
            return {true, platform::ScriptError{"Microsoft PowerPoint got an error: AppleEvent timed out.", -1712},
                    std::nullopt};
        }
        auto outcome = inner_->run(source);
        if (!outcome.created || outcome.error) injector_->failed(CallCounter::scriptRun, call.number);
        return outcome;
    }

private:
    std::shared_ptr<platform::ScriptPort> inner_;
    std::shared_ptr<Injector> injector_;
};

class FaultProcess : public platform::ProcessPort {
public:
    FaultProcess(std::shared_ptr<platform::ProcessPort> inner, std::shared_ptr<Injector> injector)
        : inner_(std::move(inner)), injector_(std::move(injector)) {}
    platform::ProcessResult run(const std::string& path, const std::vector<std::string>& arguments) override {
        std::string command = path;
        for (const auto& argument : arguments) command += " " + argument;
        const auto call = injector_->count(CallCounter::processRun, command);
        if (call.fails) {
            platform::ProcessResult result;
            result.error = "Error Domain=NSPOSIXErrorDomain Code=11 \"Resource temporarily unavailable\"";
            return result;
        }
        auto result = inner_->run(path, arguments);
        if (!result.started) injector_->failed(CallCounter::processRun, call.number);
        return result;
    }

private:
    std::shared_ptr<platform::ProcessPort> inner_;
    std::shared_ptr<Injector> injector_;
};

class FaultDispatch : public platform::DispatchPort {
public:
    FaultDispatch(std::shared_ptr<platform::DispatchPort> inner, std::shared_ptr<Injector> injector)
        : inner_(std::move(inner)), injector_(std::move(injector)) {}

    void mainAsync(platform::Task task) override {
        inner_->mainAsync(maybeLate(CallCounter::dispatchMain, std::move(task), {}));
    }
    void mainAsyncAfter(double seconds, platform::Task task) override {
        inner_->mainAsyncAfter(seconds, maybeLate(CallCounter::dispatchMain, std::move(task), {}));
    }
    void globalAsync(platform::QualityOfService qos, platform::Task task) override {
        inner_->globalAsync(qos, maybeLate(CallCounter::dispatchGlobal, std::move(task), qos));
    }
    bool isMainThread() const override { return inner_->isMainThread(); }
    double now() const override { return inner_->now(); }

private:
    // The block that fails is posted again when its turn comes, on the same
    // queue, so it runs behind every block queued by then.
    platform::Task maybeLate(CallCounter counter, platform::Task task, std::optional<platform::QualityOfService> qos) {
        const auto call = injector_->count(counter, {});
        if (!call.fails) return task;
        return [inner = inner_, injector = injector_, number = call.number, qos, task = std::move(task)] {
            injector->mark(injector->plan->target()->point, number, {}, " held back");
            auto late = [injector, number, task] {
                injector->mark(injector->plan->target()->point, number, {}, " runs late");
                task();
            };
            if (qos) {
                inner->globalAsync(*qos, std::move(late));
            } else {
                inner->mainAsync(std::move(late));
            }
        };
    }

    std::shared_ptr<platform::DispatchPort> inner_;
    std::shared_ptr<Injector> injector_;
};

}  // namespace

std::string_view faultPointName(FaultPoint point) { return info(point).name; }

std::optional<FaultPoint> faultPointNamed(std::string_view name) {
    for (const auto& entry : points) {
        if (entry.name == name) return entry.point;
    }
    return std::nullopt;
}

std::vector<FaultPoint> allFaultPoints() {
    std::vector<FaultPoint> all;
    for (const auto& entry : points) all.push_back(entry.point);
    return all;
}

std::string_view callCounterName(CallCounter counter) { return counterNames[static_cast<std::size_t>(counter)]; }

CallCounter counterOf(FaultPoint point) { return info(point).counter; }

std::optional<FaultTarget> parseFaultTarget(std::string_view text) {
    const auto colon = text.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    auto point = faultPointNamed(text.substr(0, colon));
    const auto number = text.substr(colon + 1);
    long nth = 0;
    auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), nth);
    if (!point || number.empty() || ec != std::errc{} || end != number.data() + number.size() || nth < 1) {
        return std::nullopt;
    }
    return FaultTarget{*point, nth};
}

std::pair<long, bool> FaultPlan::call(CallCounter counter) {
    const long number = counts_[static_cast<std::size_t>(counter)].fetch_add(1) + 1;
    const bool fails = target_ && counterOf(target_->point) == counter && number == target_->nth;
    if (fails) struck_ = true;
    return {number, fails};
}

long FaultPlan::count(CallCounter counter) const { return counts_[static_cast<std::size_t>(counter)].load(); }

std::vector<std::string> FaultPlan::countLines() const {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < counts_.size(); ++i) {
        lines.push_back(std::string(counterNames[i]) + " " + std::to_string(counts_[i].load()));
    }
    return lines;
}

void FaultPlan::noteChange(std::string_view operation, const std::string& path, std::string before,
                           std::string after) {
    std::string line(operation);
    line += " " + (before.empty() ? "-" : before) + " " + (after.empty() ? "-" : after) + " " + path;
    std::lock_guard lock(journalMutex_);
    journal_.push_back(std::move(line));
}

void FaultPlan::noteFailure(CallCounter counter, long number) {
    std::string line = "failed - - " + std::string(callCounterName(counter)) + " #" + std::to_string(number);
    std::lock_guard lock(journalMutex_);
    journal_.push_back(std::move(line));
}

std::vector<std::string> FaultPlan::journalLines() const {
    std::lock_guard lock(journalMutex_);
    return journal_;
}

std::string contentHash(std::string_view bytes) {
    std::uint64_t hash = 14695981039346656037ull;
    for (unsigned char c : bytes) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    static constexpr char digits[] = "0123456789abcdef";
    std::string text(16, '0');
    for (int i = 15; i >= 0; --i, hash >>= 4) text[static_cast<std::size_t>(i)] = digits[hash & 15];
    return text;
}

std::shared_ptr<platform::Platform> withFaults(const std::shared_ptr<platform::Platform>& ports,
                                               std::shared_ptr<FaultPlan> plan) {
    auto injector = std::make_shared<Injector>(Injector{std::move(plan), ports->log});
    auto wrapped = std::make_shared<platform::Platform>(*ports);
    wrapped->files = std::make_shared<FaultFiles>(ports->files, injector);
    // Completions and late blocks go straight to the queues beneath: they
    // are the wrapper's own posts, not the library's.
    wrapped->http = std::make_shared<FaultHttp>(ports->http, ports->dispatch, injector);
    wrapped->script = std::make_shared<FaultScript>(ports->script, injector);
    wrapped->process = std::make_shared<FaultProcess>(ports->process, injector);
    wrapped->dispatch = std::make_shared<FaultDispatch>(ports->dispatch, injector);
    return wrapped;
}

}  // namespace velmora::hosts
