#include "shortcuts/ShortcutReferenceView.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "platform/Platform.h"
#include "support/Text.h"
#include "ui/Images.h"

namespace velmora {

namespace {

}  // namespace

bool isRelevant(const std::vector<std::string>& keys, ModifierFlags held) {
    constexpr std::array<std::string_view, 4> validModifiers = {"ctrl", "cmd", "opt", "shift"};
    std::set<std::string> wanted;
    for (const auto& key : keys) {
        auto lower = support::lowercased(key);
        if (std::find(validModifiers.begin(), validModifiers.end(), lower) != validModifiers.end()) {
            wanted.insert(std::move(lower));
        }
    }
    std::set<std::string> pressed;
    if (held.contains(ModifierFlags::control)) pressed.insert("ctrl");
    if (held.contains(ModifierFlags::command)) pressed.insert("cmd");
    if (held.contains(ModifierFlags::option)) pressed.insert("opt");
    if (held.contains(ModifierFlags::shift)) pressed.insert("shift");
    return pressed == wanted;
}

ui::Node shortcutRowView(const Shortcut& shortcut, const std::string& iconPath, double scale, ModifierFlags held,
                         const IconCheck& iconLoads) {
    using namespace ui;
    std::string path = iconPath + shortcut.imageName;
    // A missing icon keeps its frame, empty.
    Node icon = image(iconLoads(path) ? path : "").makeResizable().frame(14 * scale, 14 * scale);

    Nodes chips;
    for (const auto& key : shortcut.keys) {
        chips.push_back(text(key)
                            .font(9 * scale, FontWeight::regular, FontDesign::monospaced)
                            .padding(Edge::horizontal, 2.2 * scale)
                            .padding(Edge::vertical, 2 * scale)
                            .background(colors::black)
                            .foregroundColor(colors::white)
                            .cornerRadius(3 * scale));
    }
    Node line = hstack({text(shortcut.name).font(10 * scale, FontWeight::semibold), spacer(),
                        hstack(Alignment::center, 4, std::move(chips))});

    return hstack(Alignment::top, 2 * scale, {std::move(icon), std::move(line)})
        .padding(2 * scale)
        .background(isRelevant(shortcut.keys, held) ? colors::green.opacity(0.3) : colors::clear)
        .cornerRadius(5 * scale)
        .id(shortcut.id.uuidString());
}

ui::Node categorySectionView(const std::string& category, const std::vector<Shortcut>& shortcuts, double scale,
                             ModifierFlags held, const IconCheck& iconLoads) {
    using namespace ui;
    Nodes rows;
    rows.push_back(text(category).font(11 * scale, FontWeight::bold).padding(Edge::top, 2 * scale));
    for (const auto& shortcut : shortcuts) {
        rows.push_back(shortcutRowView(shortcut, shortcutIconsDirectory, scale, held, iconLoads));
    }
    return vstack(Alignment::leading, 2, std::move(rows));
}

ui::Node ResponsiveShortcutsView::body(double width, ModifierFlags held, const IconCheck& iconLoads) const {
    using namespace ui;
    double scale = width / 250;
    Nodes sections;
    for (const auto& category : categories) {
        auto entry = grouped.find(category);
        if (entry == grouped.end()) continue;
        sections.push_back(categorySectionView(category, entry->second, scale, held, iconLoads).id(category));
    }
    return scroll(vstack(Alignment::leading, 0, std::move(sections)).padding(10));
}

}  // namespace velmora
