#include "FuzzPlatform.h"

#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "assistant/AssistantViewModel.h"
#include "keyboard/ModifierKeyState.h"
#include "ui/HostingView.h"
#include "ui/HtmlRenderer.h"

namespace velmora::fuzz {

namespace {

// Local days and dates read the same on every machine: Central European
// time with its summer time as a POSIX rule, as the simulator keeps it.
__attribute__((constructor)) void fixTimeZone() {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
}

// Each input gets a files root of its own, made and removed again; in
// memory that costs a fraction of what a disk's folder operations do.
__attribute__((constructor)) void keepFilesInMemory() {
    std::error_code ec;
    if (!getenv("TMPDIR") && std::filesystem::is_directory("/dev/shm", ec) && access("/dev/shm", W_OK) == 0) {
        setenv("TMPDIR", "/dev/shm", 1);
    }
}

// "VL: WHERE failed" or "VL: WHERE failed: WHAT", where WHERE is a guard's
// name: letters and blanks only, so no line with a text from outside in it
// can pass for one.
bool reportsAnEscape(std::string_view line) {
    constexpr std::string_view prefix = "VL: ", failed = " failed";
    if (line.substr(0, prefix.size()) != prefix) return false;
    const auto at = line.find(failed, prefix.size());
    if (at == std::string_view::npos || at == prefix.size()) return false;
    for (char c : line.substr(prefix.size(), at - prefix.size())) {
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == ' ')) return false;
    }
    const auto rest = line.substr(at + failed.size());
    return rest.empty() || rest.substr(0, 2) == ": ";
}

}  // namespace

std::pair<std::string, std::string> splitAtNul(std::string_view text) {
    const auto nul = text.find('\0');
    if (nul == std::string_view::npos) return {std::string(text), std::string()};
    return {std::string(text.substr(0, nul)), std::string(text.substr(nul + 1))};
}

void look(const std::shared_ptr<platform::View>& view, double width, double height) {
    auto hosting = std::dynamic_pointer_cast<ui::HostingView>(view);
    if (!hosting) return;
    hosting->setFrame({0, 0, width, height});
    hosting->layout();
    look(hosting->tree());
}

void look(const ui::Node& tree) {
    if (ui::renderNode(tree).empty()) fail("a node tree drew as nothing");
}

void fail(const std::string& message) {
    std::fprintf(stderr, "fuzz finding: %s\n", message.c_str());
    std::fflush(stderr);
    abort();
}

Session::Session() {
    fake.install();
    // A pane observes process-wide values and its observer goes only when the
    // value next changes; writing each value back as it is lets the last
    // input's observers go now, so each input frees what the one before it made.
    auto rewrite = [](auto& published) { published.set(published.get()); };
    rewrite(AssistantViewModel::shared().recommendations);
    rewrite(AssistantViewModel::shared().missed);
    rewrite(globalModifierKeyState().modifierFlags);
}

Session::~Session() {
    settle();
    for (const auto& line : fake.log->lines()) {
        if (reportsAnEscape(line)) fail("an exception reached a guard: " + line);
    }
    // The ports go with the input, and with them what is still queued on
    // them: an input that frees what it made keeps libFuzzer's costly leak
    // search for the inputs that do not.
    // Its ports outlive it in the installed aggregate; at exit it removes its folder.
    static testing::FakePlatform idle;
    idle.install();
}

void Session::write(const std::string& path, std::string_view bytes) {
    const auto slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0) fake.files->createDirectories(path.substr(0, slash), nullptr);
    std::string error;
    if (!fake.files->write(path, std::string(bytes), false, &error)) fail("cannot write " + path + ": " + error);
}

}  // namespace velmora::fuzz
