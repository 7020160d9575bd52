// The scenario commands that build the macro project's document: its theme,
// its shapes, the selection and the current slide, `show document`, and
// `macro`, which sends a macro's script as the library would.

#include <fmt/format.h>

#include <charconv>
#include <cmath>

#include "Host.h"
#include "Scenario.h"
#include "platform/Platform.h"
#include "document/Document.h"

namespace velmora::host {

namespace {

constexpr const char* shapeKeys = "type, left, top, width, height, rotation, text, fill, line, font";
constexpr int mostSlides = 999;

std::optional<double> finiteNumber(const std::string& text) {
    double value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

// Shortest exact form; never "-0".
std::string decimal(double value) { return fmt::format("{}", value == 0 ? 0.0 : value); }

struct ShapeEdit {
    std::string name;
    std::vector<std::pair<std::string, std::string>> pairs;

    [[noreturn]] void fail(const std::string& what) const { throw ScenarioError("shape " + name + ": " + what); }

    std::optional<ShapeKind> kind() const {
        std::optional<ShapeKind> found;
        for (const auto& [key, value] : pairs) {
            if (key != "type") continue;
            found = kindNamed(value);
            // A table's grid comes only with the InsertTable macro.
            if (!found || *found == ShapeKind::table || *found == ShapeKind::picture) fail("type is rect, ellipse, textbox or line, not '" + value + "'");
        }
        return found;
    }

    double number(const std::string& key, const std::string& value, bool sized) const {
        auto parsed = finiteNumber(value);
        if (!parsed || (sized && *parsed < 0)) {
            fail(key + " takes a number" + (sized ? " of zero or more" : "") + ", not '" + value + "'");
        }
        return *parsed;
    }

    std::optional<Rgb> color(const std::string& key, const std::string& value, bool noneAllowed) const {
        if (noneAllowed && value == "none") return std::nullopt;
        auto parsed = value.starts_with('#') ? parseHexColor(value) : std::nullopt;
        if (!parsed) fail(key + " takes #RRGGBB" + (noneAllowed ? " or none" : "") + ", not '" + value + "'");
        return parsed;
    }

    void apply(Shape& shape) const {
        for (const auto& [key, value] : pairs) {
            if (key == "type") {
                shape.kind = *kindNamed(value);
                shape.table.reset();
            } else if (key == "left") {
                shape.left = number(key, value, false);
            } else if (key == "top") {
                shape.top = number(key, value, false);
            } else if (key == "width") {
                shape.width = number(key, value, true);
            } else if (key == "height") {
                shape.height = number(key, value, true);
            } else if (key == "rotation") {
                // The host keeps rotation within one turn.
                double turned = std::fmod(number(key, value, false), 360.0);
                shape.rotation = turned < 0 ? turned + 360.0 : turned;
                if (shape.rotation >= 360.0 || shape.rotation == 0) shape.rotation = 0;
            } else if (key == "text") {
                shape.text = value;
            } else if (key == "fill") {
                shape.fill = color(key, value, true);
            } else if (key == "line") {
                shape.line = color(key, value, true);
            } else if (key == "font") {
                shape.font = *color(key, value, false);
            } else {
                fail("unknown key '" + key + "' (keys: " + shapeKeys + ")");
            }
        }
    }
};

void shapeCommand(const Arguments& a) {
    ShapeEdit edit{a[0], {}};
    if (edit.name.empty()) throw ScenarioError("a shape needs a name");
    for (std::size_t i = 1; i < a.size(); ++i) {
        auto equals = a[i].find('=');
        if (equals == std::string::npos || equals == 0) edit.fail("expected KEY=VALUE, not '" + a[i] + "'");
        edit.pairs.emplace_back(a[i].substr(0, equals), a[i].substr(equals + 1));
    }
    const auto kind = edit.kind();
    Host::instance().document().with([&](DocumentState& doc) {
        auto* found = doc.shapeNamed(edit.name);
        // Every value is checked on a copy before the document changes.
        Shape shape = found ? *found : Shape::made(kind.value_or(ShapeKind::rect));
        edit.apply(shape);
        if (found) {
            *found = std::move(shape);
        } else {
            shape.name = edit.name;
            shape.id = doc.nextId++;
            doc.currentSlide().shapes.push_back(std::move(shape));
        }
        doc.rawSelected.reset();
        doc.rawOthers.reset();
    });
}

void selectShapesCommand(const Arguments& a) {
    Host::instance().document().with([&](DocumentState& doc) {
        std::vector<std::int64_t> selection;
        for (const auto& name : a) {
            auto* shape = doc.shapeNamed(name);
            if (!shape) throw ScenarioError(fmt::format("no shape named '{}' on slide {}", name, doc.current + 1));
            if (std::find(selection.begin(), selection.end(), shape->id) != selection.end()) {
                throw ScenarioError("shape '" + name + "' is selected twice");
            }
            selection.push_back(shape->id);
        }
        doc.selection = std::move(selection);
        doc.rawSelected.reset();
        doc.rawOthers.reset();
    });
}

void slideCommand(const Arguments& a) {
    auto number = finiteNumber(a[0]);
    if (!number || *number < 1 || *number > mostSlides || *number != std::trunc(*number)) {
        throw ScenarioError(fmt::format("slide takes a number from 1 to {}, not '{}'", mostSlides, a[0]));
    }
    const auto index = static_cast<std::size_t>(*number) - 1;
    Host::instance().document().with([&](DocumentState& doc) {
        if (doc.slides.size() <= index) doc.slides.resize(index + 1);
        // The selection belongs to the slide on view.
        if (doc.current != index) doc.selection.clear();
        doc.current = index;
        doc.rawSelected.reset();
        doc.rawOthers.reset();
    });
}

void themeCommand(const Arguments& a) {
    auto& host = Host::instance();
    if (a[0] == "fail") {
        host.setFailing("GetThemeColorsHexCsv");
        return;
    }
    host.document().with([&](DocumentState& doc) { doc.themeText = a[0]; });
    host.clearAnswer("GetThemeColorsHexCsv");
}

// Numbers go bare, as the library writes a tint; other words in double quotes.
void macroCommand(const Arguments& a) {
    const bool returning = a[0] == "return";
    if (returning && a.size() != 2) throw ScenarioError("usage: macro return NAME (a returning call takes no parameters)");
    const std::string& name = a[returning ? 1 : 0];
    std::string command = "run VB macro macro name \"" + name + "\"";
    if (!returning && a.size() > 1) {
        command += " list of parameters {";
        for (std::size_t i = 1; i < a.size(); ++i) {
            if (i > 1) command += ", ";
            command += finiteNumber(a[i]) ? a[i] : "\"" + a[i] + "\"";
        }
        command += "}";
    }
    if (returning) command = "return " + command;
    auto& host = Host::instance();
    auto outcome = host.connection()->ports->script->run("tell application \"Microsoft PowerPoint\"\n    " + command + "\nend tell");
    if (outcome.error) {
        host.emit(fmt::format("macro: error {} {}", outcome.error->number, outcome.error->message));
    } else if (outcome.stringValue) {
        host.emit("macro: answer '" + Host::oneLine(*outcome.stringValue) + "'");
    } else {
        host.emit("macro: no answer");
    }
}

// "rows=4 columns=5 header=row,column separators=yes paste=no reference=no" for
// a table, "weight=1.5 end=triangle" for a line, "source=NAME image=yes" for
// a picture, and after it "keep=yes" for a saved slide or "style=Fill" for an icon.
std::string kindDetails(const Shape& shape) {
    auto yes = [](bool on) { return on ? "yes" : "no"; };
    if (shape.kind == ShapeKind::table && shape.table) {
        const auto& t = *shape.table;
        const char* header = t.headerRow && t.headerColumn ? "row,column" : t.headerRow ? "row" : t.headerColumn ? "column" : "none";
        return fmt::format(" rows={} columns={} header={} separators={} paste={} reference={}", t.rows, t.columns, header,
                           yes(t.separators), yes(t.pasted), yes(t.fromReference));
    }
    if (shape.kind == ShapeKind::line) return fmt::format(" weight={} end={}", decimal(shape.lineWeight), lineEndName(shape.end));
    if (shape.kind == ShapeKind::picture) {
        return fmt::format(" source={} image={}{}{}", shape.source, yes(!shape.picture.empty()),
                           shape.keepSourceFormatting ? fmt::format(" keep={}", yes(*shape.keepSourceFormatting)) : "",
                           shape.iconStyle ? " style=" + *shape.iconStyle : "");
    }
    return {};
}

std::string describe(const Shape& shape, int order) {
    auto color = [](const std::optional<Rgb>& c) { return c ? c->hex() : std::string("none"); };
    return fmt::format("document: {} {} id={} {}{} left={} top={} width={} height={} rotation={} fill={} line={} font={} text='{}'",
                       order ? fmt::format("[{}]", order) : std::string("[ ]"), shape.name, shape.id,
                       kindName(shape.kind), kindDetails(shape), decimal(shape.left), decimal(shape.top), decimal(shape.width),
                       decimal(shape.height), decimal(shape.rotation), color(shape.fill), color(shape.line),
                       shape.font.hex(), Host::oneLine(shape.text));
}

void showDocument(const Arguments&) {
    auto& host = Host::instance();
    const auto doc = host.document().copy();
    host.emit(fmt::format("document: slide {} of {}", doc.current + 1, doc.slides.size()));
    auto slots = doc.themeSlots();
    std::string theme = "document: theme";
    for (std::size_t i = 0; i < themeSlotNames.size(); ++i) theme += " " + (i < slots.size() ? slots[i].hex() : "-");
    host.emit(theme);
    const auto& shapes = doc.currentSlide().shapes;
    if (shapes.empty()) host.emit("document: (no shapes)");
    for (const auto& shape : shapes) host.emit(describe(shape, doc.selectionOrder(shape.id)));
}

[[maybe_unused]] const bool registered[] = {
    registerCommand({"theme", "theme CSV|fail", 1, 1, themeCommand}),
    registerCommand({"shape", "shape NAME KEY=VALUE...", 1, 64, shapeCommand}),
    registerCommand({"selectshapes", "selectshapes NAME...", 0, 1000, selectShapesCommand}),
    registerCommand({"slide", "slide N", 1, 1, slideCommand}),
    registerCommand({"macro", "macro NAME [PARAMETER...] | macro return NAME", 1, 16, macroCommand}),
    registerShow({"document", "show document", 0, 0, showDocument}),
};

}  // namespace

}  // namespace velmora::host
