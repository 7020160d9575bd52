// velmora-cloud: the service and the CDN on loopback, run alone.
//
//   velmora-cloud [--port N] [--data DIR] [--templates N] [--no-generate]
//                 [--quota-limit N] [--fault ROUTE KIND [VALUE] [N]]... [--quiet]
//
// Prints its base URLs, then one line per request, until SIGINT or SIGTERM.

#include <fmt/format.h>
#include <signal.h>

#include <charconv>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "Cloud.h"

namespace {

int usage(const std::string& problem) {
    std::cerr << "velmora-cloud: " << problem << "\n"
              << "usage: velmora-cloud [--port N] [--data DIR] [--templates N] [--no-generate]\n"
              << "                     [--quota-limit N] [--fault ROUTE KIND [VALUE] [N]]... [--quiet]\n"
              << "a fault: " << velmora::cloud::faultUsage << "\n";
    return 2;
}

std::optional<long> number(const std::string& text, long low, long high) {
    long value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value < low || value > high) return std::nullopt;
    return value;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace velmora::cloud;
    CloudOptions options;
    std::vector<Fault> faults;
    bool quiet = false;
    const std::vector<std::string> words(argv + 1, argv + argc);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool hasValue = i + 1 < words.size();
        if (word == "--port" && hasValue) {
            auto port = number(words[++i], 1, 65535);
            if (!port) return usage("a port is 1 to 65535");
            options.port = static_cast<int>(*port);
        } else if (word == "--data" && hasValue) {
            options.dataDirectory = words[++i];
        } else if (word == "--templates" && hasValue) {
            auto count = number(words[++i], 0, 100'000);
            if (!count) return usage("a template count is 0 to 100000");
            options.templates = static_cast<std::size_t>(*count);
        } else if (word == "--quota-limit" && hasValue) {
            auto limit = number(words[++i], 0, 1'000'000);
            if (!limit) return usage("a quota limit is 0 to 1000000");
            options.quotaLimit = static_cast<int>(*limit);
        } else if (word == "--no-generate") {
            options.generate = false;
        } else if (word == "--quiet") {
            quiet = true;
        } else if (word == "--fault") {
            std::vector<std::string> fault;
            while (i + 1 < words.size() && words[i + 1].rfind("--", 0) != 0) fault.push_back(words[++i]);
            try {
                faults.push_back(parseFault(fault));
            } catch (const std::invalid_argument& error) {
                return usage(error.what());
            }
        } else {
            return usage("unknown or incomplete argument '" + word + "'");
        }
    }
    if (!options.generate && options.dataDirectory.empty()) return usage("--no-generate needs --data");

    // Signals go to sigwait below, not to whichever thread is running.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    if (!quiet) {
        options.onRequest = [](const RecordedRequest& request) {
            const std::string line = "request: " + describe(request) + "\n";
            std::fwrite(line.data(), 1, line.size(), stdout);
            std::fflush(stdout);
        };
    }
    try {
        Cloud cloud(options);
        std::printf("service %s\ncdn %s\ndata %s (%zu templates%s)\n", cloud.serviceBaseURL().c_str(),
                    cloud.cdnBaseURL().c_str(), cloud.dataDirectory().c_str(), cloud.templateCount(),
                    options.generate ? "" : ", as found");
        for (auto& fault : faults) {
            // A quota is set at once rather than kept, so it is told here.
            if (fault.kind == FaultKind::quota) std::printf("%s for every licence key\n", fault.describe().c_str());
            cloud.addFault(std::move(fault));
        }
        // No request has an empty key, so it reads what a new key starts with.
        const Quota fresh = cloud.quota("");
        std::printf("icon downloads %d of %d a month per licence key\n", fresh.remaining, fresh.limit);
        for (const auto& fault : cloud.faults()) {
            std::printf("fault %s %s %s\n", fault.route.c_str(), fault.describe().c_str(),
                        fault.times ? fmt::format("x{}", *fault.times).c_str() : "always");
        }
        std::fflush(stdout);
        int signal = 0;
        sigwait(&stopSignals, &signal);
        std::printf("stopping on signal %d\n", signal);
        std::fflush(stdout);
    } catch (const std::exception& error) {
        std::cerr << "velmora-cloud: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
