#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shortcuts/ShortcutXMLParser.h"

namespace velmora {
namespace {

using Keys = std::vector<std::string>;

std::vector<Shortcut> parse(const std::string& xml, std::size_t feedSize = 0) {
    ShortcutXMLParser parser;
    parseShortcutXML(xml, parser, feedSize);
    return parser.shortcuts;
}

const std::string catalogue = R"(<?xml version="1.0" encoding="UTF-8"?>
<shortcuts>
  <!-- arrange first -->
  <object>
    <category>Arrange</category>
    <name>Align Left</name>
    <shortcut>Ctrl, Cmd, ←</shortcut>
    <img>AlignLeft.png</img>
  </object>
  <object>
    <img>NewSlide.png</img>
    <name> New Slide </name>
    <shortcut>Ctrl, M</shortcut>
    <category>Slides</category>
  </object>
  <object>
    <category>Arrange</category>
    <name>Group &amp; Lock</name>
    <shortcut>Cmd, Opt, G</shortcut>
    <img>Group.png</img>
  </object>
  <object>
    <category>Text</category>
    <name>
      Two Lines
    </name>
    <shortcut>Cmd,Shift, &#46;</shortcut>
    <img>Font.png</img>
  </object>
</shortcuts>
)";

TEST(ShortcutCatalogueTest, ReadsRecordsInDocumentOrderWithTheirTextAsDelivered) {
    auto shortcuts = parse(catalogue);
    ASSERT_EQ(shortcuts.size(), 4u);
    EXPECT_EQ(shortcuts[0].category, "Arrange");
    EXPECT_EQ(shortcuts[0].name, "Align Left");
    EXPECT_EQ(shortcuts[0].keys, (Keys{"Ctrl", "Cmd", "←"}));
    EXPECT_EQ(shortcuts[0].imageName, "AlignLeft.png");
    // Order within an object does not matter; blanks on the tags' line stay.
    EXPECT_EQ(shortcuts[1].name, " New Slide ");
    EXPECT_EQ(shortcuts[1].category, "Slides");
    EXPECT_EQ(shortcuts[2].name, "Group & Lock");
    // A value over several lines keeps its line ends: the text is never trimmed as a whole.
    EXPECT_EQ(shortcuts[3].name, "\n      Two Lines\n    ");
    // A comma without a blank does not split; the reference is joined in order.
    EXPECT_EQ(shortcuts[3].keys, (Keys{"Cmd,Shift", "."}));
}

TEST(ShortcutCatalogueTest, ChunksDoNotDependOnHowTheBytesArrive) {
    auto whole = parse(catalogue);
    for (std::size_t feed : {1u, 2u, 3u, 7u, 64u}) {
        auto pieces = parse(catalogue, feed);
        ASSERT_EQ(pieces.size(), whole.size()) << "feed " << feed;
        for (std::size_t i = 0; i < whole.size(); ++i) {
            EXPECT_EQ(pieces[i].name, whole[i].name) << "feed " << feed;
            EXPECT_EQ(pieces[i].keys, whole[i].keys) << "feed " << feed;
            EXPECT_EQ(pieces[i].category, whole[i].category) << "feed " << feed;
            EXPECT_EQ(pieces[i].imageName, whole[i].imageName) << "feed " << feed;
        }
    }
}

TEST(ShortcutCatalogueTest, ABlankChunkBetweenReferencesIsLost) {
    // Chunks: "A ", "&", " ", "B", " c": the lone blank goes, the others stay untrimmed.
    auto shortcuts = parse("<r><object><name>A &amp; &#66; c</name></object></r>");
    ASSERT_EQ(shortcuts.size(), 1u);
    EXPECT_EQ(shortcuts[0].name, "A &B c");
    auto split = parse("<r><object><name>&lt;&#x20;&gt;</name></object></r>");
    EXPECT_EQ(split[0].name, "<>");
}

TEST(ShortcutCatalogueTest, FieldsAreClearedPerRecordAndStrayTextGoesNowhere) {
    auto shortcuts = parse(
        "<r><object><category>Keep</category><name>One<b>bold</b>tail</name>"
        "<note>ignored</note><shortcut></shortcut></object>"
        "<object>after<name>Two</name></object><name>Loose</name></r>");
    ASSERT_EQ(shortcuts.size(), 2u);
    // Only the latest start tag counts: text after a nested end tag is lost.
    EXPECT_EQ(shortcuts[0].name, "One");
    EXPECT_EQ(shortcuts[0].keys, (Keys{""}));
    EXPECT_EQ(shortcuts[1].category, "");
    EXPECT_EQ(shortcuts[1].name, "Two");
    EXPECT_EQ(shortcuts[1].keys, (Keys{""}));
    EXPECT_EQ(shortcuts[1].imageName, "");
}

TEST(ShortcutCatalogueTest, KeysAreTrimmedOfBlanksButNotOfLineEnds) {
    auto shortcuts = parse(
        "<r><object><shortcut>\tCtrl , \xC2\xA0" "Cmd\xC2\xA0, Shift\n, </shortcut></object></r>");
    ASSERT_EQ(shortcuts.size(), 1u);
    EXPECT_EQ(shortcuts[0].keys, (Keys{"Ctrl", "Cmd", "Shift\n", ""}));
    EXPECT_EQ(splitShortcutKeys("Ctrl, , Cmd"), (Keys{"Ctrl", "", "Cmd"}));
}

TEST(ShortcutCatalogueTest, CDATATextIsNotCharacterData) {
    auto shortcuts = parse("<r><object><name>A<![CDATA[ hidden ]]>B</name></object></r>");
    ASSERT_EQ(shortcuts.size(), 1u);
    EXPECT_EQ(shortcuts[0].name, "AB");
}

TEST(ShortcutCatalogueTest, CommentsAndInstructionsEndAChunkSoABlankBetweenThemIsLost) {
    // Chunks: "A ", " " (between the comment and the instruction), "B".
    EXPECT_EQ(parse("<r><object><name>A <!-- note --> <?pi x?>B</name></object></r>").at(0).name, "A B");
    EXPECT_EQ(parse("<r><object><name> <?pi?>Top</name></object></r>").at(0).name, "Top");
    EXPECT_EQ(parse("<r><object><name> <!-- c -->Top</name></object></r>").at(0).name, "Top");
    // Without markup the same blanks stay, being part of a longer chunk.
    EXPECT_EQ(parse("<r><object><name> Top</name></object></r>").at(0).name, " Top");
}

TEST(ShortcutCatalogueTest, GroupsByFirstAppearanceAndLoadsGiveFreshIds) {
    auto first = parse(catalogue);
    auto groups = groupShortcuts(first);
    EXPECT_EQ(groups.categories, (Keys{"Arrange", "Slides", "Text"}));
    ASSERT_EQ(groups.grouped["Arrange"].size(), 2u);
    EXPECT_EQ(groups.grouped["Arrange"][1].name, "Group & Lock");
    EXPECT_NE(parse(catalogue)[0].id, first[0].id);
}

TEST(ShortcutCatalogueTest, TheFilesDeclaredEncodingIsHonoured) {
    // Two records, the first with a byte beyond ASCII in its name.
    auto file = [](const std::string& encoding, const std::string& name) {
        return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n<shortcuts><object><name>" + name +
               "</name><shortcut>Ctrl, E</shortcut></object><object><name>After</name><shortcut>Cmd</shortcut>"
               "</object></shortcuts>";
    };
    struct Case {
        std::string encoding, bytes, name;
    };
    const Case cases[] = {
        {"ISO-8859-1", "Caf\xE9", "Caf\xC3\xA9"},
        {"iso-8859-1", "\xC0 la ligne", "\xC3\x80 la ligne"},
        {"windows-1252", "\x80 \x93quoted\x94", "\xE2\x82\xAC \xE2\x80\x9Cquoted\xE2\x80\x9D"},
        {"macintosh", "Caf\x8E", "Caf\xC3\xA9"},
        {"UTF-8", "Caf\xC3\xA9", "Caf\xC3\xA9"},
    };
    for (const auto& c : cases) {
        auto records = parse(file(c.encoding, c.bytes), 7);
        ASSERT_EQ(records.size(), 2u) << c.encoding;
        EXPECT_EQ(records[0].name, c.name) << c.encoding;
        EXPECT_EQ(records[1].name, "After") << c.encoding;
    }

    // UTF-16 with its byte-order mark still reads.
    std::string utf16 = "\xFF\xFE";
    for (char c : file("UTF-16", "Cafe")) utf16 += std::string{c, '\0'};
    EXPECT_EQ(parse(utf16).size(), 2u);

    // An encoding nobody knows gives nothing, as a parser that cannot start does.
    EXPECT_TRUE(parse(file("x-no-such-encoding", "Cafe")).empty());
}

}  // namespace
}  // namespace velmora
