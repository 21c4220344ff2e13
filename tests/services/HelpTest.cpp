#include <richedit.h>

#include <fstream>
#include <sstream>

#include "Fixture.h"
#include "HelpDocument.h"
#include "LibraryState.h"
#include "TestWindow.h"
#include "Text.h"

namespace {

// A machine with that help file, and a help control in which something stands.
class HelpPane {
  public:
    explicit HelpPane(const char* help) : test(Sample(), 0, help) {
        EXPECT_NE(test.Attach(), nullptr);
        window.emplace(u"RichEdit20W", ES_MULTILINE);
        window->SetText(u"before");
    }

    HWND Handle() const { return window->Handle(); }
    std::u16string Show(const char16_t* key, const char16_t* suffix = nullptr) {
        ShowHelpTopic(Library().helpDocument.get(), Handle(), key, suffix);
        return window->Text();
    }

    TestMachine test;
    std::optional<TestWindow> window;  // its class comes with the library
};

constexpr char kHelp[] = R"(<?xml version="1.0"?>
<help>
  <Performance_ETH>{\rtf1 eth}</Performance_ETH>
  <JumboPacket>{\rtf1 jumbo}</JumboPacket>
  <section><deep><PortType>  what stands before {\rtf1 port}</PortType></deep></section>
  <PortType>{\rtf1 second}</PortType>
  <Plain>no rich text</Plain>
  <Empty/>
  <Name>{\rtf1 café}</Name>
  <Parts>{\rtf1 a<b>b</b><![CDATA[ & c}]]></Parts>
</help>)";

TEST(HelpTopics, AreFoundByKeyAndSuffix) {
    const struct {
        const char16_t *key, *suffix, *shown;
        const char* reason;
    } rows[] = {
        {u"Performance", u"_ETH", u"eth", "a key with its suffix"},
        {u"performance", u"_eth", u"", "case counts"},
        {u"*JumboPacket", nullptr, u"jumbo", "a standard keyword"},
        {u"**JumboPacket", nullptr, u"", "only one asterisk is dropped"},
        {u"PortType", nullptr, u"port", "the first of its name, anywhere, from the brace on"},
        {u"Plain", nullptr, u"", "text without a brace"},
        {u"Empty", nullptr, u"", "no text"},
        {u"Parts", nullptr, u"ab & c", "text in pieces"},
        {u"Name", nullptr, u"caf\u00E9", "a letter of the code page"},
        {u"<no name>", nullptr, u"", "not a name"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        HelpPane pane(kHelp);
        EXPECT_EQ(pane.Show(row.key, row.suffix), row.shown);
    }
}

TEST(ShippedHelp, EveryTopicOpens) {
    std::ifstream file(SOURCE_DIR "/resources/help.xml", std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    ASSERT_FALSE(text.str().empty());
    const struct {
        const char16_t *key, *suffix, *title;
    } rows[] = {
        {u"Performance", u"_ETH", u"Performance tuning of an Ethernet port"},
        {u"Performance", u"_IPoIB", u"Performance tuning of an IPoIB port"},
        {u"PortType", nullptr, u"Port protocol"},
        {u"TeamConfig", nullptr, u"Applying the team configuration"},
        {u"LBFOHelp", nullptr, u"Load balancing and fail-over teams"},
        {u"IPoIBFOHelp", nullptr, u"Fail-over teams of IPoIB adapters"},
        {u"VlanHelp", nullptr, u"Virtual LANs"},
        {u"AddVlan", nullptr, u"Adding the VLAN"},
        {u"RemoveVlan", nullptr, u"Removing the VLAN"},
        {u"VlanNewHelp", nullptr, u"VLAN properties"},
    };
    HelpPane pane(text.str().c_str());
    for (const auto& row : rows) {
        const std::u16string shown = pane.Show(row.key, row.suffix);
        EXPECT_TRUE(shown.starts_with(std::u16string(row.title) + u"\r"))
            << platform::ToUtf8(shown);
        EXPECT_EQ(shown.find_first_of(u"{}"), std::u16string::npos) << platform::ToUtf8(shown);
    }
}

}  // namespace
