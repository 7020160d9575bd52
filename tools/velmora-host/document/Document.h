// The macro project's document: slides of shapes, the selection and the
// theme, as the host's macros change them and its snapshot draws them.
//
// Provides: Rgb, parseHexColor(), tinted(), ShapeKind, Shape, Slide,
// DocumentState, Document.
// Thread: any; the state lives behind Document's mutex, since macros run on
// whichever thread sends their script.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::host {

struct Rgb {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
    // "#RRGGBB", upper case.
    std::string hex() const;
    // The host's integer form: R + G*256 + B*65536.
    std::int64_t hostValue() const { return r + g * 256 + b * 65536; }
};

// "#RGB" or "#RRGGBB", the '#' optional, blanks around ignored.
std::optional<Rgb> parseHexColor(std::string_view text);

// The host's tint: towards white for a positive tint, towards black for a
// negative one, per channel and rounded.
Rgb tinted(Rgb color, double tint);

enum class ShapeKind { rect, ellipse, textbox, line, table, picture };
std::string_view kindName(ShapeKind kind);
std::optional<ShapeKind> kindNamed(std::string_view name);

// What a line has at its end point.
enum class LineEnd { none, triangle, open, circle };
std::string_view lineEndName(LineEnd end);

// A table's grid and the choices it was inserted with.
struct TableGrid {
    int rows = 1, columns = 1;
    bool headerRow = false, headerColumn = false, separators = true;
    bool pasted = false, fromReference = false;
};

struct Shape {
    std::int64_t id = 0;
    std::string name;
    ShapeKind kind = ShapeKind::rect;
    // Points on a 960 x 540 slide; Left grows right, Top down. A line runs
    // from (left, top) to (left + width, top + height).
    double left = 0, top = 0, width = 100, height = 50;
    double rotation = 0;  // degrees clockwise, in [0, 360)
    std::string text;
    std::optional<Rgb> fill;
    std::optional<Rgb> line;
    Rgb font;
    double lineWeight = 1;  // points
    LineEnd end = LineEnd::none;
    std::optional<TableGrid> table;  // set for a table
    std::string picture;             // a picture's image file (PNG or SVG bytes); empty: none came with it
    std::string source;              // what a picture was inserted from
    // A saved slide's "keep source formatting" choice; nothing for other inserts.
    std::optional<bool> keepSourceFormatting;
    // An icon's insertion style ("Normal", "Fill", "Outline"); nothing for other pictures.
    std::optional<std::string> iconStyle;

    // A new shape of this kind as the host inserts one with the default theme.
    static Shape made(ShapeKind kind);
};

// "image/png" or "image/svg+xml" by the bytes' own signature; empty for anything else.
std::string_view pictureType(std::string_view bytes);

struct Slide {
    std::vector<Shape> shapes;  // back to front
};

inline constexpr double slideWidth = 960;
inline constexpr double slideHeight = 540;

// Slot order of the theme's colours.
inline constexpr std::array<std::string_view, 10> themeSlotNames = {
    "Dark1", "Light1", "Dark2", "Light2", "Accent1", "Accent2", "Accent3", "Accent4", "Accent5", "Accent6"};
inline constexpr const char* defaultThemeText =
    "#000000,#FFFFFF,#44546A,#E7E6E6,#4472C4,#ED7D31,#A5A5A5,#FFC000,#5B9BD5,#70AD47";

struct DocumentState {
    std::vector<Slide> slides = std::vector<Slide>(1);
    std::size_t current = 0;                // index into slides
    std::vector<std::int64_t> selection;    // IDs on the current slide, in the order selected
    std::string themeText = defaultThemeText;  // as set: GetThemeColorsHexCsv answers it verbatim
    std::int64_t nextId = 1;
    // Texts the scenario set with `select` and `others`; they stand in for
    // the document's shapes until a document command ends them.
    std::optional<std::string> rawSelected, rawOthers;

    Slide& currentSlide() { return slides[current]; }
    const Slide& currentSlide() const { return slides[current]; }
    Shape* shapeNamed(std::string_view name);
    std::vector<Shape*> selectedShapes();
    int selectionOrder(std::int64_t id) const;  // 1-based; 0 when not selected

    // The pieces of the theme text that read as colours, at most ten, in slot order.
    std::vector<Rgb> themeSlots() const;
    std::optional<Rgb> themeSlot(std::string_view slotName) const;

    // What CallTriggerAssistant sends: the raw texts, or the shapes as JSON arrays.
    std::string selectedShapesJSON() const;
    std::string otherShapesJSON() const;
};

class Document {
public:
    // Runs body on the state under the lock. The body must not call into the
    // library or the host's other locks.
    template <typename Body>
    auto with(Body&& body) {
        std::lock_guard lock(mutex_);
        return body(state_);
    }
    DocumentState copy() const {
        std::lock_guard lock(mutex_);
        return state_;
    }

private:
    mutable std::mutex mutex_;
    DocumentState state_;
};

}  // namespace velmora::host
