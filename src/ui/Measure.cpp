#include "ui/Measure.h"

#include <algorithm>
#include <cmath>

namespace velmora::ui {

namespace {

constexpr double defaultSpacing = 8;
constexpr double glyphWidth = 0.55;
constexpr double lineHeight = 1.2;

std::size_t characters(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // count code points, not bytes
    }));
}

platform::Size textSize(const std::string& text, double fontSize) {
    return {static_cast<double>(characters(text)) * fontSize * glyphWidth, fontSize * lineHeight};
}

// Children one after another along the stack's axis, `spacing` between them.
template <typename Measure>
platform::Size stacked(const Node& n, Measure&& measured, double spacing, bool horizontal) {
    double along = 0, across = 0;
    for (const auto& child : n.children) {
        const auto s = measured(child);
        along += horizontal ? s.width : s.height;
        across = std::max(across, horizontal ? s.height : s.width);
    }
    if (n.children.size() > 1) along += spacing * static_cast<double>(n.children.size() - 1);
    return horizontal ? platform::Size{along, across} : platform::Size{across, along};
}

// The widest and the tallest of the children, as layers or cells take them.
template <typename Measure>
platform::Size largest(std::vector<Node>::const_iterator first, std::vector<Node>::const_iterator last,
                       Measure&& measured) {
    platform::Size size;
    for (; first != last; ++first) {
        const auto s = measured(*first);
        size.width = std::max(size.width, s.width);
        size.height = std::max(size.height, s.height);
    }
    return size;
}

platform::Size content(const Node& n, double fontSize) {
    const double font = n.mod.font ? n.mod.font->size : fontSize;
    auto measured = [&](const Node& child) {
        Node copy = child;
        if (!copy.mod.font && n.mod.font) copy.mod.font = n.mod.font;
        return idealSize(copy);
    };
    const double spacing = n.spacing.value_or(defaultSpacing);
    switch (n.kind) {
        case Kind::text: return textSize(n.text, font);
        case Kind::symbol: return {font, font};
        case Kind::textField: return {100, font * lineHeight + 8};
        case Kind::datePicker: return {150, 160};  // a month of six rows under its title
        case Kind::toggle:
            if (n.children.empty()) return {18 + textSize(n.text, font).width, std::max(18.0, font * lineHeight)};
            [[fallthrough]];
        case Kind::button:
            if (n.children.empty()) return textSize(n.text, font);
            [[fallthrough]];
        case Kind::hstack: return stacked(n, measured, spacing, true);
        case Kind::vstack: return stacked(n, measured, spacing, false);
        case Kind::grid: {
            const auto cell = largest(n.children.begin(), n.children.end(), measured);
            const double columns = std::max(1, n.columns);
            const double rows = std::ceil(static_cast<double>(n.children.size()) / columns);
            return {columns * cell.width + (columns - 1) * spacing, rows * cell.height + std::max(0.0, rows - 1) * spacing};
        }
        case Kind::picker:
            if (n.segmented) {
                platform::Size row{0, 0};
                for (const auto& item : n.children) {
                    const auto size = textSize(item.text, font);
                    row.width += size.width + 16;
                    row.height = std::max(row.height, size.height + 6);
                }
                return row;
            }
            [[fallthrough]];
        case Kind::zstack:
        case Kind::scroll:
        case Kind::popover:
        case Kind::menu: {
            // A popover's content is not laid out with its anchor.
            const auto last = n.kind == Kind::popover && !n.children.empty() ? n.children.begin() + 1 : n.children.end();
            return largest(n.children.begin(), last, measured);
        }
        case Kind::spacer: return {n.spacing.value_or(0), n.spacing.value_or(0)};
        case Kind::divider: return {1, 1};
        default: return {};  // images without a frame, shapes: they take what they are offered
    }
}

}  // namespace

platform::Size idealSize(const Node& node) {
    const auto& m = node.mod;
    platform::Size size = content(node, 13);
    size.width += m.padding.leading + m.padding.trailing;
    size.height += m.padding.top + m.padding.bottom;
    const Frame& f = m.frame;
    auto settle = [](double value, const std::optional<double>& fixed, const std::optional<double>& minimum,
                     const std::optional<double>& ideal, const std::optional<double>& maximum) {
        if (fixed) return *fixed;
        if (ideal) value = *ideal;
        if (maximum && !std::isinf(*maximum)) value = std::min(value, *maximum);
        if (minimum) value = std::max(value, *minimum);
        return value;
    };
    size.width = settle(size.width, f.width, f.minWidth, f.idealWidth, f.maxWidth);
    size.height = settle(size.height, f.height, f.minHeight, f.idealHeight, f.maxHeight);
    return size;
}

}  // namespace velmora::ui
