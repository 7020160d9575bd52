// The fault-injection wrapper: which call fails, how each port fails, what
// the markers and the journal say, and that a late block still runs.

#include "hosts/common/FaultInjection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "fake/FakePlatform.h"

namespace velmora {
namespace {

using hosts::CallCounter;
using hosts::FaultPlan;
using hosts::FaultPoint;
using hosts::FaultTarget;

class FaultInjectionTest : public ::testing::Test {
protected:
    // The fake's ports wrapped around a plan that fails `target`.
    std::shared_ptr<platform::Platform> wrap(std::optional<FaultTarget> target, bool journaling = false) {
        plan = std::make_shared<FaultPlan>(target);
        plan->setJournaling(journaling);
        return hosts::withFaults(fake.ports(), plan);
    }
    std::vector<std::string> markers() const {
        std::vector<std::string> found;
        for (const auto& line : fake.log->lines()) {
            if (line.rfind("fault: ", 0) == 0) found.push_back(line);
        }
        return found;
    }

    testing::FakePlatform fake;
    std::shared_ptr<FaultPlan> plan;
};

TEST(FaultTargetTest, ParsesPointAndCallAndRefusesTheRest) {
    auto target = hosts::parseFaultTarget("files.atomicWrite:12");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->point, FaultPoint::filesAtomicWrite);
    EXPECT_EQ(target->nth, 12);
    for (const char* bad : {"files.read", "files.read:", "files.read:0", "files.read:-2", "files.read:3x", "files:1",
                            "http.send:1", ":4", "dispatch.main:99999999999999999999"}) {
        EXPECT_FALSE(hosts::parseFaultTarget(bad)) << bad;
    }
    // Every point's name reads back as that point; the http kinds share one counter.
    for (auto point : hosts::allFaultPoints()) {
        EXPECT_EQ(hosts::faultPointNamed(hosts::faultPointName(point)), point);
    }
    EXPECT_EQ(hosts::counterOf(FaultPoint::httpStatus), CallCounter::httpSend);
    EXPECT_EQ(hosts::counterOf(FaultPoint::httpTruncated), CallCounter::httpSend);
}

TEST(FaultTargetTest, ContentHashIsFnv1a64) {
    EXPECT_EQ(hosts::contentHash(""), "cbf29ce484222325");
    EXPECT_EQ(hosts::contentHash("a"), "af63dc4c8601ec8c");
    EXPECT_EQ(hosts::contentHash("foobar"), "85944171f73967e8");
}

TEST_F(FaultInjectionTest, FailsExactlyTheNthCallOfTheChosenOperationAndCountsEveryOne) {
    auto ports = wrap(FaultTarget{FaultPoint::filesRead, 2});
    ASSERT_TRUE(fake.files->createDirectories("/a", nullptr));
    ASSERT_TRUE(ports->files->write("/a/b.txt", "bytes", false));
    std::vector<bool> read;
    std::string error;
    for (int i = 0; i < 4; ++i) read.push_back(ports->files->read("/a/b.txt", &error).has_value());
    EXPECT_EQ(read, (std::vector<bool>{true, false, true, true}));
    EXPECT_TRUE(ports->files->exists("/a/b.txt"));

    EXPECT_EQ(plan->count(CallCounter::filesRead), 4);
    EXPECT_EQ(plan->count(CallCounter::filesWrite), 1);
    EXPECT_EQ(plan->count(CallCounter::filesAtomicWrite), 0);
    EXPECT_EQ(plan->count(CallCounter::filesExists), 1);
    EXPECT_TRUE(plan->struck());
    EXPECT_EQ(markers(), (std::vector<std::string>{"fault: files.read #2 /a/b.txt"}));

    const auto lines = plan->countLines();
    EXPECT_NE(std::find(lines.begin(), lines.end(), "files.read 4"), lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "dispatch.global 0"), lines.end());
}

TEST_F(FaultInjectionTest, FileFaultsTouchNothingAndSayWhy) {
    // A failed write, plain or atomic, leaves the old file whole.
    ASSERT_TRUE(fake.files->createDirectories("/lib", nullptr));
    for (auto [point, atomic] :
         std::vector<std::pair<FaultPoint, bool>>{{FaultPoint::filesWrite, false}, {FaultPoint::filesAtomicWrite, true}}) {
        auto ports = wrap(FaultTarget{point, 2});
        ASSERT_TRUE(ports->files->write("/lib/meta.json", "[1, 2, 3]", atomic));
        std::string error;
        EXPECT_FALSE(ports->files->write("/lib/meta.json", "[1]", atomic, &error));
        EXPECT_EQ(error, "The file “meta.json” couldn’t be saved: Input/output error.");
        EXPECT_EQ(fake.files->read("/lib/meta.json", nullptr), "[1, 2, 3]");
        EXPECT_EQ(fake.files->list("/lib"), std::vector<std::string>{"meta.json"});  // no temporary left
    }

    auto ports = wrap(FaultTarget{FaultPoint::filesRemove, 1});
    std::string error;
    EXPECT_FALSE(ports->files->remove("/lib/meta.json", &error));
    EXPECT_EQ(error, "“meta.json” couldn’t be removed: Input/output error.");
    EXPECT_TRUE(fake.files->exists("/lib/meta.json"));

    ports = wrap(FaultTarget{FaultPoint::filesCreateDirectories, 1});
    EXPECT_FALSE(ports->files->createDirectories("/new/folder", &error));
    EXPECT_EQ(error, "The folder “folder” couldn’t be created: Input/output error.");
    EXPECT_FALSE(fake.files->exists("/new"));

    // An existence test that fails reads as absent.
    ports = wrap(FaultTarget{FaultPoint::filesExists, 1});
    EXPECT_FALSE(ports->files->exists("/lib/meta.json"));
    EXPECT_TRUE(ports->files->exists("/lib/meta.json"));
}

TEST_F(FaultInjectionTest, JournalKeepsEachChangeWithItsStatesAndTheCallsThatFailedByThemselves) {
    auto ports = wrap(FaultTarget{FaultPoint::filesWrite, 2}, true);
    ASSERT_TRUE(ports->files->write("/x.json", "old", false));
    EXPECT_FALSE(ports->files->write("/x.json", "lost", false));  // the fault: no entry
    ASSERT_TRUE(ports->files->write("/x.json", "new", true));
    EXPECT_FALSE(ports->files->read("/missing.txt", nullptr));
    EXPECT_FALSE(ports->files->exists("/missing.txt"));
    ASSERT_TRUE(ports->files->remove("/x.json", nullptr));

    const auto old = hosts::contentHash("old"), made = hosts::contentHash("new");
    EXPECT_EQ(plan->journalLines(), (std::vector<std::string>{
                                        "write - " + old + " /x.json",
                                        "atomicWrite " + old + " " + made + " /x.json",
                                        "failed - - files.read #1",
                                        "failed - - files.exists #1",
                                        "remove " + made + " - /x.json",
                                    }));
    // Without journaling nothing is kept.
    ports = wrap(std::nullopt);
    ASSERT_TRUE(ports->files->write("/y.json", "y", false));
    EXPECT_TRUE(plan->journalLines().empty());
}

TEST_F(FaultInjectionTest, HttpKindsShareOneCountAndEachFailsItsWay) {
    platform::HttpResponse page;
    page.status = 200;
    page.body = "0123456789";
    fake.http->route("https://cdn.test/a", page);

    auto fetch = [&](platform::Platform& ports) {
        std::optional<platform::HttpResponse> got;
        ports.http->send({"GET", "https://cdn.test/a", {}, {}, 60}, [&](platform::HttpResponse response) { got = response; });
        EXPECT_FALSE(got) << "the completion ran on the caller's stack";
        fake.dispatch->runUntilIdle();
        return got.value_or(platform::HttpResponse{});
    };

    auto ports = wrap(FaultTarget{FaultPoint::httpTransport, 2});
    EXPECT_EQ(fetch(*ports).body, "0123456789");
    auto lost = fetch(*ports);
    EXPECT_EQ(lost.transportError, "The network connection was lost.");
    EXPECT_EQ(lost.status, 0);
    EXPECT_EQ(fake.http->requests().size(), 1u);  // the faulted request never left
    EXPECT_EQ(plan->count(CallCounter::httpSend), 2);

    ports = wrap(FaultTarget{FaultPoint::httpStatus, 1});
    auto failed = fetch(*ports);
    EXPECT_EQ(failed.status, 500);
    EXPECT_NE(failed.body.find("500 Internal Server Error"), std::string::npos);
    EXPECT_EQ(fake.http->requests().size(), 2u);

    ports = wrap(FaultTarget{FaultPoint::httpTruncated, 1});
    auto cut = fetch(*ports);
    EXPECT_EQ(cut.status, 200);
    EXPECT_EQ(cut.body, "01234");
    EXPECT_EQ(markers().back(), "fault: http.truncated #1 GET https://cdn.test/a");
}

TEST_F(FaultInjectionTest, ScriptAndProcessFailWithoutRunning) {
    fake.script->answer("GetThing", "yes");
    auto ports = wrap(FaultTarget{FaultPoint::scriptRun, 1});
    const std::string script = "tell application \"Microsoft PowerPoint\"\n    run VB macro macro name \"GetThing\"\nend tell";
    auto outcome = ports->script->run(script);
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->number, -1712);
    EXPECT_TRUE(fake.script->scripts().empty());
    EXPECT_EQ(ports->script->run(script).stringValue, "yes");
    // The marker stays on one line.
    EXPECT_EQ(markers().back().find('\n'), std::string::npos);

    fake.process->set("/usr/sbin/tool", {true, "", "out", 0});
    ports = wrap(FaultTarget{FaultPoint::processRun, 1});
    auto result = ports->process->run("/usr/sbin/tool", {"-x"});
    EXPECT_FALSE(result.started);
    EXPECT_NE(result.error.find("Resource temporarily unavailable"), std::string::npos);
    EXPECT_EQ(fake.process->runs("/usr/sbin/tool"), 0);
    EXPECT_EQ(markers().back(), "fault: process.run #1 /usr/sbin/tool -x");
}

TEST_F(FaultInjectionTest, ALateBlockRunsBehindTheOthersAndIsNeverDropped) {
    auto ports = wrap(FaultTarget{FaultPoint::dispatchMain, 2});
    std::vector<int> order;
    for (int i = 1; i <= 3; ++i) ports->dispatch->mainAsync([&order, i] { order.push_back(i); });
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(order, (std::vector<int>{1, 3, 2}));
    EXPECT_EQ(markers(), (std::vector<std::string>{"fault: dispatch.main #2", "fault: dispatch.main #2 held back",
                                                   "fault: dispatch.main #2 runs late"}));

    // A timed block keeps its deadline, then waits behind what is due with it.
    order.clear();
    ports = wrap(FaultTarget{FaultPoint::dispatchMain, 1});
    ports->dispatch->mainAsyncAfter(0.5, [&] { order.push_back(1); });
    ports->dispatch->mainAsyncAfter(0.5, [&] { order.push_back(2); });
    fake.dispatch->advance(0.4);
    EXPECT_TRUE(order.empty());
    fake.dispatch->advance(0.1);
    EXPECT_EQ(order, (std::vector<int>{2, 1}));

    order.clear();
    ports = wrap(FaultTarget{FaultPoint::dispatchGlobal, 1});
    ports->dispatch->globalAsync(platform::QualityOfService::utility, [&] { order.push_back(1); });
    ports->dispatch->globalAsync(platform::QualityOfService::utility, [&] { order.push_back(2); });
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(order, (std::vector<int>{2, 1}));
    EXPECT_EQ(plan->count(CallCounter::dispatchGlobal), 2);
}

TEST_F(FaultInjectionTest, OtherPortsPassThroughAndAPlanWithoutTargetOnlyCounts) {
    auto ports = wrap(std::nullopt);
    EXPECT_EQ(ports->views, fake.ports()->views);
    EXPECT_EQ(ports->log, fake.ports()->log);
    EXPECT_EQ(ports->config, fake.ports()->config);
    EXPECT_EQ(ports->dispatch->now(), fake.dispatch->now());
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(ports->files->read("/none", nullptr));
    EXPECT_EQ(plan->count(CallCounter::filesRead), 5);
    EXPECT_FALSE(plan->struck());
    EXPECT_TRUE(markers().empty());
}

}  // namespace
}  // namespace velmora
