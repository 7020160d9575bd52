// velmora-host: the host simulator.
//
//   velmora-host [--library PATH] [--stderr-log]            the built-in tour
//   velmora-host [--library PATH] [--stderr-log] run FILE   a scenario
//
// Fault injection, before either: --fault PORT.OP:N fails the Nth call of
// that operation (files.read:3, http.status:1, dispatch.main:40, ...),
// --count-calls prints "calls: files.read 12" for each operation at exit,
// --journal prints "journal: write BEFORE AFTER PATH" for each file the
// library changed (hashes of its bytes), --keep-sandbox leaves the sandbox
// folder in place and names it on stderr.
//
// Runs are the same on every machine: the clock is virtual and the process
// keeps Central European time with its summer time, whatever the machine's
// zone (the library's local days follow it).

#include <dlfcn.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "Host.h"
#include "Scenario.h"
#include "slidelibrary/SlideLibraryFiles.h"

namespace {

// A POSIX rule needs no zone database. It is set before any static object
// is made, so no thread reads the zone while it changes.
__attribute__((constructor(101))) void fixTimeZone() {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
}

// The library built beside this program.
std::string defaultLibrary() {
    std::error_code ec;
    auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
    auto folder = ec ? std::filesystem::current_path() : self.parent_path();
    for (auto candidate : {folder / VELMORA_LIBRARY_FILE, folder / ".." / ".." / "src" / VELMORA_LIBRARY_FILE}) {
        if (std::filesystem::exists(candidate, ec)) return candidate.string();
    }
    return (folder / VELMORA_LIBRARY_FILE).string();
}

int usage() {
    std::cerr << "usage: velmora-host [--library PATH] [--stderr-log] [--fault PORT.OP:N] [--count-calls]\n"
                 "                    [--journal] [--keep-sandbox] [run FILE]\n"
                 "(runs keep the zone CET-1CEST,M3.5.0,M10.5.0/3 whatever the machine's)\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace velmora::host;
    std::string library = defaultLibrary();
    std::string scenario;
    bool stderrLog = false;
    bool countCalls = false, journal = false, keepSandbox = false;
    std::optional<velmora::hosts::FaultTarget> fault;
    for (int i = 1; i < argc; ++i) {
        std::string word = argv[i];
        if (word == "--library" && i + 1 < argc) {
            library = argv[++i];
        } else if (word == "--stderr-log") {
            stderrLog = true;
        } else if (word == "--fault" && i + 1 < argc) {
            fault = velmora::hosts::parseFaultTarget(argv[++i]);
            if (!fault) return usage();
        } else if (word == "--count-calls") {
            countCalls = true;
        } else if (word == "--journal") {
            journal = true;
        } else if (word == "--keep-sandbox") {
            keepSandbox = true;
        } else if (word == "run" && i + 1 < argc) {
            scenario = argv[++i];
        } else {
            return usage();
        }
    }

    auto& host = Host::instance();
    host.setLogToStderr(stderrLog);
    std::shared_ptr<velmora::hosts::FaultPlan> faults;
    if (fault || countCalls || journal) {
        faults = std::make_shared<velmora::hosts::FaultPlan>(fault);
        faults->setJournaling(journal);
    }
    host.setFaultPlan(faults);
    if (auto error = host.load(library)) {
        std::cerr << "velmora-host: cannot load " << library << ": " << *error << "\n";
        return 1;
    }

    int code = 0;
    if (scenario.empty()) {
        code = runTour();
    } else {
        std::ifstream in(scenario, std::ios::binary);
        if (!in) {
            std::cerr << "velmora-host: cannot read " << scenario << "\n";
            return 2;
        }
        std::ostringstream text;
        text << in.rdbuf();
        code = runScenario(text.str(), scenario, std::filesystem::path(scenario).parent_path().string());
    }
    host.settle();
    if (countCalls) {
        for (const auto& line : faults->countLines()) host.emit("calls: " + line);
    }
    if (journal) {
        for (const auto& line : faults->journalLines()) host.emit("journal: " + line);
    }
    // The sandbox is this run's alone; snapshots are written outside it.
    std::error_code ec;
    // A read-only library folder would outlive the sandbox.
    if (libraryReadOnly()) setLibraryReadOnly(false);
    if (keepSandbox) {
        std::cerr << "velmora-host: sandbox kept at " << host.sandboxRoot() << "\n";
    } else if (!host.sandboxRoot().empty()) {
        std::filesystem::remove_all(host.sandboxRoot(), ec);
    }
    // Worker threads and the library stay loaded until exit: nothing is torn down.
    std::fflush(stdout);
    _exit(code);
}
