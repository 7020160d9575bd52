// The simulator's tree files: each way a file can be wrong stops the run
// with exit code 2 and one line that names the place in the file.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace velmora {
namespace {

// One simulator run of a scenario line, in a folder of its own that holds
// `file` as tree.json. Runs are started together and then read, since most
// of a run's time is spent waiting.
class SimulatorRun {
public:
    SimulatorRun(const std::string& line, const std::string& file, int number) {
        const std::filesystem::path library = VELMORA_LIBRARY_PATH;
        const auto host = library.parent_path().parent_path() / "tools" / "velmora-host" / "velmora-host";
        if (!std::filesystem::exists(host)) {
            ADD_FAILURE() << "the simulator is not built: " << host;
            return;
        }
        folder_ = std::filesystem::temp_directory_path() /
                  ("velmora-trees-" + std::to_string(::getpid()) + "-" + std::to_string(number));
        std::filesystem::create_directories(folder_);
        std::ofstream(folder_ / "tree.scenario") << line << "\n";
        if (!file.empty()) std::ofstream(folder_ / "tree.json") << file;
        const std::string command = "cd '" + folder_.string() + "' && '" + host.string() + "' --library '" +
                                    library.string() + "' run tree.scenario 2>&1";
        pipe_ = ::popen(command.c_str(), "r");
    }
    SimulatorRun(const SimulatorRun&) = delete;
    SimulatorRun& operator=(const SimulatorRun&) = delete;
    ~SimulatorRun() { finish(); }

    // The transcript, stdout and stderr together, once the run has ended.
    const std::string& output() {
        finish();
        return output_;
    }
    int code() {
        finish();
        return code_;
    }

private:
    void finish() {
        if (!pipe_) return;
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe_)) > 0;) output_.append(buffer, n);
        const int status = ::pclose(pipe_);
        pipe_ = nullptr;
        code_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        std::error_code ec;
        std::filesystem::remove_all(folder_, ec);
    }

    std::filesystem::path folder_;
    FILE* pipe_ = nullptr;
    std::string output_;
    int code_ = -1;
};

struct BadFile {
    const char* line;
    const char* file;
    const char* message;  // what follows "velmora-host: tree.scenario:1: "
};

TEST(HostTreeFiles, EachBadFileStopsTheRunWithOneLineNamingThePlace) {
    const BadFile cases[] = {
        {"viewtree tree.json", "{\"windows\": [}",
         "viewtree: tree.json: not JSON: parse error at line 1, column 14: syntax error while parsing value - "
         "unexpected '}'; expected '[', '{', or a literal"},
        {"viewtree missing.json", "", "viewtree: cannot read missing.json"},
        {"viewtree '[]'", "", "viewtree: the text given: the top level: an object expected"},
        {"viewtree tree.json",
         R"({"windows": [{"class": "W", "contentView": {"class": "V", "subviews": [{"class": "A"}, {"klass": "B"}]}}]})",
         "viewtree: tree.json: windows[0].contentView.subviews[1].klass: unknown key (known: class, frame, text, "
         "subviews, contentView)"},
        {"viewtree tree.json", R"({"windows": [{"class": "W", "contentView": {"class": "V", "frame": [0, 0, -1, 5]}}]})",
         "viewtree: tree.json: windows[0].contentView.frame: four numbers expected: [x, y, width, height], width and "
         "height not negative"},
        {"viewtree tree.json", R"({"windows": [{"class": "W", "key": true}, {"class": "W", "key": true}]})",
         "viewtree: tree.json: windows[1].key: a second key window (the first is windows[0])"},
        {"viewtree tree.json", R"({"windows": [{"class": "W", "contentView": {"class": "V", "contentView": true}}]})",
         "viewtree: tree.json: windows[0].contentView.contentView: only a view below a window's frameView can be "
         "marked as its content view"},
        {"viewtree tree.json", R"({"windows": [{"class": "W", "contentView": {"class": "V", "text": 3}}]})",
         "viewtree: tree.json: windows[0].contentView.text: a string expected"},
        {"axtree tree.json", R"({"focusedWindow": {"children": [{"role": "AXGroup"}, {"ref": "nowhere"}]}})",
         "axtree: tree.json: focusedWindow.children[1].ref: no element has the id \"nowhere\""},
        {"axtree tree.json", R"({"focusedWindow": {"id": "a", "children": [{"id": "a"}]}})",
         "axtree: tree.json: focusedWindow.children[0].id: a second element with the id \"a\""},
        {"axtree tree.json", R"({"focusedWindow": {"value": 0, "fails": ["AXValue"]}})",
         "axtree: tree.json: focusedWindow.fails: AXValue fails, yet \"value\" gives it a value"},
        {"axtree tree.json", R"({"focusedWindow": {"value": [1]}})",
         "axtree: tree.json: focusedWindow.value: a number, true or false, a string or null expected"},
        {"axtree tree.json", R"({"focusedWindow": {"press": 25204}})",
         "axtree: tree.json: focusedWindow.press: an error code (a negative whole number) expected"},
        {"axtree tree.json", R"({"application": "gone"})",
         "axtree: tree.json: application: present, absent or untrusted expected"},
    };
    std::vector<std::unique_ptr<SimulatorRun>> runs;
    for (const auto& c : cases) runs.push_back(std::make_unique<SimulatorRun>(c.line, c.file, static_cast<int>(runs.size())));
    for (std::size_t i = 0; i < runs.size(); ++i) {
        SCOPED_TRACE(cases[i].line);
        EXPECT_EQ(runs[i]->code(), 2);
        EXPECT_EQ(runs[i]->output(), std::string("velmora-host: tree.scenario:1: ") + cases[i].message + "\n");
    }
}

TEST(HostTreeFiles, NestingTooDeepIsRefusedAtTheTopOfTheTree) {
    std::string views, elements;
    for (int i = 0; i < 300; ++i) {
        views += R"({"class": "V", "subviews": [)";
        elements += R"({"children": [)";
    }
    views += R"({"class": "L"})";
    elements += "{}";
    for (int i = 0; i < 300; ++i) {
        views += "]}";
        elements += "]}";
    }
    SimulatorRun viewRun("viewtree tree.json", R"({"windows": [{"class": "W", "contentView": )" + views + "}]}", 0);
    SimulatorRun elementRun("axtree tree.json", R"({"focusedWindow": )" + elements + "}", 1);
    EXPECT_EQ(viewRun.output(),
              "velmora-host: tree.scenario:1: viewtree: tree.json: windows[0].contentView: views nested deeper than "
              "200 levels\n");
    EXPECT_EQ(elementRun.output(),
              "velmora-host: tree.scenario:1: axtree: tree.json: focusedWindow: elements nested deeper than 200 "
              "levels\n");
}

}  // namespace
}  // namespace velmora
