#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include "fake/FakePlatform.h"
#include "hosts/linux/LinuxAdapters.h"

namespace velmora::hosts::linuxhost {
namespace {

namespace fs = std::filesystem;

struct TempDir {
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "velmora-adapter-XXXXXX").string();
        path = mkdtemp(pattern.data());
    }
    ~TempDir() { fs::remove_all(path); }
    std::string path;
};

TEST(LinuxFiles, MapsAbsolutePathsBelowItsRootAndWritesAtomically) {
    TempDir root;
    LinuxFiles adapter(root.path + "/", "/Users/u");
    platform::FilesPort& files = adapter;  // the port's default arguments
    const std::string folder = "/Library/Application Support/Microsoft/Velmora";
    std::string error;
    EXPECT_FALSE(files.write(folder + "/a.json", "x", true, &error));
    EXPECT_FALSE(error.empty());
    ASSERT_TRUE(files.createDirectories(folder));
    ASSERT_TRUE(files.write(folder + "/a.json", "[1]", true));
    ASSERT_TRUE(files.write(folder + "/a.json", "[2]", true));  // replaces
    ASSERT_TRUE(files.write(folder + "/b.txt", "plain", false));
    EXPECT_TRUE(fs::exists(root.path + folder + "/a.json"));
    EXPECT_EQ(files.read(folder + "/a.json"), "[2]");
    EXPECT_EQ(files.list(folder), (std::vector<std::string>{"a.json", "b.txt"}));  // no temporary left behind
    EXPECT_EQ(files.applicationSupportDirectory(), "/Users/u/Library/Application Support");
    EXPECT_TRUE(files.remove(folder + "/b.txt"));
    EXPECT_FALSE(files.remove(folder + "/b.txt"));
    EXPECT_FALSE(files.read(folder + "/b.txt", &error).has_value());
    EXPECT_FALSE(files.exists(folder + "/b.txt"));

    // A name made of outside text climbs no higher than the root.
    const std::string climbing = folder + "/../../../../../../../../../../escape-1.svg";
    ASSERT_TRUE(files.write(climbing, "<svg/>", true));
    EXPECT_TRUE(fs::exists(root.path + "/escape-1.svg"));
    EXPECT_FALSE(fs::exists(fs::path(root.path).parent_path() / "escape-1.svg"));
    EXPECT_EQ(files.read("/escape-1.svg"), "<svg/>");
}

TEST(LinuxProcess, CapturesOutputAndReportsAToolThatCannotStart) {
    LinuxProcess process;
    auto echoed = process.run("/bin/echo", {"hello", "world"});
    EXPECT_TRUE(echoed.started);
    EXPECT_EQ(echoed.output, "hello world\n");
    auto missing = process.run("/nonexistent/tool", {});
    EXPECT_FALSE(missing.started);
    EXPECT_FALSE(missing.error.empty());
}

std::size_t openDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator("/proc/self/fd")) ++count;
    return count;
}

// Each run closes both ends of its pipe, whether the tool starts or not.
TEST(LinuxProcess, RunsLeaveNoDescriptorOpen) {
    LinuxProcess process;
    process.run("/bin/true", {});
    process.run("/nonexistent/tool", {});
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(process.run("/bin/true", {}).started);
        EXPECT_FALSE(process.run("/nonexistent/tool", {}).started);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(LinuxProcess, HardwareReportFallsBackToTheMachineIdentity) {
    TempDir dir;
    const std::string dmi = dir.path + "/product_uuid", machine = dir.path + "/machine-id";
    EXPECT_EQ(hardwareReportFallback(dmi, machine), "");
    std::ofstream(machine) << "0123456789abcdef0123456789abcdef\n";
    EXPECT_NE(hardwareReportFallback(dmi, machine).find("Hardware UUID: 01234567-89AB-CDEF-0123-456789ABCDEF\n"),
              std::string::npos);
    std::ofstream(dmi) << "4c4c4544-0042-3510-8052-b4c04f4d3232\n";
    EXPECT_NE(hardwareReportFallback(dmi, machine).find("Hardware UUID: 4C4C4544-0042-3510-8052-B4C04F4D3232\n"),
              std::string::npos);
}

class CurlHttpTest : public ::testing::Test {
protected:
    void SetUp() override {
        server.Get("/hello", [](const httplib::Request& request, httplib::Response& response) {
            response.set_header("X-Echo", request.get_param_value("q"));
            response.set_content("hi " + request.get_param_value("q"), "text/plain");
        });
        server.Get("/missing", [](const httplib::Request&, httplib::Response& response) {
            response.status = 404;
            response.set_content("gone", "text/plain");
        });
        port = server.bind_to_any_port("127.0.0.1");
        ASSERT_GT(port, 0);
        thread = std::thread([this] { server.listen_after_bind(); });
        while (!server.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    void TearDown() override {
        server.stop();
        thread.join();
    }
    std::string url(const std::string& path) { return "http://127.0.0.1:" + std::to_string(port) + path; }

    httplib::Server server;
    int port = 0;
    std::thread thread;
};

TEST_F(CurlHttpTest, CompletesOnAWorkerThreadWithStatusBodyAndHeaders) {
    auto dispatch = std::make_shared<StandaloneDispatch>();
    CurlHttp http(dispatch);
    std::promise<std::pair<platform::HttpResponse, std::thread::id>> done;
    http.send({"GET", url("/hello?q=a%20b"), {}, {}, 5},
              [&](platform::HttpResponse response) { done.set_value({response, std::this_thread::get_id()}); });
    auto [response, thread] = done.get_future().get();
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body, "hi a b");
    EXPECT_EQ(response.headers["x-echo"], "a b");
    EXPECT_FALSE(response.transportError);

    auto missing = CurlHttp::perform({"GET", url("/missing"), {}, {}, 5});
    EXPECT_EQ(missing.status, 404);  // a status is an answer, not an error
    EXPECT_EQ(missing.body, "gone");
}

TEST_F(CurlHttpTest, ARefusedConnectionIsATransportError) {
    server.stop();
    auto response = CurlHttp::perform({"GET", url("/hello"), {}, {}, 5});
    EXPECT_EQ(response.status, 0);
    ASSERT_TRUE(response.transportError);
    EXPECT_FALSE(response.transportError->empty());
}

TEST(StandaloneDispatch, RunsMainBlocksInDeadlineOrderOnOneThread) {
    StandaloneDispatch dispatch;
    std::mutex mutex;
    std::vector<int> order;
    std::atomic<bool> allOnMain{true};
    std::promise<void> done;
    auto record = [&](int n) {
        return [&, n] {
            if (!dispatch.isMainThread()) allOnMain = false;
            std::lock_guard lock(mutex);
            order.push_back(n);
            if (order.size() == 4) done.set_value();
        };
    };
    dispatch.mainAsyncAfter(0.05, record(4));
    dispatch.mainAsyncAfter(0.02, record(3));
    dispatch.mainAsync(record(1));
    dispatch.mainAsync(record(2));
    EXPECT_FALSE(dispatch.isMainThread());
    done.get_future().wait();
    EXPECT_TRUE(allOnMain.load());
    std::lock_guard lock(mutex);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

}  // namespace
}  // namespace velmora::hosts::linuxhost
