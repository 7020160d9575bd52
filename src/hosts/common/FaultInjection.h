// Fault injection around a platform: counts the calls of each operation and
// fails exactly the Nth call of one of them.
//
// Provides: FaultPoint, FaultPlan, withFaults().
// The wrapper sits between the library and whatever ports were assembled
// (the host's and the library's own alike), so every scenario can be rerun
// with the fault at call 1, 2, 3 ... until the count passes the last call.
// Each fault writes a marker line to the log port first,
// "fault: files.read #3 /Users/velmora/Library/...", so a transcript shows
// where it struck and what the library did next.
//
// What a fault does, per point:
//   files.read, files.write (plain), files.atomicWrite, files.createDirectories,
//   files.remove: the call fails with an input/output error and touches
//   nothing (its text differs from any the adapter gives, so a log line that
//   carries it is this fault's own); files.exists: answers false.
//   http.transport: the request is not sent; the completion gets a transport
//   error. http.status: the request is sent, its answer becomes a 500 page.
//   http.truncated: the request is sent, its answer keeps the first half of
//   its body. The three count the same calls (http.send).
//   script.run: the script does not run; the outcome is an error dictionary.
//   process.run: the tool does not start.
//   dispatch.main, dispatch.global: the block runs late, never dropped: when
//   its turn comes it is posted again behind the blocks queued by then, and
//   markers "fault: dispatch.main #7 held back" when its turn comes and
//   "fault: dispatch.main #7 runs late" when it runs show it was not dropped.
//
// A plan may also keep a journal of the files the library changed: for each
// write or removal that succeeded, the path and a hash of the file's bytes
// before and after, so a checker can tell the states a file passes through;
// and of the calls that failed by themselves (a read of a missing file, an
// existence test that answers false, an HTTP error or status of 400 and up,
// a script error, a tool that did not start), whose fault changes nothing.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Platform.h"

namespace velmora::hosts {

enum class FaultPoint {
    filesRead,
    filesWrite,
    filesAtomicWrite,
    filesCreateDirectories,
    filesRemove,
    filesExists,
    httpTransport,
    httpStatus,
    httpTruncated,
    scriptRun,
    processRun,
    dispatchMain,
    dispatchGlobal,
};

// "files.read", "http.status", ...
std::string_view faultPointName(FaultPoint point);
std::optional<FaultPoint> faultPointNamed(std::string_view name);
// Every point, in the order above.
std::vector<FaultPoint> allFaultPoints();

// The counters: one per operation; the three http points share "http.send".
enum class CallCounter {
    filesRead,
    filesWrite,
    filesAtomicWrite,
    filesCreateDirectories,
    filesRemove,
    filesExists,
    httpSend,
    scriptRun,
    processRun,
    dispatchMain,
    dispatchGlobal,
    count_
};
std::string_view callCounterName(CallCounter counter);
CallCounter counterOf(FaultPoint point);

// One fault: call `nth` (from 1) of `point` fails.
struct FaultTarget {
    FaultPoint point;
    long nth = 0;
};
// "files.read:3"; nothing when the text is not of that form.
std::optional<FaultTarget> parseFaultTarget(std::string_view text);

// Which call fails, and the counts so far. Made by the host before the
// library's first use and read by it at exit; counting is safe from any thread.
class FaultPlan {
public:
    // Counts only, when `target` is empty.
    explicit FaultPlan(std::optional<FaultTarget> target = std::nullopt) : target_(target) {}

    const std::optional<FaultTarget>& target() const { return target_; }

    // Counts one call of `counter`; gives its number, and whether it is the
    // one that fails (the target's point then says how).
    std::pair<long, bool> call(CallCounter counter);
    long count(CallCounter counter) const;
    // Whether the chosen fault has struck.
    bool struck() const { return struck_.load(); }
    // One line per counter: "files.read 12".
    std::vector<std::string> countLines() const;

    // The journal, off by default; switched on before the library's first use.
    void setJournaling(bool on) { journaling_ = on; }
    bool journaling() const { return journaling_; }
    // `before` and `after` are contentHash() values, empty for no file.
    void noteChange(std::string_view operation, const std::string& path, std::string before, std::string after);
    // A call that failed with no fault, as "failed - - files.read #3".
    void noteFailure(CallCounter counter, long number);
    // One line per change or failure, in order: "write 1a2b... 3c4d... /path"
    // ("-" for no file).
    std::vector<std::string> journalLines() const;

private:
    const std::optional<FaultTarget> target_;
    std::array<std::atomic<long>, static_cast<std::size_t>(CallCounter::count_)> counts_{};
    std::atomic<bool> struck_{false};
    bool journaling_ = false;
    mutable std::mutex journalMutex_;
    std::vector<std::string> journal_;
};

// 64-bit FNV-1a of the bytes, as 16 hex digits: stable across builds, so a
// checker can compute the same value from a file.
std::string contentHash(std::string_view bytes);

// A platform whose script, dispatch, http, files and process ports count
// their calls in `plan` and fail as it says; the other ports are `ports`'s
// own. Markers go to `ports->log`.
std::shared_ptr<platform::Platform> withFaults(const std::shared_ptr<platform::Platform>& ports,
                                               std::shared_ptr<FaultPlan> plan);

}  // namespace velmora::hosts
