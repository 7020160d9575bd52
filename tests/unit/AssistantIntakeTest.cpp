// Shape intake and the recommendation state: strict decoding, the run's log,
// the names-only comparison and the publish on the main queue.

#include <gtest/gtest.h>

#include <regex>

#include "assistant/AssistantViewModel.h"
#include "assistant/HostText.h"
#include "assistant/ShapeMetadata.h"
#include "bridge/Exports.h"
#include "fake/FakePlatform.h"

namespace velmora {
namespace {

const std::string fields =
    R"("Name":"Box","Top":10,"Left":20.5,"Width":100,"Height":50,"ShpType":"1","HasFill":true,"FillColor":255,)"
    R"("HasTextFrame":true,"HasText":false,"AutoSize":false,"WordWrap":true,"MarginTop":3.6,"MarginLeft":0,)"
    R"("ZOrder":2,"HasLineBreaks":false)";

// One shape object, with some of its text replaced.
std::string shapeJSON(int id, std::initializer_list<std::pair<std::string, std::string>> edits = {}) {
    std::string text = "{\"ID\":" + std::to_string(id) + "," + fields + "}";
    for (const auto& [from, to] : edits) text.replace(text.find(from), from.size(), to);
    return text;
}

TEST(ShapeDecodingTest, AcceptsTheSeventeenKeysWholeNumbersAndExtraKeys) {
    auto decoded = decodeShapeList("[" + shapeJSON(1, {{"\"ZOrder\":2", "\"ZOrder\":2,\"Extra\":null"}}) + "," +
                                   shapeJSON(2, {{"\"ID\":2", "\"ID\":2.0"}}) + "]");
    ASSERT_TRUE(decoded.ok) << decoded.error;
    ASSERT_EQ(decoded.shapes.size(), 2u);
    EXPECT_EQ(decoded.shapes[1].ID, 2);
    EXPECT_EQ(decoded.shapes[0].Left, 20.5);
    EXPECT_EQ(decoded.shapes[0].Top, 10.0);
    EXPECT_EQ(decodeShapeList("[]").ok, true);
}

TEST(ShapeDecodingTest, TheFirstBadValueFailsTheWholeArrayAndIsNamed) {
    struct Case {
        std::string json, error;
    };
    const Case cases[] = {
        {"[" + shapeJSON(1) + "," + shapeJSON(2, {{",\"HasLineBreaks\":false", ""}}) + "]",
         R"(keyNotFound: no value for key "HasLineBreaks" at index 1)"},
        {"[" + shapeJSON(1, {{"\"ID\":1", "\"ID\":1.5"}}) + "]", R"(key "ID" at index 0 holds 1.5, which does not fit in Int)"},
        {"[" + shapeJSON(1, {{"\"ZOrder\":2", "\"ZOrder\":true"}}) + "]", R"(key "ZOrder" at index 0 expects Int but found a boolean)"},
        {"[" + shapeJSON(1, {{"\"HasFill\":true", "\"HasFill\":1"}}) + "]", R"(key "HasFill" at index 0 expects Bool but found a number)"},
        {"[" + shapeJSON(1, {{"\"ShpType\":\"1\"", "\"ShpType\":1"}}) + "]", R"(key "ShpType" at index 0 expects String)"},
        {"[" + shapeJSON(1, {{"\"Top\":10", "\"Top\":\"10\""}}) + "]", R"(key "Top" at index 0 expects Double but found a string)"},
        {"[" + shapeJSON(1, {{"\"Name\":\"Box\"", "\"Name\":null"}}) + "]", R"(valueNotFound: key "Name" at index 0)"},
        // Key order decides between two bad values of one shape.
        // Keys are checked in field order, not in the order the text lists them.
        {"[{\"HasFill\":1," + shapeJSON(1, {{"\"HasFill\":true,", ""}, {"\"Width\":100", "\"Width\":null"}}).substr(1) + "]",
         R"(valueNotFound: key "Width")"},
        {"[" + shapeJSON(1) + "]]", "not valid JSON"},
        {"{}", "expected an array of shapes but found an object"},
        {"[1]", "index 0 expects a shape object but found a number"},
    };
    for (const auto& c : cases) {
        auto decoded = decodeShapeList(c.json);
        EXPECT_FALSE(decoded.ok) << c.json;
        EXPECT_TRUE(decoded.shapes.empty());
        EXPECT_NE(decoded.error.find(c.error), std::string::npos) << decoded.error;
        EXPECT_EQ(decoded.error.find('\n'), std::string::npos);
    }
}

TEST(ShapeDecodingTest, PrintsTheListOnOneReadableLine) {
    auto decoded = decodeShapeList("[" + shapeJSON(7) + "]");
    EXPECT_EQ(describeShapes(decoded.shapes),
              R"([ShapeMetadata(ID: 7, Name: "Box", Top: 10.0, Left: 20.5, Width: 100.0, Height: 50.0, ShpType: "1", )"
              R"(HasFill: true, FillColor: 255, HasTextFrame: true, HasText: false, AutoSize: false, WordWrap: true, )"
              R"(MarginTop: 3.6, MarginLeft: 0.0, ZOrder: 2, HasLineBreaks: false)])");
    EXPECT_EQ(describeShapes({}), "[]");

    // Numbers and texts print as the platform prints a double and a string.
    auto odd = decodeShapeList("[" + shapeJSON(8, {{"\"Box\"", "\"Bob's\\u001b\""}, {"\"Top\":10", "\"Top\":100000"},
                                                   {"\"Left\":20.5", "\"Left\":0.0001"},
                                                   {"\"Width\":100", "\"Width\":0.00001"}}) +
                               "]");
    ASSERT_TRUE(odd.ok) << odd.error;
    EXPECT_NE(describeShapes(odd.shapes).find(R"(Name: "Bob\'s\u{1B}", Top: 100000.0, Left: 0.0001, Width: 1e-05,)"),
              std::string::npos)
        << describeShapes(odd.shapes);
}

TEST(ShapeDecodingTest, AWholeNumberBeyondSixtyFourBitsIsADouble) {
    const std::string huge = "123456789012345678901234567890";
    auto decoded = decodeShapeList("[" + shapeJSON(1, {{"\"Top\":10", "\"Top\":" + huge}, {"\"Left\":20.5", "\"Left\":-" + huge}}) +
                                   "]");
    ASSERT_TRUE(decoded.ok) << decoded.error;
    EXPECT_EQ(decoded.shapes[0].Top, 1.2345678901234568e29);
    EXPECT_EQ(decoded.shapes[0].Left, -1.2345678901234568e29);

    // Where an integer is wanted it does not fit.
    auto integer = decodeShapeList("[" + shapeJSON(1, {{"\"ZOrder\":2", "\"ZOrder\":" + huge}}) + "]");
    EXPECT_FALSE(integer.ok);
    EXPECT_NE(integer.error.find(R"(key "ZOrder" at index 0 holds 1.2345678901234568e+29, which does not fit in Int)"),
              std::string::npos)
        << integer.error;

    // Digits inside a text are left alone, and a broken number stays an error.
    auto named = decodeShapeList("[" + shapeJSON(1, {{"\"Box\"", "\"" + huge + "\\\"" + huge + "\""}}) + "]");
    ASSERT_TRUE(named.ok) << named.error;
    EXPECT_EQ(named.shapes[0].Name, huge + "\"" + huge);
    EXPECT_FALSE(decodeShapeList("[" + shapeJSON(1, {{"\"Top\":10", "\"Top\":-" + huge + "-"}}) + "]").ok);
}

TEST(HostTextTest, ReplacesIllFormedBytesAndReadsNullAsEmpty) {
    EXPECT_EQ(textFromHost(nullptr), "");
    EXPECT_EQ(textFromHost("ok \xE2\x86\x91"), "ok \xE2\x86\x91");
    EXPECT_EQ(textFromHost("a\xFF" "b\xE2\x86"), "a\xEF\xBF\xBD" "b\xEF\xBF\xBD");
}

TEST(ShortcutRecommendationTest, EveryRowGetsAFreshUpperCaseUUID) {
    ShortcutRecommendation a, b;
    EXPECT_NE(a.id, b.id);
    EXPECT_TRUE(std::regex_match(a.id.uuidString(), std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")))
        << a.id.uuidString();
}

class TriggerAssistantTest : public testing::PlatformTest {
protected:
    std::vector<std::string> names() {
        std::vector<std::string> out;
        for (const auto& row : AssistantViewModel::shared().recommendations.get()) out.push_back(row.Name);
        return out;
    }
    int writes = 0;
};

TEST_F(TriggerAssistantTest, PublishesOnTheMainQueueOnlyWhenTheNamesChange) {
    AssistantViewModel::shared().recommendations.observe([this](const auto&) { ++writes; });
    triggerAssistant("[]", "[]");
    EXPECT_TRUE(names().empty()) << "the rows arrive through the main queue";
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(names(), (std::vector<std::string>{"Send Slides", "TextBox", "Text Table", "Sticky Notes"}));
    auto ids = AssistantViewModel::shared().recommendations.get();
    EXPECT_TRUE(fake.log->contains("Assistant: Recommendations updated."));

    // Broken JSON decodes as an empty list: the same names, nothing published.
    triggerAssistant("[SlideSelected] ", "[]");
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(fake.log->contains("Assistant: Recommendations remain unchanged."));
    EXPECT_EQ(AssistantViewModel::shared().recommendations.get(), ids) << "rows keep their ids";
    EXPECT_EQ(writes, 1);
}

TEST_F(TriggerAssistantTest, TheSentinelGivesTheSendRowAndARepeatLogsNothingMore) {
    triggerAssistant("[SlideSelected]", "not looked at");
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(names(), std::vector<std::string>{"Send Slides"});
    fake.log->clear();
    triggerAssistant("[SlideSelected]", "");
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(fake.log->lines(), std::vector<std::string>{"Assistant: [SlideSelected]"});
}

TEST_F(TriggerAssistantTest, AnEmptyRunAfterRowsPublishesTheEmptyList) {
    triggerAssistant("[]", "[]");
    fake.dispatch->runUntilIdle();
    // Two shapes far apart on both axes by the same distance: nothing applies.
    std::string two = "[" + shapeJSON(1, {{"\"ShpType\":\"1\"", "\"ShpType\":\"\""}}) + "," +
                      shapeJSON(2, {{"\"Top\":10,\"Left\":20.5", "\"Top\":110,\"Left\":120.5"}, {"\"ShpType\":\"1\"", "\"ShpType\":\"\""}}) + "]";
    triggerAssistant(two.c_str(), "[]");
    fake.dispatch->runUntilIdle();
    EXPECT_TRUE(names().empty());
    EXPECT_TRUE(fake.log->contains("Assistant: Successfully decoded NonSelected Shapes JSON. Count: 0"));
}

TEST_F(TriggerAssistantTest, InspectorPrintsBothListsOnceTheModelExists) {
    EXPECT_FALSE(fake.inspection->inspect("assistant").has_value());
    triggerAssistant("[SlideSelected]", "");
    fake.dispatch->runUntilIdle();
    EXPECT_EQ(*fake.inspection->inspect("assistant"),
              (std::vector<std::string>{"suggested: Send Slides | Ctrl Cmd ↵ | Send.png | -60s", "missed: (none)"}));
}

}  // namespace
}  // namespace velmora
