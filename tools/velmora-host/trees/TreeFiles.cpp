// Reading the two tree files (the formats are in HostTrees.h). Reads are
// strict: every value's type is checked before it is used, unknown keys
// are refused, and each error names its place, as
// `windows[0].contentView.subviews[2].frame`.

#include <fmt/format.h>

#include <cmath>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <set>

#include "Host.h"
#include "support/Text.h"
#include "trees/HostTrees.h"

namespace velmora::host {

namespace {

using nlohmann::json;

// Deep enough for any host; a file nested deeper is refused rather than
// walked on the stack.
constexpr int maximumDepth = 200;

// A JSON value and where it stands in the file.
struct Place {
    const json& value;
    std::string path;

    Place at(const std::string& key) const { return {value.at(key), path.empty() ? key : path + "." + key}; }
    Place at(std::size_t index) const { return {value.at(index), path + "[" + std::to_string(index) + "]"}; }
    bool has(const std::string& key) const { return value.contains(key); }

    [[noreturn]] void fail(const std::string& what) const {
        throw TreeFileError((path.empty() ? std::string("the top level") : path) + ": " + what);
    }
    void expectObject(std::initializer_list<const char*> keys) const {
        if (!value.is_object()) fail("an object expected");
        for (const auto& [key, _] : value.items()) {
            bool known = false;
            for (const char* name : keys) known = known || key == name;
            if (!known) {
                std::string names;
                for (const char* name : keys) names += std::string(names.empty() ? "" : ", ") + name;
                at(key).fail("unknown key (known: " + names + ")");
            }
        }
    }
    std::string text() const {
        if (!value.is_string()) fail("a string expected");
        return value.get<std::string>();
    }
    bool flag() const {
        if (!value.is_boolean()) fail("true or false expected");
        return value.get<bool>();
    }
    // An error code of the accessibility interface: a negative whole number.
    platform::AXError code() const {
        if (!value.is_number_integer() || value.get<std::int64_t>() >= 0 || value.get<std::int64_t>() < INT32_MIN) {
            fail("an error code (a negative whole number) expected");
        }
        return static_cast<platform::AXError>(value.get<std::int64_t>());
    }
    std::optional<std::string> optionalText(const std::string& key) const {
        if (!has(key)) return std::nullopt;
        return at(key).text();
    }
    bool optionalFlag(const std::string& key) const { return has(key) && at(key).flag(); }
};

json parse(const std::string& text) {
    try {
        return json::parse(text);
    } catch (const json::parse_error& error) {
        // "[json.exception.parse_error.101] parse error at line 1, column 2: ..." without its tag.
        std::string what = error.what();
        if (auto end = what.find("] "); what.rfind("[json.exception", 0) == 0 && end != std::string::npos) {
            what.erase(0, end + 2);
        }
        throw TreeFileError("not JSON: " + what);
    }
}

// --- views -----------------------------------------------------------------

platform::Rect frameOf(const Place& place) {
    const auto& value = place.value;
    const char* expected = "four numbers expected: [x, y, width, height], width and height not negative";
    if (!value.is_array() || value.size() != 4) place.fail(expected);
    double numbers[4];
    for (std::size_t i = 0; i < 4; ++i) {
        if (!value[i].is_number() || !std::isfinite(value[i].get<double>())) place.fail(expected);
        numbers[i] = value[i].get<double>();
    }
    if (numbers[2] < 0 || numbers[3] < 0) place.fail(expected);
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

struct ViewReader {
    bool inFrameView = false;
    std::shared_ptr<platform::View> content;
    std::string contentPath;
    std::string rootPath;  // where the nesting started, which a too deep error names

    std::shared_ptr<platform::View> read(const Place& place, int depth) {
        if (depth == 1) rootPath = place.path;
        if (depth > maximumDepth) throw TreeFileError(fmt::format("{}: views nested deeper than {} levels", rootPath, maximumDepth));
        place.expectObject({"class", "frame", "text", "subviews", "contentView"});
        if (!place.has("class")) place.fail("a view needs a \"class\"");
        const auto className = place.at("class").text();
        if (className.empty()) place.at("class").fail("a class name expected, not an empty string");
        const auto frame = place.has("frame") ? frameOf(place.at("frame")) : platform::Rect{};
        auto view = makeHostView(className, frame, place.optionalText("text"));
        if (place.optionalFlag("contentView")) {
            if (!inFrameView) place.at("contentView").fail("only a view below a window's frameView can be marked as its content view");
            if (content) place.at("contentView").fail("a second content view (the first is " + contentPath + ")");
            content = view;
            contentPath = place.path;
        }
        if (place.has("subviews")) {
            const auto list = place.at("subviews");
            if (!list.value.is_array()) list.fail("a list of views expected");
            for (std::size_t i = 0; i < list.value.size(); ++i) view->addSubview(read(list.at(i), depth + 1));
        }
        return view;
    }
};

std::shared_ptr<CapturedWindow> readWindow(const Place& place) {
    place.expectObject({"class", "title", "key", "main", "contentView", "frameView"});
    if (!place.has("class")) place.fail("a window needs a \"class\"");
    const auto className = place.at("class").text();
    if (place.has("contentView") && place.has("frameView")) {
        place.fail("give the contentView or a frameView that holds it, not both");
    }
    ViewReader reader;
    std::shared_ptr<platform::View> frameView;
    if (place.has("frameView")) {
        reader.inFrameView = true;
        frameView = reader.read(place.at("frameView"), 1);
    } else if (place.has("contentView") && !place.at("contentView").value.is_null()) {
        reader.content = reader.read(place.at("contentView"), 1);
    }
    auto window = std::make_shared<CapturedWindow>(className, reader.content);
    window->setFrameView(frameView);
    window->title = place.optionalText("title");
    return window;
}

// --- accessibility ---------------------------------------------------------

constexpr platform::AXError apiDisabled = -25211;

// The application as a host without accessibility rights shows it: every
// read and action fails.
class UntrustedElement : public hosts::MemoryAXElement {
public:
    platform::AXResult copyAttributeValue(const std::string&) const override { return {apiDisabled, std::nullopt}; }
    platform::AXError performAction(const std::string&) override { return apiDisabled; }
};

platform::AXValue valueOf(const Place& place) {
    const auto& value = place.value;
    if (value.is_boolean()) return value.get<bool>();
    if (value.is_number_integer()) {
        if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX)) {
            place.fail("a whole number beyond 64 bits");
        }
        return value.get<std::int64_t>();
    }
    if (value.is_number_float()) return value.get<double>();
    if (value.is_string()) return value.get<std::string>();
    place.fail("a number, true or false, a string or null expected");
}

std::map<std::string, platform::AXError> failsOf(const Place& place) {
    std::map<std::string, platform::AXError> fails;
    const auto name = [](const Place& item) {
        auto text = item.text();
        if (text.empty()) item.fail("an attribute name expected, not an empty string");
        return text;
    };
    if (place.value.is_array()) {
        for (std::size_t i = 0; i < place.value.size(); ++i) fails[name(place.at(i))] = platform::axCannotComplete;
    } else if (place.value.is_object()) {
        for (const auto& [key, _] : place.value.items()) fails[key] = place.at(key).code();
    } else {
        place.fail("a list of attribute names, or an object of names and error codes, expected");
    }
    return fails;
}

// What a press does to a value that reads: it becomes 1 of its own kind.
platform::AXValue selected(const platform::AXValue& value) {
    if (std::holds_alternative<bool>(value)) return true;
    if (std::holds_alternative<double>(value)) return 1.0;
    if (std::holds_alternative<std::string>(value)) return std::string("1");
    return std::int64_t{1};
}

class AxReader {
public:
    explicit AxReader(AxTree& tree) : tree_(tree) {}

    // Elements first, with their references left open, so a reference may
    // point forward or back up the tree.
    platform::AXElementRef read(const Place& place, int depth) {
        if (depth == 1) rootPath_ = place.path;
        if (depth > maximumDepth) {
            throw TreeFileError(fmt::format("{}: elements nested deeper than {} levels", rootPath_, maximumDepth));
        }
        if (place.value.is_object() && place.has("ref")) {
            place.expectObject({"ref"});
            references_.push_back({place.at("ref").text(), place.at("ref").path, nullptr, 0});
            return nullptr;
        }
        place.expectObject({"id", "role", "title", "description", "value", "children", "fails", "press"});
        auto element = std::make_shared<hosts::MemoryAXElement>();
        tree_.elements.push_back(element);

        const auto id = place.optionalText("id");
        if (id) {
            if (id->empty()) place.at("id").fail("an id expected, not an empty string");
            if (!ids_.emplace(*id, element).second) place.at("id").fail("a second element with the id " + support::quoted(*id));
        }
        std::map<std::string, platform::AXError> fails;
        if (place.has("fails")) fails = failsOf(place.at("fails"));
        const std::pair<const char*, const char*> attributes[] = {
            {"role", "AXRole"}, {"title", "AXTitle"}, {"description", "AXDescription"}, {"value", "AXValue"},
            {"children", "AXChildren"}};
        for (const auto& [key, attribute] : attributes) {
            if (place.has(key) && fails.count(attribute)) {
                place.at("fails").fail(std::string(attribute) + " fails, yet \"" + key + "\" gives it a value");
            }
        }
        for (const auto& [attribute, error] : fails) element->setResult(attribute, {error, std::nullopt});
        for (const auto& [key, attribute] : attributes) {
            if (key == std::string("value") || key == std::string("children") || !place.has(key)) continue;
            element->set(attribute, place.at(key).text());
        }
        std::optional<platform::AXValue> value;
        if (place.has("value")) {
            if (place.at("value").value.is_null()) {
                element->setResult("AXValue", {platform::axSuccess, std::nullopt});
            } else {
                value = valueOf(place.at("value"));
                element->set("AXValue", *value);
            }
        }
        platform::AXError pressError = platform::axSuccess;
        if (place.has("press")) {
            const auto press = place.at("press");
            if (press.value.is_string()) {
                if (press.text() != "fails") press.fail("\"fails\" or an error code expected");
                pressError = platform::axCannotComplete;
            } else {
                pressError = press.code();
            }
        }
        const std::string name = place.optionalText("title").value_or("(untitled)") + (id ? " #" + *id : "");
        std::weak_ptr<hosts::MemoryAXElement> weak = element;
        element->onAction([weak, name, value, pressError](const std::string& action) mutable {
            if (action != "AXPress") return platform::axFailure;
            if (pressError != platform::axSuccess) {
                Host::instance().emit(fmt::format("ax: press {} failed, error {}", name, pressError));
                return pressError;
            }
            Host::instance().emit("ax: press " + name);
            auto self = weak.lock();
            if (self && value) {
                value = selected(*value);
                self->set("AXValue", *value);
            }
            return platform::axSuccess;
        });

        if (place.has("children")) {
            const auto list = place.at("children");
            if (!list.value.is_array()) list.fail("a list of elements expected");
            std::vector<platform::AXElementRef> children;
            for (std::size_t i = 0; i < list.value.size(); ++i) {
                const auto before = references_.size();
                children.push_back(read(list.at(i), depth + 1));
                if (references_.size() > before && !children.back()) {
                    references_.back().parent = element;
                    references_.back().slot = i;
                }
            }
            element->setChildren(std::move(children));
        }
        return element;
    }

    // Fills in every reference.
    void resolve() {
        for (const auto& reference : references_) {
            auto target = ids_.find(reference.id);
            if (target == ids_.end()) {
                throw TreeFileError(reference.path + ": no element has the id " + support::quoted(reference.id));
            }
            auto children = std::get<std::vector<platform::AXElementRef>>(*reference.parent->copyAttributeValue("AXChildren").value);
            children[reference.slot] = target->second;
            reference.parent->setChildren(std::move(children));
        }
    }

private:
    struct Reference {
        std::string id, path;
        std::shared_ptr<hosts::MemoryAXElement> parent;
        std::size_t slot;
    };
    AxTree& tree_;
    std::string rootPath_;
    std::map<std::string, std::shared_ptr<hosts::MemoryAXElement>> ids_;
    std::vector<Reference> references_;
};

}  // namespace

ViewTree parseViewTree(const std::string& text) {
    const json document = parse(text);
    const Place root{document, ""};
    root.expectObject({"windows"});
    if (!root.has("windows")) root.fail("a view tree needs \"windows\"");
    const auto list = root.at("windows");
    if (!list.value.is_array()) list.fail("a list of windows expected");
    ViewTree tree;
    std::optional<std::string> keyPath, mainPath;
    for (std::size_t i = 0; i < list.value.size(); ++i) {
        const auto place = list.at(i);
        auto window = readWindow(place);
        for (auto [flag, chosen, path] : {std::tuple{"key", &tree.key, &keyPath}, std::tuple{"main", &tree.main, &mainPath}}) {
            if (!place.optionalFlag(flag)) continue;
            if (*chosen) place.at(flag).fail(std::string("a second ") + flag + " window (the first is " + **path + ")");
            *chosen = window;
            *path = place.path;
        }
        tree.windows.push_back(std::move(window));
    }
    if (!tree.main) {
        for (const auto& window : tree.windows) {
            if (!tree.main && window->className() == "CUIDocumentShellWindow") tree.main = window;
        }
    }
    if (!tree.main) tree.main = tree.key;
    if (!tree.main && !tree.windows.empty()) tree.main = tree.windows.front();
    return tree;
}

void AxTree::release() {
    for (const auto& element : elements) element->erase("AXChildren");
    if (application) application->erase("AXFocusedWindow");
}

AxTree parseAxTree(const std::string& text) {
    const json document = parse(text);
    const Place root{document, ""};
    root.expectObject({"application", "bundleIdentifier", "title", "focusedWindow", "fails"});
    AxTree tree;
    try {
        if (root.has("application")) {
            const auto presence = root.at("application").text();
            if (presence == "present") {
                tree.presence = AxTree::Presence::present;
            } else if (presence == "absent") {
                tree.presence = AxTree::Presence::absent;
            } else if (presence == "untrusted") {
                tree.presence = AxTree::Presence::untrusted;
            } else {
                root.at("application").fail("present, absent or untrusted expected");
            }
        }
        if (auto bundle = root.optionalText("bundleIdentifier")) tree.bundleIdentifier = *bundle;

        tree.application = tree.presence == AxTree::Presence::untrusted ? std::make_shared<UntrustedElement>()
                                                                         : std::make_shared<hosts::MemoryAXElement>();
        auto& app = *tree.application;
        app.set("AXRole", std::string("AXApplication"));
        if (auto title = root.optionalText("title")) app.set("AXTitle", *title);

        AxReader reader(tree);
        platform::AXElementRef window;
        if (root.has("focusedWindow") && !root.at("focusedWindow").value.is_null()) {
            const auto place = root.at("focusedWindow");
            if (place.value.is_object() && place.has("ref")) place.fail("the focused window is an element, not a reference");
            window = reader.read(place, 1);
        }
        reader.resolve();
        if (window) {
            app.set("AXFocusedWindow", window);
            app.setChildren({window});
        } else if (root.has("focusedWindow")) {
            app.setResult("AXFocusedWindow", {platform::axSuccess, std::nullopt});
        }
        if (root.has("fails")) {
            for (const auto& [attribute, error] : failsOf(root.at("fails"))) app.setResult(attribute, {error, std::nullopt});
        }
    } catch (...) {
        tree.release();
        throw;
    }
    return tree;
}

}  // namespace velmora::host
