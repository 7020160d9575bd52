#include "shortcuts/ShortcutReferenceView.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "platform/Platform.h"
#include "support/Text.h"
#include "ui/Images.h"

namespace velmora {

namespace {

using namespace ui;

constexpr std::uint64_t rowModifiers =
    ModifierFlags::control | ModifierFlags::command | ModifierFlags::option | ModifierFlags::shift;

constexpr double listPadding = 10;
constexpr double lineSpacing = 2;  // between the lines of a section

// What the blank space standing for unbuilt lines is made of: a heading's
// and a row's height as laid out with one line of text (1.2 em a line).
double headingHeight(double scale) { return 11 * scale * 1.2 + 2 * scale; }
double rowHeight(double scale) { return 9 * scale * 1.2 + 2 * 2 * scale + 2 * 2 * scale; }  // a chip, the row's padding

Node heading(const std::string& category, double scale) {
    return text(category).font(11 * scale, FontWeight::bold).padding(Edge::top, 2 * scale);
}

Node blank(double height) { return rectangle().foregroundColor(colors::clear).frameHeight(height); }

std::size_t lineCount(const std::vector<ReferenceSection>& sections) {
    std::size_t lines = 0;
    for (const auto& section : sections) lines += 1 + section.rows.size();
    return lines;
}

}  // namespace

ModifierFlags namedModifiers(const std::vector<std::string>& keys) {
    std::uint64_t named = 0;
    for (const auto& key : keys) {
        if (key.size() > 20) continue;  // longer than five letters of four bytes: none of the four names
        const auto lower = support::lowercased(key);
        if (lower == "ctrl") {
            named |= ModifierFlags::control;
        } else if (lower == "cmd") {
            named |= ModifierFlags::command;
        } else if (lower == "opt") {
            named |= ModifierFlags::option;
        } else if (lower == "shift") {
            named |= ModifierFlags::shift;
        }
    }
    return {named};
}

bool isRelevant(const std::vector<std::string>& keys, ModifierFlags held) {
    return namedModifiers(keys) == held.intersection(rowModifiers);
}

ui::Node shortcutRowView(const Shortcut& shortcut, ModifierFlags modifiers, const std::string& iconPath, double scale,
                         ModifierFlags held, const IconCheck& iconLoads) {
    std::string path = iconPath + shortcut.imageName;
    // A missing icon keeps its frame, empty.
    Node icon = image(iconLoads(path) ? path : "").makeResizable().frame(14 * scale, 14 * scale);

    Nodes chips;
    const std::size_t shown = std::min(shortcut.keys.size(), maxShownChips);
    chips.reserve(shown);
    for (std::size_t i = 0; i < shown; ++i) {
        chips.push_back(text(shortcut.keys[i])
                            .font(9 * scale, FontWeight::regular, FontDesign::monospaced)
                            .padding(Edge::horizontal, 2.2 * scale)
                            .padding(Edge::vertical, 2 * scale)
                            .background(colors::black)
                            .foregroundColor(colors::white)
                            .cornerRadius(3 * scale));
    }
    Node line = hstack({text(shortcut.name).font(10 * scale, FontWeight::semibold), spacer(),
                        hstack(Alignment::center, 4, std::move(chips))});

    const bool relevant = modifiers == held.intersection(rowModifiers);
    return hstack(Alignment::top, 2 * scale, {std::move(icon), std::move(line)})
        .padding(2 * scale)
        .background(relevant ? colors::green.opacity(0.3) : colors::clear)
        .cornerRadius(5 * scale)
        .id(shortcut.id.uuidString());
}

ui::Node shortcutRowView(const Shortcut& shortcut, const std::string& iconPath, double scale, ModifierFlags held,
                         const IconCheck& iconLoads) {
    return shortcutRowView(shortcut, namedModifiers(shortcut.keys), iconPath, scale, held, iconLoads);
}

ResponsiveShortcutsView ResponsiveShortcutsView::make(std::vector<Shortcut> shortcuts) {
    ResponsiveShortcutsView view;
    view.records = std::move(shortcuts);
    view.modifiers.reserve(view.records.size());
    std::unordered_map<std::string, std::size_t> sectionOf;
    for (std::size_t i = 0; i < view.records.size(); ++i) {
        auto& shortcut = view.records[i];
        auto [entry, isNew] = sectionOf.try_emplace(shortcut.category, view.sections.size());
        if (isNew) view.sections.push_back({shortcut.category, {}});
        view.sections[entry->second].rows.push_back(i);
        view.modifiers.push_back(namedModifiers(shortcut.keys));
        if (shortcut.keys.size() > maxShownChips) {
            shortcut.keys.resize(maxShownChips);
            shortcut.keys.shrink_to_fit();
        }
    }
    return view;
}

ui::Node ResponsiveShortcutsView::body(double width, ModifierFlags held, const IconCheck& iconLoads,
                                       ReferenceViewport viewport) const {
    const double scale = width / 250;
    const std::size_t lines = lineCount(sections);
    Nodes column;

    if (lines <= maxBuiltLines) {
        for (const auto& section : sections) {
            Nodes built;
            built.push_back(heading(section.category, scale));
            for (const std::size_t row : section.rows) {
                built.push_back(
                    shortcutRowView(records[row], modifiers[row], shortcutIconsDirectory, scale, held, iconLoads));
            }
            column.push_back(vstack(Alignment::leading, 2, std::move(built)).id(section.category));
        }
        return scroll(vstack(Alignment::leading, 0, std::move(column)).padding(listPadding));
    }

    // Which line the view's top shows, by the estimated heights.
    const double head = headingHeight(scale), row = rowHeight(scale);
    std::size_t first = lines - 1;
    {
        double y = listPadding;
        std::size_t index = 0;
        for (const auto& section : sections) {
            for (std::size_t i = 0; i <= section.rows.size() && first == lines - 1; ++i, ++index) {
                y += (i == 0 ? head : row);
                if (y > viewport.offset) first = index;
                y += lineSpacing;
            }
        }
    }
    const double fits = std::ceil(std::max(0.0, viewport.height) / std::max(row, 1.0)) + 1;
    const std::size_t visible = fits < static_cast<double>(lines) ? static_cast<std::size_t>(fits) : lines;
    const std::size_t span = std::min(lines, std::max(maxBuiltLines, 3 * visible));
    const std::size_t above = (span - std::min(span, visible)) / 3;
    const std::size_t start = std::min(first - std::min(first, above), lines - span);
    const std::size_t end = start + span;

    double before = 0, after = 0;
    std::size_t index = 0;
    for (const auto& section : sections) {
        Nodes built;
        for (std::size_t i = 0; i <= section.rows.size(); ++i, ++index) {
            const double height = (i == 0 ? head : row) + (i < section.rows.size() ? lineSpacing : 0);
            if (index < start) {
                before += height;
            } else if (index >= end) {
                after += height;
            } else if (i == 0) {
                built.push_back(heading(section.category, scale));
            } else {
                const std::size_t shown = section.rows[i - 1];
                built.push_back(
                    shortcutRowView(records[shown], modifiers[shown], shortcutIconsDirectory, scale, held, iconLoads));
            }
        }
        if (!built.empty()) column.push_back(vstack(Alignment::leading, 2, std::move(built)).id(section.category));
    }
    if (before > 0) column.insert(column.begin(), blank(before));
    if (after > 0) column.push_back(blank(after));
    return scroll(vstack(Alignment::leading, 0, std::move(column)).padding(listPadding));
}

bool ResponsiveShortcutsView::buildsWindow() const { return lineCount(sections) > maxBuiltLines; }

}  // namespace velmora
