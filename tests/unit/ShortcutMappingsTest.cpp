#include <gtest/gtest.h>

#include <string>

#include "KeyboardReferenceTable.h"
#include "keyboard/ShortcutMappings.h"

namespace velmora {
namespace {

namespace ref = testing::reference;

TEST(ShortcutMappings, AgreeRowByRowWithTheReferenceTableSpellingsIncluded) {
    const auto& table = shortcutMappings();
    ASSERT_EQ(table.size(), 47u);
    ASSERT_EQ(ref::rows().size(), 47u);
    for (std::size_t i = 0; i < table.size(); ++i) {
        SCOPED_TRACE("row " + std::to_string(i + 1));
        const auto& row = table[i];
        const auto& expected = ref::rows()[i];
        EXPECT_EQ(row.macroName, expected.macro);
        EXPECT_EQ(row.shortCutRecord, expected.record);
        EXPECT_EQ(row.modifiers.rawValue, expected.modifiers);
        if (expected.keyCode >= 0) {
            EXPECT_EQ(row.keyCode, std::optional<std::uint16_t>(expected.keyCode));
        } else {
            EXPECT_FALSE(row.keyCode.has_value());  // absent, not zero
        }
        if (expected.character) {
            EXPECT_EQ(row.character, std::optional<std::string>(expected.character));
        } else {
            EXPECT_FALSE(row.character.has_value());
        }
    }
}

}  // namespace
}  // namespace velmora
