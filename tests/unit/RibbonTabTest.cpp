#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "bridge/Exports.h"
#include "fake/FakePlatform.h"
#include "keyboard/RibbonTab.h"

namespace velmora {
namespace {

using hosts::MemoryAXElement;
using Strings = std::vector<std::string>;

// Counts how often its children are read, which is how often the walk opens it.
class CountingElement : public MemoryAXElement {
public:
    platform::AXResult copyAttributeValue(const std::string& attribute) const override {
        if (attribute == "AXChildren") ++childReads;
        return MemoryAXElement::copyAttributeValue(attribute);
    }
    mutable int childReads = 0;
};

std::shared_ptr<CountingElement> node(const std::string& role, const std::string& title = "") {
    auto made = std::make_shared<CountingElement>();
    made->set("AXRole", role);
    if (!title.empty()) made->set("AXTitle", title);
    return made;
}

class RibbonTab : public testing::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        app->set("AXFocusedWindow", platform::AXElementRef(window));
        fake.accessibility->addApplication({"com.apple.Keynote", 11}, node("AXApplication"));
        fake.accessibility->addApplication({"com.microsoft.Powerpoint", 12}, app);
        tab->set("AXValue", std::int64_t{0});
        tab->onAction([this](const std::string& action) {
            actions.push_back(action);
            return pressResult;
        });
    }
    // Hangs the tab `level` levels below the window, under a chain of groups.
    void placeTab(int level) {
        platform::AXElementRef below = tab;
        for (int i = level; i > 1; --i) {
            auto group = node("AXGroup");
            group->setChildren({below});
            below = group;
        }
        window->setChildren({node("AXButton", "Velmora"), below});
    }

    std::shared_ptr<CountingElement> app = node("AXApplication");
    std::shared_ptr<CountingElement> window = node("AXWindow");
    std::shared_ptr<CountingElement> tab = node("AXRadioButton", "Velmora");
    Strings actions;
    platform::AXError pressResult = platform::axSuccess;
};

TEST_F(RibbonTab, FindsTheTabFourLevelsDownButNotFive) {
    placeTab(4);
    activateVelmoraTab();
    EXPECT_EQ(fake.log->lines(), (Strings{"VELMORA || Debug: Focused window found, fetching elements",
                                          "Found matching element:", "Role: AXRadioButton", "Title: Velmora",
                                          "VELMORA || Performing press action on element"}));
    EXPECT_EQ(actions, Strings{"AXPress"});

    fake.log->clear();
    placeTab(5);
    activateVelmoraTab();
    EXPECT_EQ(fake.log->lines(), (Strings{"VELMORA || Debug: Focused window found, fetching elements",
                                          "No matching element found",
                                          "VELMORA || Debug: 'Velmora' element not found"}));
    EXPECT_EQ(actions.size(), 1u);
}

TEST_F(RibbonTab, ListsChildrenBeforeDescendantsAndOpensAnElementOnce) {
    auto a = node("A"), b = node("B"), a1 = node("A1"), b1 = node("B1");
    window->setChildren({a, b});
    a->setChildren({a1, b});       // b is reached twice
    b->setChildren({b1, window});  // and the window once more: a cycle
    AXElementSet visited;
    auto list = fetchElements(window, visited);
    Strings roles;
    for (const auto& element : list) roles.push_back(std::get<std::string>(*getAttribute(element, "AXRole")));
    EXPECT_EQ(roles, (Strings{"A", "B", "A1", "B", "B1", "AXWindow"}));
    EXPECT_EQ(window->childReads, 1);
    EXPECT_EQ(b->childReads, 1);
    b->setChildren({});  // lets the cycle go
}

TEST_F(RibbonTab, PressesUnlessTheValueIsTheIntegerOne) {
    placeTab(2);
    struct Case {
        const char* what;
        platform::AXResult value;
        bool pressed;
    };
    const Case cases[] = {
        {"selected", {platform::axSuccess, std::int64_t{1}}, false},
        {"not selected", {platform::axSuccess, std::int64_t{0}}, true},
        {"another number", {platform::axSuccess, std::int64_t{2}}, true},
        {"a real one", {platform::axSuccess, 1.0}, true},
        {"a text one", {platform::axSuccess, std::string("1")}, true},
        {"no value", {platform::axSuccess, std::nullopt}, true},
        {"an unreadable value", {platform::axCannotComplete, std::nullopt}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        tab->setResult("AXValue", c.value);
        fake.log->clear();
        actions.clear();
        activateVelmoraTab();
        EXPECT_EQ(actions.size(), c.pressed ? 1u : 0u);
        EXPECT_EQ(fake.log->contains("VELMORA || Value is 1"), !c.pressed);
        EXPECT_EQ(fake.log->contains("VELMORA ||Failed to get value attribute of element with title Velmora"),
                  c.value.error != platform::axSuccess);
    }
}

TEST_F(RibbonTab, MatchesRoleAndTitleExactlyAndTakesTheFirstMatch) {
    auto lower = node("AXRadioButton", "velmora");
    auto second = node("AXRadioButton", "Velmora");
    tab->set("AXDescription", std::string("Velmora tab"));
    window->setChildren({node("AXButton", "Velmora"), lower, tab, second});
    EXPECT_EQ(findVelmoraElement({window, lower}), nullptr);
    fake.log->clear();
    EXPECT_EQ(findVelmoraElement({lower, tab, second}), tab);
    EXPECT_EQ(fake.log->lines(),
              (Strings{"Found matching element:", "Role: AXRadioButton", "Title: Velmora", "Description: Velmora tab"}));
}

TEST_F(RibbonTab, EachMissingPieceEndsWithItsOwnLines) {
    placeTab(1);
    pressResult = platform::axFailure;
    activateVelmoraTab();
    EXPECT_EQ(fake.log->lines().back(), "VELMORA || Error: Could not perform press action");

    // Without accessibility rights the window read fails and the walk goes on empty.
    fake.log->clear();
    app->setResult("AXFocusedWindow", {-25211, std::nullopt});
    activateVelmoraTab();
    EXPECT_EQ(fake.log->lines(), (Strings{"VELMORA || Debug: No focused window found", "No matching element found",
                                          "VELMORA || Debug: 'Velmora' element not found"}));

    fake.log->clear();
    fake.accessibility->removeApplication(12);
    activateVelmoraTab();
    EXPECT_EQ(fake.log->lines(), Strings{"VELMORA || Debug: Failed to get application"});
}

TEST_F(RibbonTab, TheWalkInspectorListsWhatTheLastWalkListedWithDepths) {
    EXPECT_FALSE(fake.inspection->inspect("ribbon walk"));

    // x is listed first at level 4, where the walk does not open it, then
    // at level 2, where it does; b is listed twice at levels it could open.
    auto a = node("AXGroup", "Ribbon"), b = node("AXButton", "Velmora"), a1 = node("AXGroup"), a2 = node("AXGroup");
    auto x = node("AXGroup", "x"), x1 = node("AXStaticText");
    auto busy = node("AXRadioButton");
    busy->setResult("AXTitle", {platform::axCannotComplete, std::nullopt});
    busy->setResult("AXChildren", {platform::axCannotComplete, std::nullopt});
    b->set("AXDescription", std::string("near \"miss\""));
    b->set("AXValue", std::string("1"));
    tab->set("AXValue", 1.0);
    window->set("AXTitle", std::string("Deck"));
    window->setChildren({a, b});
    a->setChildren({a1, tab, busy});
    a1->setChildren({a2});
    a2->setChildren({x});
    b->setChildren({x, b, window});
    x->setChildren({x1});
    activateVelmoraTab();
    EXPECT_EQ(x->childReads, 1);
    EXPECT_EQ(*fake.inspection->inspect("ribbon walk"),
              (Strings{
                  "ribbon walk: focused window role \"AXWindow\" title \"Deck\", 11 elements",
                  "ribbon walk: 1 role \"AXGroup\" title \"Ribbon\"",
                  "ribbon walk: 1 role \"AXButton\" title \"Velmora\" description \"near \\\"miss\\\"\" value \"1\"",
                  "ribbon walk: 2 role \"AXGroup\"",
                  "ribbon walk: 2 role \"AXRadioButton\" title \"Velmora\" value 1.0 [found]",
                  "ribbon walk: 2 role \"AXRadioButton\" title error -25204 children error -25204",
                  "ribbon walk: 3 role \"AXGroup\"",
                  "ribbon walk: 4 role \"AXGroup\" title \"x\"",
                  "ribbon walk: 2 role \"AXGroup\" title \"x\"",
                  "ribbon walk: 2 role \"AXButton\" title \"Velmora\" description \"near \\\"miss\\\"\" value \"1\" [opened before]",
                  "ribbon walk: 2 role \"AXWindow\" title \"Deck\" [opened before]",
                  "ribbon walk: 3 role \"AXStaticText\"",
              }));
    b->setChildren({});  // lets the cycles go

    // The inspector reads the attributes when asked: the elements as they are now.
    tab->setResult("AXValue", {platform::axNoValue, std::nullopt});
    EXPECT_EQ((*fake.inspection->inspect("ribbon walk"))[4], "ribbon walk: 2 role \"AXRadioButton\" title \"Velmora\" [found]");

    app->setResult("AXFocusedWindow", {-25211, std::nullopt});
    activateVelmoraTab();
    EXPECT_EQ(*fake.inspection->inspect("ribbon walk"), Strings{"ribbon walk: no focused window"});
    fake.accessibility->removeApplication(12);
    activateVelmoraTab();
    EXPECT_EQ(*fake.inspection->inspect("ribbon walk"), Strings{"ribbon walk: no application"});
}

TEST_F(RibbonTab, TheWalkHoldsNoElementAlive) {
    placeTab(1);
    activateVelmoraTab();
    window->setChildren({});
    tab.reset();
    EXPECT_EQ(*fake.inspection->inspect("ribbon walk"),
              (Strings{"ribbon walk: focused window role \"AXWindow\", 2 elements", "ribbon walk: 1 (gone)",
                       "ribbon walk: 1 (gone)"}));
}

}  // namespace
}  // namespace velmora
